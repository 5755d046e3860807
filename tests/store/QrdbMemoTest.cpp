#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <vector>

#include "platform/ByteOrder.h"
#include "store/QrdbFixture.h"
#include "store/StoreExtras.h"

namespace cqsurvey {
namespace {

using QrdbTest = QrdbFixture;

TEST_F(QrdbTest, AMemoBelongsToTheRecordThatNamesIt) {
    const std::uint32_t things = OpenTable<ThingLayout>(u"V");
    ThingLayout::Bytes record = MakeThing(1);
    std::byte* field = record.data() + ThingLayout::Offset<"Remark">();
    ASSERT_DONE(QrdbWriteMemo(things, u"first", field));
    const auto first = ThingLayout::Get<"Remark">(record.data());
    ASSERT_NE(first, 0U);
    ASSERT_DONE(QrdbAppendRecord(things, record.data()));
    ASSERT_DONE(QrdbMoveLast(things));
    EXPECT_EQ(SplitThing(things, record).second, u"first");
    // Another field of the record changed: the memo stays.
    ThingLayout::Set<"Big">(record.data(), 5U);
    ASSERT_DONE(QrdbWriteRecord(things, record.data()));
    EXPECT_EQ(SplitThing(things, record).second, u"first");
    ASSERT_DONE(QrdbWriteMemo(things, u"second", field));
    EXPECT_NE(ThingLayout::Get<"Remark">(record.data()), first);
    ASSERT_DONE(QrdbWriteRecord(things, record.data()));
    std::array<char16_t, 256> text{};
    EXPECT_FAILS(0, error::kDamaged, QrdbReadMemo(things, text.data(), sizeof(text), first));
    EXPECT_EQ(SplitThing(things, record).second, u"second");
    const auto second = ThingLayout::Get<"Remark">(record.data());
    ASSERT_DONE(QrdbDeleteRecord(things));
    EXPECT_FAILS(0, error::kDamaged, QrdbReadMemo(things, text.data(), sizeof(text), second));
}

TEST_F(QrdbTest, AnEmptyMemoHasTheReferenceZeroAndIsReadAsAnEmptyText) {
    ThingLayout::Bytes record;
    record.fill(std::byte{0xFF});
    std::byte* field = record.data() + ThingLayout::Offset<"Remark">();
    ASSERT_DONE(QrdbWriteMemo(m_table, u"", field));
    EXPECT_EQ(ThingLayout::Get<"Remark">(record.data()), 0U);
    std::array<char16_t, 4> text{u'x', u'x'};
    ASSERT_DONE(QrdbReadMemo(m_table, text.data(), sizeof(text), 0));
    EXPECT_EQ(text[0], u'\0');
}

TEST_F(QrdbTest, AMemoIsReadNoFurtherThanItsBufferAndNeverHalfAPair) {
    std::array<std::byte, 4> field{};
    ASSERT_DONE(QrdbWriteMemo(m_table,
                              u"ab\xD83D\xDE00"
                              u"c",
                              field.data()));
    const auto reference = LoadLittle<std::uint32_t>(field.data());
    const auto read = [&](std::uint16_t bytes) {
        std::vector<char16_t> text(bytes / 2, u'?');  // its end is watched
        Require(QrdbReadMemo(m_table, text.data(), bytes, reference) != 0);
        return CString(text.data());
    };
    EXPECT_EQ(read(2), u"");
    EXPECT_EQ(read(3), u"");
    EXPECT_EQ(read(6), u"ab");
    EXPECT_EQ(read(8), u"ab");
    EXPECT_EQ(read(10), u"ab\xD83D\xDE00");
    EXPECT_EQ(read(12),
              u"ab\xD83D\xDE00"
              u"c");
    EXPECT_EQ(read(65535),
              u"ab\xD83D\xDE00"
              u"c");
    std::array<char16_t, 1> none{};
    EXPECT_FAILS(0, error::kInvalidArgument, QrdbReadMemo(m_table, none.data(), 0, reference));
    EXPECT_FAILS(0, error::kInvalidArgument, QrdbReadMemo(m_table, none.data(), 1, reference));
    EXPECT_FAILS(0, error::kDamaged, QrdbReadMemo(m_table, none.data(), 2 + 2, reference + 1));
}

TEST_F(QrdbTest, AMemoTooLongForAnyoneIsRefusedAndTheStepGoesOn) {
    std::array<std::byte, 4> field{};
    ASSERT_DONE(StoreBeginStep(u"V"));
    EXPECT_FAILS(0, error::kInvalidArgument,
                 QrdbWriteMemo(m_table, CString((1U << 24) + 1, u'x'), field.data()));
    ASSERT_DONE(QrdbAppendRecord(m_table, MakePair(9, 9).data()));
    EXPECT_DONE(StoreCommitStep(u"V"));
}

}  // namespace
}  // namespace cqsurvey
