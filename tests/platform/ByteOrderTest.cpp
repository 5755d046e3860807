#include "platform/ByteOrder.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <limits>

namespace cqsurvey {
namespace {

TEST(ByteOrder, LoadAndStoreAreEachOthersInverse) {
    std::array<std::byte, 8> bytes{};
    for (const std::uint64_t bits : {std::uint64_t{0}, std::uint64_t{0x0123456789ABCDEF},
                                     std::uint64_t{0x8000000000000000}, ~std::uint64_t{0}}) {
        StoreLittle<std::uint64_t>(bytes.data(), bits);
        EXPECT_EQ(LoadLittle<std::uint64_t>(bytes.data()), bits);
        EXPECT_EQ(std::to_integer<std::uint64_t>(bytes[0]), bits & 0xFF);
        EXPECT_EQ(std::to_integer<std::uint64_t>(bytes[7]), bits >> 56);
    }
    StoreLittle(bytes.data(), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(LoadLittle<std::int32_t>(bytes.data()), std::numeric_limits<std::int32_t>::min());
}

TEST(ByteOrder, TheLowestByteComesFirst) {
    std::array<std::byte, 4> bytes{};
    StoreLittle<std::uint32_t>(bytes.data(), 0x01020304);
    EXPECT_EQ(bytes, (std::array{std::byte{4}, std::byte{3}, std::byte{2}, std::byte{1}}));
    StoreLittle<float>(bytes.data(), 1.0F);
    EXPECT_EQ(bytes, (std::array{std::byte{0}, std::byte{0}, std::byte{0x80}, std::byte{0x3F}}));
    EXPECT_EQ(LoadLittle<float>(bytes.data()), 1.0F);
}

}  // namespace
}  // namespace cqsurvey
