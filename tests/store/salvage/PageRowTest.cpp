#include "store/salvage/PageRow.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <vector>

#include "tables/JobSchema.h"

namespace cqsurvey {
namespace {

std::vector<std::byte> Payload(std::initializer_list<int> bytes) {
    std::vector<std::byte> payload;
    for (const int byte : bytes) {
        payload.push_back(static_cast<std::byte>(byte));
    }
    return payload;
}

RecordFormat VertexFormat() {
    return {VertexLayout::kFieldCount, VertexLayout::kFieldDefs.data()};
}

TEST(PageRow, HoldsTheValuesOfEveryType) {
    // none, -2 in one byte, 258 in two, 0, 1, two bytes, a text of one unit
    const auto payload = Payload({8, 0, 1, 2, 8, 9, 16, 17, 0xFE, 1, 2, 5, 6, 'A', 0});
    const auto row = PageRow::Read(payload, 7);
    ASSERT_TRUE(row);
    EXPECT_EQ(row->GetType(0), PageRow::Type::None);
    EXPECT_EQ(row->GetNumber(1), -2);
    EXPECT_EQ(row->GetNumber(2), 258);
    EXPECT_EQ(row->GetNumber(3), 0);
    EXPECT_EQ(row->GetNumber(4), 1);
    EXPECT_EQ(row->GetBytes(5).size(), 2U);
    EXPECT_EQ(row->GetText(6), u"A");
}

TEST(PageRow, IsNothingWhenTypesAndValuesDoNotFillThePayload) {
    EXPECT_FALSE(PageRow::Read({}, 1));
    EXPECT_FALSE(PageRow::Read(Payload({2, 1}), 1)) << "the value is missing";
    EXPECT_FALSE(PageRow::Read(Payload({2, 1, 7, 7}), 1)) << "a byte too many";
    EXPECT_FALSE(PageRow::Read(Payload({9, 1, 7}), 1)) << "the types go on behind the end";
    EXPECT_FALSE(PageRow::Read(Payload({2, 10}), 1)) << "there is no such type";
    EXPECT_FALSE(PageRow::Read(Payload({3, 1, 1, 7, 7}), 1)) << "a value too many";
    EXPECT_TRUE(PageRow::Read(Payload({2, 1, 7}), 1));
}

TEST(PageRow, MayEndInATextWhenThePayloadIsCut) {
    const auto payload = Payload({3, 0, 53, 'a', 0, 'b', 0, 'c'});
    EXPECT_FALSE(PageRow::Read(payload, 2));
    const auto row = PageRow::Read(payload, 2, true);
    ASSERT_TRUE(row);
    EXPECT_EQ(row->GetText(1), u"ab");
}

TEST(PageRow, PacksARecord) {
    // Bulge 0.5, PlineIndex 258
    const auto payload = Payload({4, 0, 7, 2, 0x3F, 0xE0, 0, 0, 0, 0, 0, 0, 1, 2});
    const auto row = PageRow::Read(payload, 3);
    ASSERT_TRUE(row);
    VertexLayout::Bytes record{};
    ASSERT_TRUE(row->Pack(VertexFormat(), record.data()));
    EXPECT_EQ(VertexLayout::Get<"Bulge">(record.data()), 0.5);
    EXPECT_EQ(VertexLayout::Get<"PlineIndex">(record.data()), 258U);
}

TEST(PageRow, PacksTheTwoKindsOfNotANumber) {
    VertexLayout::Bytes record{};
    const auto usual = Payload({4, 0, 0, 8});
    ASSERT_TRUE(PageRow::Read(usual, 3)->Pack(VertexFormat(), record.data()));
    EXPECT_EQ(std::bit_cast<std::uint64_t>(VertexLayout::Get<"Bulge">(record.data())),
              std::bit_cast<std::uint64_t>(std::numeric_limits<double>::quiet_NaN()));
    const auto other = Payload({4, 0, 28, 8, 1, 0, 0, 0, 0, 0, 0xF8, 0xFF});
    ASSERT_TRUE(PageRow::Read(other, 3)->Pack(VertexFormat(), record.data()));
    EXPECT_EQ(std::bit_cast<std::uint64_t>(VertexLayout::Get<"Bulge">(record.data())),
              0xFFF8000000000001U);
}

TEST(PageRow, PacksNothingThatDoesNotFitItsField) {
    VertexLayout::Bytes record{};
    const auto pack = [&](const std::vector<std::byte>& payload) {
        const auto row = PageRow::Read(payload, 3);
        return row && row->Pack(VertexFormat(), record.data());
    };
    EXPECT_TRUE(pack(Payload({4, 0, 8, 8})));
    EXPECT_FALSE(pack(Payload({4, 8, 8, 8}))) << "the number is not a value of the row";
    EXPECT_FALSE(pack(Payload({4, 0, 8, 0}))) << "no number";
    EXPECT_FALSE(pack(Payload({4, 0, 8, 1, 0xFF}))) << "below 0";
    EXPECT_FALSE(pack(Payload({4, 0, 8, 5, 1, 0, 0, 0, 0, 0}))) << "more than 32 bits";
    EXPECT_FALSE(pack(Payload({4, 0, 15, 8, 'x', 0}))) << "a text";
    EXPECT_FALSE(pack(Payload({4, 0, 16, 8, 1, 2}))) << "two bytes";
}

}  // namespace
}  // namespace cqsurvey
