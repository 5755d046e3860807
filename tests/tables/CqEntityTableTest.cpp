#include "tables/CqEntityTable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

#include "cqsurvey/CqSurveyException.h"
#include "store/Qrfs.h"
#include "support/Points.h"
#include "support/TempDir.h"

namespace cqsurvey {
namespace {

const CString kMount = u"CHAIN";
const CString kTable = u"CHAIN:/_EntityData";

/// The links of a record, previous and next.
using Links = std::pair<CqHandle, CqHandle>;

class CqEntityTableTest : public ::testing::Test {
 protected:
    void SetUp() override {
        const CString path = m_folder.Path(u"chain.job");
        ASSERT_NE(QrfsCreateVolume(path), 0);
        ASSERT_NE(QrfsMount(path, kMount), 0);
        m_entities.Create(kTable);
    }

    void TearDown() override {
        m_entities.Close();
        QrfsUnmount(kMount);
    }

    void Reopen() {
        m_entities.Close();
        ASSERT_NE(QrfsUnmount(kMount), 0);
        ASSERT_NE(QrfsMount(m_folder.Path(u"chain.job"), kMount), 0);
        m_entities.Open(kTable);
    }

    CqHandle Append(CqHandle prev, CqHandle next) {
        return m_entities.AppendEntity({5, 0, 1, 256, 0.0, 0.0, 0.0}, prev, next);
    }
    [[nodiscard]] Links LinksOf(CqHandle record) {
        m_entities.GoTo(record);
        return {m_entities.Get<"PrevEntityIndex">(), m_entities.Get<"NextEntityIndex">()};
    }
    /// Head and tail are these, in memory and in the header's record.
    void ExpectEnds(CqHandle head, CqHandle tail) {
        EXPECT_EQ(m_entities.GetHead(), head);
        EXPECT_EQ(m_entities.GetTail(), tail);
        EXPECT_EQ(LinksOf(CqEntityTable::kHeader), Links(tail, head));
    }

    TempDir m_folder;
    CqEntityTable m_entities;
};

TEST_F(CqEntityTableTest, StartsWithAHeaderOfZeros) {
    EXPECT_EQ(m_entities.GetRecordCount(), 1);
    m_entities.GoTo(CqEntityTable::kHeader);
    const std::byte* record = m_entities.Record();
    EXPECT_TRUE(std::all_of(record, record + EntityLayout::kWidth,
                            [](std::byte each) { return each == std::byte{0}; }));
    ExpectEnds(0, 0);
}

TEST_F(CqEntityTableTest, KeepsEveryFieldOfARecord) {
    const CqHandle entity = m_entities.AppendEntity({6, 77, 0xFFFF, -256, 1.5, -2.5, 3.5});
    EXPECT_EQ(entity, 2U);
    m_entities.GoTo(entity);
    EXPECT_EQ(m_entities.Get<"ObjectType">(), 6);
    EXPECT_EQ(m_entities.Get<"ObjectIndex">(), 77U);
    EXPECT_EQ(m_entities.Get<"LayerIndex">(), 0xFFFF);
    EXPECT_EQ(m_entities.Get<"ColorID">(), -256);
    EXPECT_EQ(m_entities.Get<"N">(), 1.5);
    EXPECT_EQ(m_entities.Get<"E">(), -2.5);
    EXPECT_EQ(m_entities.Get<"Z">(), 3.5);
}

TEST_F(CqEntityTableTest, ChainsRecordsWithoutNeighboursBehindItsTail) {
    const CqHandle a = Append(0, 0);
    EXPECT_EQ(LinksOf(a), Links(0, 0));
    ExpectEnds(a, a);
    const CqHandle b = Append(0, 0);
    const CqHandle c = Append(0, 0);
    EXPECT_EQ(LinksOf(a), Links(0, b));
    EXPECT_EQ(LinksOf(b), Links(a, c));
    EXPECT_EQ(LinksOf(c), Links(b, 0));
    ExpectEnds(a, c);
}

TEST_F(CqEntityTableTest, LeavesTheNeighboursThatAreGivenToTheCaller) {
    const CqHandle a = Append(0, 0);
    const CqHandle b = Append(0, 0);
    const CqHandle between = Append(a, b);
    EXPECT_EQ(LinksOf(between), Links(a, b));
    EXPECT_EQ(LinksOf(a), Links(0, b));
    EXPECT_EQ(LinksOf(b), Links(a, 0));
    ExpectEnds(a, b);
}

TEST_F(CqEntityTableTest, MakesARecordWithoutANextItsTailAndLeavesThePreviousOne) {
    const CqHandle a = Append(0, 0);
    const CqHandle b = Append(a, 0);
    EXPECT_EQ(LinksOf(b), Links(a, 0));
    EXPECT_EQ(LinksOf(a), Links(0, 0));
    ExpectEnds(a, b);
}

TEST_F(CqEntityTableTest, LinksItsTailToARecordWithANextButKeepsTheTail) {
    const CqHandle a = Append(0, 0);
    const CqHandle b = Append(0, 99);
    EXPECT_EQ(LinksOf(b), Links(a, 99));
    EXPECT_EQ(LinksOf(a), Links(0, b));
    ExpectEnds(a, a);
}

TEST_F(CqEntityTableTest, MakesTheFirstRecordItsHeadEvenWithANext) {
    const CqHandle a = Append(0, 99);
    EXPECT_EQ(LinksOf(a), Links(0, 99));
    ExpectEnds(a, 0);
}

TEST_F(CqEntityTableTest, ClosesTheGapOfARecordThatIsRemoved) {
    const CqHandle a = Append(0, 0);
    const CqHandle b = Append(0, 0);
    const CqHandle c = Append(0, 0);
    const CqHandle d = Append(0, 0);
    m_entities.Remove(b, true);
    EXPECT_EQ(LinksOf(a), Links(0, c));
    EXPECT_EQ(LinksOf(c), Links(a, d));
    ExpectEnds(a, d);
    m_entities.Remove(a, true);
    EXPECT_EQ(LinksOf(c), Links(0, d));
    ExpectEnds(c, d);
    m_entities.Remove(d, true);
    EXPECT_EQ(LinksOf(c), Links(0, 0));
    ExpectEnds(c, c);
    m_entities.Remove(c, true);
    ExpectEnds(0, 0);
    EXPECT_EQ(m_entities.GetRecordCount(), 1);
}

TEST_F(CqEntityTableTest, LeavesTheGapWhenItIsNotToBeClosed) {
    const CqHandle a = Append(0, 0);
    const CqHandle b = Append(0, 0);
    const CqHandle c = Append(0, 0);
    for (const CqHandle each : {b, a, c}) {
        m_entities.Remove(each, false);
    }
    EXPECT_EQ(m_entities.GetRecordCount(), 1);
    ExpectEnds(a, c);
}

TEST_F(CqEntityTableTest, RemovesNeitherItsHeaderNorNothing) {
    const CqHandle a = Append(0, 0);
    for (const bool relink : {false, true}) {
        m_entities.Remove(0, relink);
        m_entities.Remove(CqEntityTable::kHeader, relink);
    }
    EXPECT_EQ(m_entities.GetRecordCount(), 2);
    ExpectEnds(a, a);
    EXPECT_EQ(CodeThrownBy([&] { m_entities.Remove(99, true); }), error::kNoRecord);
}

TEST_F(CqEntityTableTest, SetsEitherLinkAlone) {
    const CqHandle a = Append(0, 0);
    m_entities.SetNext(a, 7);
    EXPECT_EQ(LinksOf(a), Links(0, 7));
    m_entities.SetPrev(a, 8);
    EXPECT_EQ(LinksOf(a), Links(8, 7));
    ExpectEnds(a, a);
}

TEST_F(CqEntityTableTest, ReadsHeadAndTailFromItsHeader) {
    const CqHandle a = Append(0, 0);
    const CqHandle b = Append(0, 0);
    Reopen();
    ExpectEnds(a, b);
    m_entities.SetNext(CqEntityTable::kHeader, 50);
    m_entities.SetPrev(CqEntityTable::kHeader, 60);
    Reopen();
    ExpectEnds(50, 60);
}

TEST_F(CqEntityTableTest, HasNeitherHeadNorTailWithoutAHeader) {
    Append(0, 0);
    m_entities.DeleteRecord(CqEntityTable::kHeader);
    Reopen();
    EXPECT_EQ(m_entities.GetHead(), 0U);
    EXPECT_EQ(m_entities.GetTail(), 0U);
    m_entities.DeleteRecord(2);
    Reopen();
    EXPECT_EQ(m_entities.GetHead(), 0U);
    EXPECT_EQ(m_entities.GetTail(), 0U);
}

TEST_F(CqEntityTableTest, TakesHeadAndTailBackToTheLastStepKept) {
    const CqHandle a = Append(0, 0);
    m_entities.KeepStep();
    Append(0, 0);
    m_entities.Remove(a, true);
    m_entities.UndoStep();
    EXPECT_EQ(m_entities.GetHead(), a);
    EXPECT_EQ(m_entities.GetTail(), a);
}

}  // namespace
}  // namespace cqsurvey
