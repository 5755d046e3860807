#include "tables/CqDbTable.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "cqsurvey/CqSurveyException.h"
#include "store/StoreExtras.h"
#include "store/StoreTesting.h"
#include "tables/CqRecordTable.h"

namespace cqsurvey {
namespace {

/// What a call throws, or "none".
template <class Body>
std::string Thrown(Body&& body) {
    try {
        body();
    } catch (const CqSurveyException& failure) {
        return Hex(failure.m_code);
    }
    return "none";
}

/// A table that notes the calls of its virtual operations and how often it loads a record.
class PairTable : public CqRecordTable<PairLayout> {
 public:
    void Create(const CString& name) override {
        calls += "Create ";
        CqRecordTable::Create(name);
    }
    void Open(const CString& name) override {
        calls += "Open ";
        CqRecordTable::Open(name);
    }
    void Close() override {
        calls += "Close ";
        CqRecordTable::Close();
    }
    [[nodiscard]] bool IsLoaded() const { return m_bLoaded != 0; }
    [[nodiscard]] const PairLayout::Bytes& Buffer() const { return m_record; }

    std::string calls;
};

class CqDbTableTest : public StoreTest {
 protected:
    void SetUp() override {
        StoreTest::SetUp();
        m_table.Open(u"V:/Pairs");
        for (const std::uint32_t i : {1U, 2U, 3U}) {
            m_table.AppendRecord(MakePair(i, 10 * i));
        }
        m_table.calls.clear();
    }
    void TearDown() override {
        if (m_table.IsOpen()) {
            m_table.Close();
        }
        StoreTest::TearDown();
    }

    PairTable m_table;
};

TEST_F(CqDbTableTest, ATableIsClosedFromTheBeginning) {
    PairTable table;
    EXPECT_FALSE(table.IsOpen());
    EXPECT_EQ(table.GetTable(), 0U);
    EXPECT_EQ(Thrown([&] { table.Close(); }), "none");
}

TEST_F(CqDbTableTest, CreateCreatesAndOpensThroughTheVirtualOperations) {
    PairTable table;
    EXPECT_EQ(Thrown([&] { table.Create(u"V:/Pairs"); }), "0x31000002");
    EXPECT_FALSE(table.IsOpen());
    EXPECT_EQ(table.calls, "Create ");
    table.calls.clear();
    table.Create(u"V:/Other");
    EXPECT_TRUE(table.IsOpen());
    EXPECT_EQ(table.calls, "Create Open ");
    EXPECT_EQ(table.GetRecordCount(), 0);
    table.calls.clear();
    table.Create(u"V:/Third");
    EXPECT_EQ(table.calls, "Create Close Open ");
    EXPECT_EQ(Thrown([&] { table.Create(u"W:/Pairs"); }), "0x3000000e");
    EXPECT_FALSE(table.IsOpen());
}

TEST_F(CqDbTableTest, OpenClosesWhatIsOpenAndThrowsForWhatIsNoSuchTable) {
    m_table.Open(u"V:/Pairs");
    EXPECT_EQ(m_table.calls, "Open Close ");
    EXPECT_TRUE(m_table.IsOpen());
    EXPECT_EQ(Thrown([&] { m_table.Open(u"V:/None"); }), "0x31000001");
    EXPECT_FALSE(m_table.IsOpen());
    EXPECT_EQ(Thrown([&] { m_table.Open(u"V:/Things"); }), "0x30000007");
    EXPECT_FALSE(m_table.IsOpen());
}

TEST_F(CqDbTableTest, CloseEndsClosedAlsoWhenItThrows) {
    Unmount();
    EXPECT_EQ(Thrown([&] { m_table.Close(); }), "0x30000002");
    EXPECT_FALSE(m_table.IsOpen());
    EXPECT_EQ(Thrown([&] { m_table.Close(); }), "none");
    Mount();
}

TEST_F(CqDbTableTest, TheDestructorClosesTheTable) {
    std::uint32_t handle = 0;
    {
        PairTable table;
        table.Open(u"V:/Pairs");
        handle = table.GetTable();
    }
    EXPECT_FAILS(0, error::kInvalidArgument, QrdbCloseTable(handle));
}

TEST_F(CqDbTableTest, EveryOperationOnAClosedTableThrows) {
    PairTable table;
    PairLayout::Bytes record{};
    std::array<char16_t, 4> text{};
    const std::string code = "0x30000002";
    EXPECT_EQ(Thrown([&] { (void)table.GetRecordCount(); }), code);
    EXPECT_EQ(Thrown([&] { table.First(-1); }), code);
    EXPECT_EQ(Thrown([&] { table.Last(-1); }), code);
    EXPECT_EQ(Thrown([&] { table.Next(); }), code);
    EXPECT_EQ(Thrown([&] { table.Prev(); }), code);
    EXPECT_EQ(Thrown([&] { table.Append(record.data()); }), code);
    EXPECT_EQ(Thrown([&] { table.SetIndex(-1); }), code);
    EXPECT_EQ(Thrown([&] { table.GoTo(1); }), code);
    EXPECT_EQ(Thrown([&] { table.LoadCurrent(record.data()); }), code);
    EXPECT_EQ(Thrown([&] { table.UpdateCurrent(record.data()); }), code);
    EXPECT_EQ(Thrown([&] { table.DeleteCurrent(); }), code);
    EXPECT_EQ(Thrown([&] { table.WriteMemo(u"x", record.data()); }), code);
    EXPECT_EQ(Thrown([&] { table.ReadMemo(text.data(), 8, 1); }), code);
    // These two do not check.
    EXPECT_EQ(table.GetCurrentHandle(), 0U);
    EXPECT_NE(table.IsAtEnd(), 0);
}

TEST_F(CqDbTableTest, MovesOffTheEndReturnZeroWithoutThrowing) {
    std::vector<CqHandle> seen;
    for (int found = m_table.First(-1); found != 0; found = m_table.Next()) {
        seen.push_back(m_table.GetCurrentHandle());
    }
    EXPECT_EQ(seen, (std::vector<CqHandle>{1, 2, 3}));
    EXPECT_NE(m_table.IsAtEnd(), 0);
    seen.clear();
    for (int found = m_table.Last(-1); found != 0; found = m_table.Prev()) {
        seen.push_back(m_table.GetCurrentHandle());
    }
    EXPECT_EQ(seen, (std::vector<CqHandle>{3, 2, 1}));
    CqRecordTable<ThingLayout> empty;
    empty.Open(u"V:/Things");
    EXPECT_EQ(empty.First(-1), 0);
    EXPECT_EQ(empty.Last(-1), 0);
    EXPECT_EQ(empty.Next(), 0);
    EXPECT_EQ(empty.Prev(), 0);
    EXPECT_EQ(empty.GetCurrentHandle(), 0U);
}

TEST_F(CqDbTableTest, AnIndexThatIsNoneThrows) {
    EXPECT_EQ(Thrown([&] { m_table.First(0); }), "0x30000002");
    EXPECT_EQ(Thrown([&] { m_table.Last(1); }), "0x30000002");
    EXPECT_EQ(Thrown([&] { m_table.SetIndex(7); }), "0x30000002");
}

TEST_F(CqDbTableTest, GoingToAStaleHandleThrows) {
    m_table.DeleteRecord(2);
    EXPECT_EQ(Thrown([&] { m_table.GoTo(2); }), "0x31000003");
    EXPECT_EQ(Thrown([&] { m_table.GoTo(0); }), "0x31000003");
    EXPECT_EQ(Thrown([&] { m_table.DeleteRecord(2); }), "0x31000003");
    EXPECT_EQ(m_table.GetRecordCount(), 2);
}

TEST_F(CqDbTableTest, AnAppendedRecordIsTheLast) {
    EXPECT_EQ(m_table.AppendRecord(MakePair(4, 40)), 4U);
    EXPECT_EQ(m_table.GetCurrentHandle(), 4U);
    EXPECT_EQ(m_table.Get<"Second">(), 40U);
    EXPECT_NE(m_table.Append(MakePair(5, 50).data()), 0);
    EXPECT_EQ(m_table.GetCurrentHandle(), 4U);
}

TEST_F(CqDbTableTest, AGetterLoadsOnceUntilTheRecordMayHaveChanged) {
    m_table.GoTo(1);
    EXPECT_FALSE(m_table.IsLoaded());
    EXPECT_EQ(m_table.Get<"First">(), 1U);
    EXPECT_TRUE(m_table.IsLoaded());
    // Behind its back: the two getters in a row load once.
    const std::uint32_t other = OpenTable<PairLayout>(u"V");
    ASSERT_DONE(QrdbGoToRecord(other, 1));
    ASSERT_DONE(QrdbWriteRecord(other, MakePair(100, 200).data()));
    EXPECT_EQ(m_table.Get<"Second">(), 10U);
    m_table.UndoStep();
    EXPECT_EQ(m_table.Get<"Second">(), 200U);
    QrdbCloseTable(other);
    m_table.Next();
    EXPECT_FALSE(m_table.IsLoaded());
    EXPECT_EQ(m_table.Get<"First">(), 2U);
}

TEST_F(CqDbTableTest, EveryPositioningInvalidatesTheBuffer) {
    const auto invalidates = [&](auto&& operation) {
        m_table.GoTo(2);
        (void)m_table.Get<"First">();
        EXPECT_TRUE(m_table.IsLoaded());
        (void)Thrown(operation);
        return !m_table.IsLoaded();
    };
    EXPECT_TRUE(invalidates([&] { m_table.First(-1); }));
    EXPECT_TRUE(invalidates([&] { m_table.Last(-1); }));
    EXPECT_TRUE(invalidates([&] { m_table.Next(); }));
    EXPECT_TRUE(invalidates([&] { m_table.Prev(); }));
    EXPECT_TRUE(invalidates([&] { m_table.SetIndex(-1); }));
    EXPECT_TRUE(invalidates([&] { m_table.SetIndex(5); }));
    EXPECT_TRUE(invalidates([&] { m_table.GoTo(3); }));
    EXPECT_TRUE(invalidates([&] { m_table.GoTo(99); }));
    EXPECT_FALSE(invalidates([&] { m_table.Append(MakePair(0, 0).data()); }));
    EXPECT_TRUE(invalidates([&] { m_table.DeleteCurrent(); }));
}

TEST_F(CqDbTableTest, ASetterChangesTheBufferAndStoreTheTable) {
    m_table.GoTo(2);
    m_table.Set<"First">(55U);
    EXPECT_EQ(PairLayout::Get<"First">(StorePeekRecord(m_table.GetTable(), 2)), 2U);
    EXPECT_EQ(PairLayout::Get<"Second">(m_table.Buffer().data()), 20U);
    m_table.Store();
    EXPECT_TRUE(m_table.IsLoaded());
    EXPECT_EQ(AsString(StorePeekRecord(m_table.GetTable(), 2), 8), AsString(MakePair(55, 20)));
    // Without a loaded record there is nothing to store.
    m_table.Set<"First">(66U);
    m_table.SetIndex(-1);
    m_table.Store();
    EXPECT_EQ(AsString(StorePeekRecord(m_table.GetTable(), 2), 8), AsString(MakePair(55, 20)));
}

TEST_F(CqDbTableTest, PeekingAtARecordNeitherMovesNorTakesAFailureForARecordThatIsGone) {
    m_table.GoTo(2);
    EXPECT_EQ(AsString(m_table.PeekRecord(3), 8), AsString(MakePair(3, 30)));
    Registry::SetLastError(error::kDamaged);
    EXPECT_EQ(m_table.PeekRecord(99), nullptr);
    EXPECT_EQ(m_table.GetCurrentHandle(), 2U);
    m_table.Close();
    EXPECT_EQ(Thrown([&] { (void)m_table.PeekRecord(2); }), Hex(error::kInvalidArgument));
}

TEST_F(CqDbTableTest, LoadingAndUpdatingWithoutACurrentRecordThrowsAndLoadsNothing) {
    m_table.GoTo(2);
    m_table.DeleteCurrent();
    PairLayout::Bytes record{};
    EXPECT_EQ(Thrown([&] { m_table.LoadCurrent(record.data()); }), "0x31000003");
    EXPECT_FALSE(m_table.IsLoaded());
    EXPECT_EQ(Thrown([&] { m_table.UpdateCurrent(record.data()); }), "0x31000003");
    EXPECT_FALSE(m_table.IsLoaded());
    EXPECT_EQ(Thrown([&] { m_table.DeleteCurrent(); }), "0x31000003");
    EXPECT_EQ(Thrown([&] { (void)m_table.Get<"First">(); }), "0x31000003");
}

TEST_F(CqDbTableTest, AMemoOfReferenceZeroIsEmptyWithoutAskingTheStore) {
    const PairTable closed;
    std::array<char16_t, 4> text{u'x', u'y'};
    closed.ReadMemo(text.data(), sizeof(text), 0);
    EXPECT_EQ(text[0], u'\0');
}

TEST_F(CqDbTableTest, AMemoIsReadBackWithAtMostTwoHundredAndFiftyFiveCharacters) {
    CqRecordTable<ThingLayout> things;
    things.Open(u"V:/Things");
    const CString longText(300, u'm');
    ThingLayout::Bytes record = MakeThing(1);
    things.SetMemo<"Remark">(record, longText);
    things.AppendRecord(record);
    EXPECT_EQ(things.GetMemo<"Remark">(), longText.substr(0, 255));
    things.SetMemo<"Remark">(u"other");
    things.Store();
    EXPECT_EQ(things.GetMemo<"Remark">(), u"other");
    things.SetMemo<"Remark">(u"");
    things.Store();
    EXPECT_EQ(things.Get<"Remark">(), 0U);
    EXPECT_EQ(things.GetMemo<"Remark">(), u"");
    std::array<char16_t, 8> text{};
    EXPECT_EQ(Thrown([&] { things.ReadMemo(text.data(), sizeof(text), 12345); }), "0x30000007");
}

TEST_F(CqDbTableTest, RecordsOfATableThatIsNotOpenAreCountedWithoutThrowing) {
    EXPECT_EQ(CqDbTable::CountRecords(u"V:/Pairs"), 3);
    EXPECT_EQ(CqDbTable::CountRecords(u"V:/Things"), 0);
    EXPECT_EQ(CqDbTable::CountRecords(u"V:/None"), 0);
    EXPECT_EQ(CqDbTable::CountRecords(u"W:/Pairs"), 0);
}

TEST_F(CqDbTableTest, TheExceptionTellsWhereItHappened) {
    try {
        m_table.GoTo(2);
        m_table.DeleteCurrent();
        m_table.DeleteCurrent();
        FAIL() << "nothing was thrown";
    } catch (const CqSurveyException& failure) {
        EXPECT_NE(std::string(failure.what()).find("Pairs"), std::string::npos) << failure.what();
    }
}

}  // namespace
}  // namespace cqsurvey
