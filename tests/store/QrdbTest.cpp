#include "store/Qrdb.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "store/QrdbFixture.h"
#include "store/StoreExtras.h"

namespace cqsurvey {
namespace {

using QrdbTest = QrdbFixture;

const std::string kOff = "0 0x00000000";

TEST_F(QrdbTest, ATableIsCreatedOnce) {
    EXPECT_FAILS(0, error::kTableExists, CreateTable<PairLayout>(u"V"));
    EXPECT_FAILS(0, error::kNoMount, CreateTable<PairLayout>(u"W"));
    EXPECT_FAILS(0, error::kNoMount,
                 QrdbCreateTable(u"Pairs", PairLayout::kFieldCount, PairLayout::kFieldDefs.data()));
    const QrdbFieldDef bad{0, u"A", u"FLOAT", 0};
    EXPECT_FAILS(0, error::kBadTableDescription, QrdbCreateTable(u"V:/New", 1, &bad));
    EXPECT_FAILS(0, error::kBadTableDescription, QrdbCreateTable(u"V:/New", 0, nullptr));
    EXPECT_FAILS(0u, error::kNoTable, QrdbOpenTable(u"V:/New"));
}

TEST_F(QrdbTest, ATableNameIsANameAndTakenWithoutRegardToCase) {
    const QrdbFieldDef field{0, u"A", u"WORD", 0};
    for (const char16_t* name : {u"", u"1st", u"a b", u"a\"b", u"Volume_File", u"volume_new",
                                 u"sqlite_new", u"SQLite_new", u"\u00C4", u"a;b"}) {
        EXPECT_FAILS(0, error::kBadTableDescription,
                     QrdbCreateTable(CString(u"V:/") + name, 1, &field))
            << ToUtf8(name);
    }
    EXPECT_FAILS(0, error::kTableExists, QrdbCreateTable(u"V:/PAIRS", 1, &field));
    ASSERT_DONE(StoreCreateView(u"V:/Shown", "SELECT 1 AS One"));
    EXPECT_FAILS(0, error::kTableExists, QrdbCreateTable(u"V:/shown", 1, &field));
    EXPECT_FAILS(0, error::kTableExists, StoreCreateView(u"V:/Shown", "SELECT 2 AS Two"));
    EXPECT_FAILS(0, error::kTableExists, StoreCreateView(u"V:/Pairs", "SELECT 2 AS Two"));
    EXPECT_FAILS(0, error::kBadTableDescription, StoreCreateView(u"V:/sh own", "SELECT 1"));
    EXPECT_FAILS(0u, error::kNoTable, QrdbOpenTable(u"V:/PAIRS"));
    EXPECT_FAILS(0u, error::kNoTable, QrdbOpenTable(u"V:/Shown"));
    Remount();
    EXPECT_NE(QrdbOpenTable(u"V:/Pairs"), 0U);
}

TEST_F(QrdbTest, OpeningWhatIsNoTableFails) {
    EXPECT_FAILS(0u, error::kNoTable, QrdbOpenTable(u"V:/None"));
    EXPECT_FAILS(0u, error::kNoTable, QrdbOpenTable(u"V:/Volume_File"));
    EXPECT_FAILS(0u, error::kNoMount, QrdbOpenTable(u"W:/Pairs"));
    EXPECT_FAILS(0u, error::kNoMount, QrdbOpenTable(u"Pairs"));
}

TEST_F(QrdbTest, ATableIsCheckedAgainstAnyDescription) {
    EXPECT_DONE(StoreCheckTable(m_table, PairLayout::kFieldCount, PairLayout::kFieldDefs.data()));
    EXPECT_FAILS(
        0, error::kDamaged,
        StoreCheckTable(m_table, ThingLayout::kFieldCount, ThingLayout::kFieldDefs.data()));
    EXPECT_FAILS(0, error::kDamaged, StoreCheckTable(m_table, 1, PairLayout::kFieldDefs.data()));
    EXPECT_FAILS(0, error::kBadTableDescription, StoreCheckTable(m_table, 0, nullptr));
}

TEST_F(QrdbTest, HandlesThatNameNothingAreRefused) {
    const std::uint32_t closed = OpenTable<PairLayout>(u"V");
    ASSERT_DONE(QrdbCloseTable(closed));
    PairLayout::Bytes record{};
    std::array<char16_t, 4> text{};
    for (const std::uint32_t table : {0U, closed, m_table + 1, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
        constexpr std::int32_t kCode = error::kInvalidArgument;
        EXPECT_FAILS(0, kCode, QrdbCloseTable(table));
        EXPECT_FAILS(
            0, kCode,
            StoreCheckTable(table, PairLayout::kFieldCount, PairLayout::kFieldDefs.data()));
        EXPECT_FAILS(0, kCode, QrdbAppendRecord(table, record.data()));
        EXPECT_FAILS(0, kCode, QrdbSetIndex(table, -1));
        EXPECT_FAILS(0, kCode, QrdbMoveFirst(table));
        EXPECT_FAILS(0, kCode, QrdbMoveLast(table));
        EXPECT_FAILS(0, kCode, QrdbMoveNext(table));
        EXPECT_FAILS(0, kCode, QrdbMovePrev(table));
        EXPECT_FAILS(1, kCode, QrdbIsAtEnd(table));
        EXPECT_FAILS(-1, kCode, QrdbGetRecordCount(table));
        EXPECT_FAILS(0, kCode, QrdbReadRecord(table, record.data()));
        EXPECT_FAILS(0, kCode, QrdbWriteRecord(table, record.data()));
        EXPECT_FAILS(0, kCode, QrdbDeleteRecord(table));
        EXPECT_FAILS(0, kCode, QrdbWriteMemo(table, u"text", record.data()));
        EXPECT_FAILS(0, kCode, QrdbReadMemo(table, text.data(), 8, 1));
        EXPECT_FAILS(0, kCode, QrdbGoToRecord(table, 1));
        EXPECT_FAILS(0u, kCode, QrdbGetCurrentHandle(table));
        EXPECT_FAILS(nullptr, kCode, StorePeekRecord(table, 1));
    }
    EXPECT_EQ(QrdbGetRecordCount(m_table), 3);
}

TEST_F(QrdbTest, ThereIsNoIndexButRecordOrder) {
    EXPECT_DONE(QrdbSetIndex(m_table, -1));
    for (const std::int32_t index : {0, 1, -2, 1000}) {
        EXPECT_FAILS(0, error::kInvalidArgument, QrdbSetIndex(m_table, index));
    }
    ASSERT_DONE(QrdbMoveLast(m_table));
    EXPECT_DONE(QrdbSetIndex(m_table, -1));
    EXPECT_EQ(QrdbGetCurrentHandle(m_table), 3U);
}

TEST_F(QrdbTest, NothingIsCurrentUntilAMove) {
    const std::uint32_t table = OpenTable<PairLayout>(u"V");
    PairLayout::Bytes record{};
    EXPECT_NE(QrdbIsAtEnd(table), 0);
    EXPECT_EQ(QrdbGetCurrentHandle(table), 0U);
    EXPECT_FAILS(0, error::kNoRecord, QrdbReadRecord(table, record.data()));
    EXPECT_FAILS(0, error::kNoRecord, QrdbWriteRecord(table, record.data()));
    EXPECT_FAILS(0, error::kNoRecord, QrdbDeleteRecord(table));
    ASSERT_DONE(QrdbMoveFirst(table));
    EXPECT_EQ(QrdbIsAtEnd(table), 0);
    EXPECT_EQ(QrdbGetCurrentHandle(table), 1U);
    EXPECT_DONE(QrdbReadRecord(table, record.data()));
}

TEST_F(QrdbTest, MovesWalkInRecordOrderAndRunOffBothEnds) {
    EXPECT_EQ(Ran(QrdbMoveFirst(m_table)), "1");
    EXPECT_EQ(First(), 1U);
    EXPECT_EQ(Ran(QrdbMoveNext(m_table)), "1");
    EXPECT_EQ(Ran(QrdbMoveNext(m_table)), "1");
    EXPECT_EQ(First(), 3U);
    Registry::SetLastError(error::kDamaged);
    EXPECT_EQ(Ran(QrdbMoveNext(m_table)), kOff);
    EXPECT_NE(QrdbIsAtEnd(m_table), 0);
    EXPECT_EQ(QrdbGetCurrentHandle(m_table), 0U);
    Registry::SetLastError(error::kDamaged);
    EXPECT_EQ(Ran(QrdbMoveNext(m_table)), kOff);
    EXPECT_EQ(Ran(QrdbMovePrev(m_table)), "1");
    EXPECT_EQ(First(), 3U);
    EXPECT_EQ(Ran(QrdbMoveFirst(m_table)), "1");
    Registry::SetLastError(error::kDamaged);
    EXPECT_EQ(Ran(QrdbMovePrev(m_table)), kOff);
    EXPECT_EQ(Ran(QrdbMovePrev(m_table)), kOff);
    EXPECT_EQ(Ran(QrdbMoveNext(m_table)), "1");
    EXPECT_EQ(First(), 1U);
    EXPECT_EQ(Ran(QrdbMoveLast(m_table)), "1");
    EXPECT_EQ(First(), 3U);
}

TEST_F(QrdbTest, MovesInAnEmptyTableGoNowhere) {
    const std::uint32_t things = OpenTable<ThingLayout>(u"V");
    for (const auto move : {QrdbMoveFirst, QrdbMoveLast, QrdbMoveNext, QrdbMovePrev}) {
        Registry::SetLastError(error::kDamaged);
        EXPECT_EQ(Ran(move(things)), kOff);
        EXPECT_NE(QrdbIsAtEnd(things), 0);
        EXPECT_EQ(QrdbGetCurrentHandle(things), 0U);
    }
    EXPECT_EQ(QrdbGetRecordCount(things), 0);
}

TEST_F(QrdbTest, GoingToARecordThatIsNotThereLeavesTheCurrentOne) {
    ASSERT_DONE(QrdbGoToRecord(m_table, 2));
    for (const std::uint32_t number : {0U, 4U, 256U, 0xFFFFFFFFU}) {
        EXPECT_FAILS(0, error::kNoRecord, QrdbGoToRecord(m_table, number));
        EXPECT_NE(std::string(StoreErrorDetail()).find(" no record " + std::to_string(number)),
                  std::string::npos);
        EXPECT_FAILS(nullptr, error::kNone, StorePeekRecord(m_table, number));
    }
    EXPECT_EQ(QrdbGetCurrentHandle(m_table), 2U);
    EXPECT_EQ(First(), 2U);
}

TEST_F(QrdbTest, AppendingLeavesTheCurrentRecord) {
    ASSERT_DONE(QrdbGoToRecord(m_table, 2));
    ASSERT_DONE(QrdbAppendRecord(m_table, MakePair(4, 40).data()));
    EXPECT_EQ(QrdbGetCurrentHandle(m_table), 2U);
    ASSERT_DONE(QrdbMoveLast(m_table));
    EXPECT_EQ(QrdbGetCurrentHandle(m_table), 4U);
    EXPECT_EQ(First(), 4U);
    // From behind the end too.
    EXPECT_EQ(Ran(QrdbMoveNext(m_table)), kOff);
    ASSERT_DONE(QrdbAppendRecord(m_table, MakePair(5, 50).data()));
    EXPECT_EQ(Ran(QrdbMoveNext(m_table)), kOff);
    EXPECT_EQ(Ran(QrdbMovePrev(m_table)), "1");
    EXPECT_EQ(First(), 5U);
}

TEST_F(QrdbTest, ARecordMayBeMadeCurrentAsItIsAppended) {
    ASSERT_DONE(QrdbGoToRecord(m_table, 2));
    EXPECT_EQ(StoreAppendCurrent(m_table, MakePair(4, 40).data()), 4U);
    EXPECT_EQ(QrdbGetCurrentHandle(m_table), 4U);
    EXPECT_EQ(First(), 4U);
    EXPECT_EQ(Ran(QrdbMoveNext(m_table)), kOff);
    EXPECT_FAILS(0u, error::kInvalidArgument, StoreAppendCurrent(0, MakePair(5, 50).data()));
    // One that fails leaves the current record, also where the failure comes with the commit.
    ASSERT_DONE(QrdbGoToRecord(m_table, 2));
    m_vfs.FailAt(FaultVfs::kWrite, 1, SQLITE_FULL, true);
    EXPECT_FAILS(0u, error::kVolumeFull, StoreAppendCurrent(m_table, MakePair(5, 50).data()));
    m_vfs.Heal();
    EXPECT_EQ(QrdbGetCurrentHandle(m_table), 2U);
    EXPECT_EQ(First(), 2U);
}

TEST_F(QrdbTest, AWrittenRecordIsReadByAllAndKept) {
    const std::uint32_t other = OpenTable<PairLayout>(u"V");
    ASSERT_DONE(QrdbGoToRecord(other, 2));
    ASSERT_DONE(QrdbGoToRecord(m_table, 2));
    ASSERT_DONE(QrdbWriteRecord(m_table, MakePair(77, 78).data()));
    PairLayout::Bytes record{};
    ASSERT_DONE(QrdbReadRecord(other, record.data()));
    EXPECT_EQ(AsString(record), AsString(MakePair(77, 78)));
    EXPECT_EQ(AsString(StorePeekRecord(m_table, 2), 8), AsString(MakePair(77, 78)));
    Remount();
    EXPECT_EQ(ReadContents(u"V").pairs.at(2), AsString(MakePair(77, 78)));
}

TEST_F(QrdbTest, BehindADeletedRecordTheNextMoveGoesOnFromItsPlace) {
    const std::uint32_t other = OpenTable<PairLayout>(u"V");
    ASSERT_DONE(QrdbGoToRecord(other, 2));
    ASSERT_DONE(QrdbGoToRecord(m_table, 2));
    ASSERT_DONE(QrdbDeleteRecord(m_table));
    for (const std::uint32_t table : {m_table, other}) {
        PairLayout::Bytes record{};
        EXPECT_NE(QrdbIsAtEnd(table), 0);
        EXPECT_EQ(QrdbGetCurrentHandle(table), 0U);
        EXPECT_FAILS(0, error::kNoRecord, QrdbReadRecord(table, record.data()));
        EXPECT_FAILS(0, error::kNoRecord, QrdbWriteRecord(table, record.data()));
        EXPECT_FAILS(0, error::kNoRecord, QrdbDeleteRecord(table));
        EXPECT_FAILS(0, error::kNoRecord, QrdbGoToRecord(table, 2));
    }
    EXPECT_EQ(Ran(QrdbMoveNext(m_table)), "1");
    EXPECT_EQ(QrdbGetCurrentHandle(m_table), 3U);
    EXPECT_EQ(Ran(QrdbMovePrev(other)), "1");
    EXPECT_EQ(QrdbGetCurrentHandle(other), 1U);
    EXPECT_EQ(QrdbGetRecordCount(m_table), 2);
}

TEST_F(QrdbTest, ANumberIsNeverGivenAgain) {
    const auto append = [&] {
        Require(QrdbAppendRecord(m_table, MakePair(0, 0).data()) != 0 &&
                QrdbMoveLast(m_table) != 0);
        return QrdbGetCurrentHandle(m_table);
    };
    const auto reopen = [&] {
        Remount();
        m_table = OpenTable<PairLayout>(u"V");
    };
    ASSERT_DONE(QrdbMoveLast(m_table));
    ASSERT_DONE(QrdbDeleteRecord(m_table));
    reopen();
    EXPECT_EQ(append(), 4U);
    ASSERT_DONE(QrdbDeleteRecord(m_table));
    while (QrdbMoveLast(m_table) != 0) {
        ASSERT_DONE(QrdbDeleteRecord(m_table));
    }
    reopen();
    EXPECT_EQ(QrdbGetRecordCount(m_table), 0);
    EXPECT_EQ(append(), 5U);
    // Made and deleted within one step.
    ASSERT_DONE(StoreBeginStep(u"V"));
    EXPECT_EQ(append(), 6U);
    ASSERT_DONE(QrdbDeleteRecord(m_table));
    ASSERT_DONE(StoreCommitStep(u"V"));
    reopen();
    EXPECT_EQ(append(), 7U);
    // What an undone step did has never been; what was before it has.
    ASSERT_DONE(QrdbMoveLast(m_table));
    ASSERT_DONE(QrdbDeleteRecord(m_table));
    ASSERT_DONE(StoreBeginStep(u"V"));
    EXPECT_EQ(append(), 8U);
    ASSERT_DONE(StoreRollbackStep(u"V"));
    reopen();
    EXPECT_EQ(append(), 8U);
}

TEST_F(QrdbTest, TheLastNumberThereCanBeIsFollowedByNone) {
    Unmount();
    RunSql(m_host, "UPDATE Pairs SET Record = 4294967295 WHERE Record = 3");
    Mount();
    m_table = OpenTable<PairLayout>(u"V");
    ASSERT_DONE(QrdbMoveLast(m_table));
    EXPECT_EQ(QrdbGetCurrentHandle(m_table), 4294967295U);
    EXPECT_EQ(Ran(QrdbMoveNext(m_table)), kOff);
    EXPECT_EQ(Ran(QrdbMovePrev(m_table)), "1");
    EXPECT_EQ(QrdbGetCurrentHandle(m_table), 4294967295U);
    EXPECT_EQ(Ran(QrdbMovePrev(m_table)), "1");
    EXPECT_EQ(QrdbGetCurrentHandle(m_table), 2U);
    EXPECT_FAILS(0, error::kVolumeFull, QrdbAppendRecord(m_table, MakePair(1, 1).data()));
    EXPECT_EQ(QrdbGetRecordCount(m_table), 3);
    ASSERT_DONE(QrdbMoveLast(m_table));
    ASSERT_DONE(QrdbDeleteRecord(m_table));
    Remount();
    m_table = OpenTable<PairLayout>(u"V");
    EXPECT_FAILS(0, error::kVolumeFull, QrdbAppendRecord(m_table, MakePair(1, 1).data()));
    EXPECT_EQ(QrdbGetRecordCount(m_table), 2);
}

TEST_F(QrdbTest, CountingNeedsNoRecordToBeReadable) {
    Unmount();
    RunSql(m_host, "UPDATE Pairs SET First = -1 WHERE Record = 2");
    Mount();
    m_table = OpenTable<PairLayout>(u"V");
    EXPECT_EQ(QrdbGetRecordCount(m_table), 3);
    EXPECT_FAILS(0, error::kDamaged, QrdbMoveFirst(m_table));
    const std::string detail = StoreErrorDetail();
    for (const char* part : {"Pairs", "record 2", "First"}) {
        EXPECT_NE(detail.find(part), std::string::npos) << detail;
    }
    EXPECT_EQ(QrdbGetRecordCount(m_table), 3);
    EXPECT_FAILS(0, error::kDamaged, QrdbAppendRecord(m_table, MakePair(1, 1).data()));
    EXPECT_FAILS(1, error::kNone, QrdbIsAtEnd(m_table));
    EXPECT_FAILS(nullptr, error::kDamaged, StorePeekRecord(m_table, 1));
    EXPECT_EQ(QrdbGetRecordCount(m_table), 3);
}

TEST_F(QrdbTest, EveryKindOfFieldIsKeptByteByByte) {
    const std::uint32_t things = OpenTable<ThingLayout>(u"V");
    Contents expected;
    for (std::uint32_t i = 1; i <= 100; ++i) {
        const ThingLayout::Bytes record = MakeThing(i * 7919);
        ASSERT_DONE(QrdbAppendRecord(things, record.data()));
        expected.things[i] = {AsString(record), u""};
    }
    EXPECT_EQ(ReadContents(u"V").things, expected.things);
    Remount();
    EXPECT_EQ(ReadContents(u"V").things, expected.things);
}

TEST_F(QrdbTest, AnUndoneTableIsGoneForItsHandlesAndMayBeMadeAnew) {
    const QrdbFieldDef field{0, u"A", u"WORD", 0};
    ASSERT_DONE(StoreBeginStep(u"V"));
    ASSERT_DONE(QrdbCreateTable(u"V:/New", 1, &field));
    const std::uint32_t table = QrdbOpenTable(u"V:/New");
    ASSERT_DONE(QrdbAppendRecord(table, "ab"));
    ASSERT_DONE(QrdbMoveFirst(table));
    ASSERT_DONE(StoreRollbackStep(u"V"));
    std::array<char, 2> record{};
    EXPECT_FAILS(0u, error::kNoTable, QrdbOpenTable(u"V:/New"));
    EXPECT_FAILS(0, error::kNoTable, QrdbAppendRecord(table, "cd"));
    EXPECT_FAILS(0, error::kNoTable, QrdbReadRecord(table, record.data()));
    EXPECT_FAILS(0, error::kNoTable, QrdbMoveFirst(table));
    EXPECT_FAILS(-1, error::kNoTable, QrdbGetRecordCount(table));
    ASSERT_DONE(QrdbCreateTable(u"V:/New", 1, &field));
    EXPECT_FAILS(0, error::kNoTable, QrdbAppendRecord(table, "cd"));
    const std::uint32_t anew = QrdbOpenTable(u"V:/New");
    EXPECT_EQ(QrdbGetRecordCount(anew), 0);
    EXPECT_DONE(QrdbAppendRecord(anew, "ef"));
    EXPECT_DONE(QrdbCloseTable(table));
    Remount();
    EXPECT_EQ(QrdbGetRecordCount(QrdbOpenTable(u"V:/New")), 1);
}

TEST_F(QrdbTest, AViewStandsInTheFileForOtherToolsAndIsLeftAlone) {
    ASSERT_DONE(StoreCreateView(u"V:/Shown", "SELECT First + Second AS Total FROM Pairs"));
    EXPECT_FAILS(0, error::kGeneralFailure, StoreCreateView(u"V:/Broken", "SELEKT 1"));
    Unmount();
    sqlite3* connection = nullptr;
    sqlite3_open(m_host.c_str(), &connection);
    sqlite3_stmt* sum = nullptr;
    sqlite3_prepare_v2(connection, "SELECT sum(Total) FROM Shown", -1, &sum, nullptr);
    EXPECT_EQ(sqlite3_step(sum), SQLITE_ROW);
    EXPECT_EQ(sqlite3_column_int(sum, 0), 66);
    sqlite3_finalize(sum);
    sqlite3_close(connection);
    // A view that people add may be as deep as they like, or name what is not there.
    std::string deep = "1";
    for (int i = 0; i < 100; ++i) {
        deep += "+1";
    }
    RunSql(m_host, "CREATE VIEW Deep AS SELECT " + deep +
                       " AS x, max(1,2,3,4,5,6,7,8,9,10) AS y;"
                       "CREATE VIEW Absent AS SELECT * FROM nowhere");
    Mount();
    EXPECT_EQ(ReadContents(u"V").pairs.size(), 3U);
}

}  // namespace
}  // namespace cqsurvey
