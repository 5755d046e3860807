#include "index/LinkIndex.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "cqsurvey/CqSurveyException.h"
#include "store/Qrfs.h"
#include "store/StoreExtras.h"
#include "support/TempDir.h"

namespace cqsurvey {
namespace {

const CString kMount = u"LINKS";
const CString kTable = u"LINKS:/_PointToVertexLink";

using Handles = std::vector<CqHandle>;

class LinkIndexTest : public ::testing::Test {
 protected:
    void SetUp() override {
        const CString path = m_folder.Path(u"links.job");
        ASSERT_NE(QrfsCreateVolume(path), 0);
        ASSERT_NE(QrfsMount(path, kMount), 0);
        m_table.Create(kTable);
        m_links.OnCreate(u"");
    }

    void TearDown() override {
        m_links.OnClose();
        m_table.Close();
        QrfsUnmount(kMount);
    }

    void Reopen() {
        m_links.OnClose();
        m_table.Close();
        ASSERT_NE(QrfsUnmount(kMount), 0);
        ASSERT_NE(QrfsMount(m_folder.Path(u"links.job"), kMount), 0);
        m_table.Open(kTable);
        m_links.OnOpen(u"");
    }

    /// The point of the vertex's link, nothing when the vertex is not in its index.
    std::optional<CqHandle> PointOf(CqHandle vertex) {
        const CqHandle link = m_links.FindByVertex(vertex);
        if (link == 0) {
            return std::nullopt;
        }
        return m_table.GetAt<"PointDataID">(link);
    }

    /// The vertices of the point's links.
    Handles VerticesOf(CqHandle point) {
        Handles vertices;
        for (const CqHandle link : m_links.ListByPoint(point)) {
            vertices.push_back(m_table.GetAt<"VertexDataID">(link));
        }
        return vertices;
    }

    TempDir m_folder;
    CqLinkTable m_table;
    LinkIndex m_links{m_table};
};

TEST_F(LinkIndexTest, StartsWithoutLinks) {
    EXPECT_EQ(m_table.GetRecordCount(), 0);
    EXPECT_EQ(m_links.FindByVertex(7), 0U);
    EXPECT_TRUE(m_links.ListByPoint(7).empty());
    EXPECT_EQ(m_links.Unlink(0, 7), 0);
}

TEST_F(LinkIndexTest, FindsALinkFromEitherSide) {
    m_links.AppendLink(2, 10);
    ASSERT_EQ(m_links.FindByVertex(10), 1U);
    EXPECT_EQ(m_table.GetAt<"PointDataID">(1), 2U);
    EXPECT_EQ(m_table.GetAt<"VertexDataID">(1), 10U);
    EXPECT_EQ(m_links.ListByPoint(2), Handles{1});
    EXPECT_EQ(m_links.FindByVertex(2), 0U);
    EXPECT_TRUE(m_links.ListByPoint(10).empty());
}

TEST_F(LinkIndexTest, ListsThePointsLinksInTheOrderTheyWereAdded) {
    m_links.AppendLink(2, 30);
    m_links.AppendLink(3, 20);
    m_links.AppendLink(2, 10);
    m_links.AppendLink(2, 25);
    EXPECT_EQ(VerticesOf(2), (Handles{30, 10, 25}));
    EXPECT_EQ(VerticesOf(3), Handles{20});
    m_links.Unlink(0, 10);
    EXPECT_EQ(VerticesOf(2), (Handles{30, 25}));
    m_links.AppendLink(2, 10);
    EXPECT_EQ(VerticesOf(2), (Handles{30, 25, 10}));
    Reopen();
    EXPECT_EQ(VerticesOf(2), (Handles{30, 25, 10}));
}

TEST_F(LinkIndexTest, UnlinksWithAnyPointOrTheRightOne) {
    m_links.AppendLink(2, 10);
    m_links.AppendLink(2, 11);
    EXPECT_EQ(m_links.Unlink(0, 10), 1);
    EXPECT_EQ(m_table.GetRecordCount(), 1);
    EXPECT_EQ(m_links.FindByVertex(10), 0U);
    EXPECT_EQ(VerticesOf(2), Handles{11});
    EXPECT_EQ(m_links.Unlink(2, 11), 1);
    EXPECT_EQ(m_table.GetRecordCount(), 0);
    EXPECT_TRUE(m_links.ListByPoint(2).empty());
    EXPECT_EQ(m_links.Unlink(2, 11), 0);
}

TEST_F(LinkIndexTest, ForgetsTheVertexButKeepsTheLinkWhenThePointIsWrong) {
    m_links.AppendLink(2, 10);
    EXPECT_EQ(m_links.Unlink(3, 10), 0);
    EXPECT_EQ(m_links.FindByVertex(10), 0U);
    EXPECT_EQ(m_table.GetRecordCount(), 1);
    EXPECT_EQ(VerticesOf(2), Handles{10});
    EXPECT_EQ(m_links.Unlink(2, 10), 0) << "the tie is forgotten for the right point, too";
    EXPECT_EQ(m_table.GetRecordCount(), 1);
}

TEST_F(LinkIndexTest, FindsAForgottenTieAgainAfterReopening) {
    m_links.AppendLink(2, 10);
    m_links.Unlink(3, 10);
    Reopen();
    EXPECT_EQ(PointOf(10), 2U);
    EXPECT_EQ(m_links.Unlink(2, 10), 1);
    Reopen();
    EXPECT_EQ(m_links.FindByVertex(10), 0U);
    EXPECT_EQ(m_table.GetRecordCount(), 0);
}

TEST_F(LinkIndexTest, FindsTheLastOfAVertexsLinksAfterReopening) {
    m_links.AppendLink(2, 10);
    m_links.Unlink(3, 10);
    m_links.AppendLink(4, 10);
    EXPECT_EQ(PointOf(10), 4U);
    EXPECT_EQ(VerticesOf(2), Handles{10});
    Reopen();
    EXPECT_EQ(PointOf(10), 4U);
    EXPECT_EQ(m_links.Unlink(0, 10), 1);
    EXPECT_EQ(m_links.FindByVertex(10), 0U);
    EXPECT_EQ(VerticesOf(2), Handles{10});
    Reopen();
    EXPECT_EQ(PointOf(10), 2U);
}

TEST_F(LinkIndexTest, HasNoListForALinkWithoutPoint) {
    m_links.AppendLink(0, 10);
    EXPECT_EQ(PointOf(10), 0U);
    EXPECT_TRUE(m_links.ListByPoint(0).empty());
    Reopen();
    EXPECT_EQ(PointOf(10), 0U);
    EXPECT_TRUE(m_links.ListByPoint(0).empty());
    EXPECT_EQ(m_links.Unlink(0, 10), 1);
    EXPECT_EQ(m_table.GetRecordCount(), 0);
}

TEST_F(LinkIndexTest, TakesAbsurdHandlesInStride) {
    m_links.AppendLink(0xFFFFFFFF, 0xFFFFFFFE);
    m_links.AppendLink(0xFFFFFFFF, 0xFFFFFFFF);
    Reopen();
    EXPECT_EQ(PointOf(0xFFFFFFFE), 0xFFFFFFFFU);
    EXPECT_EQ(VerticesOf(0xFFFFFFFF), (Handles{0xFFFFFFFE, 0xFFFFFFFF}));
}

TEST_F(LinkIndexTest, ForgetsItsIndexesWhenItIsClosed) {
    m_links.AppendLink(2, 10);
    m_links.OnClose();
    EXPECT_EQ(m_links.FindByVertex(10), 0U);
    EXPECT_TRUE(m_links.ListByPoint(2).empty());
}

TEST_F(LinkIndexTest, LeavesAnOlderListAloneWhenLinksAreRemovedFromIt) {
    m_links.AppendLink(2, 10);
    m_links.AppendLink(2, 11);
    const Handles before = m_links.ListByPoint(2);
    for (const CqHandle link : before) {
        EXPECT_EQ(m_links.Unlink(0, m_table.GetAt<"VertexDataID">(link)), 1);
    }
    EXPECT_EQ(before.size(), 2U);
    EXPECT_TRUE(m_links.ListByPoint(2).empty());
}

/// The two indexes and the table, written as plainly as can be.
struct LinkModel {
    struct Link {
        CqHandle record;
        CqHandle point;
        CqHandle vertex;
    };

    std::vector<Link> table;
    std::map<CqHandle, CqHandle> vertices;
    std::map<CqHandle, Handles> points;
    CqHandle lastRecord = 0;

    void Enter(const Link& link) {
        if (link.point != 0) {
            points[link.point].push_back(link.record);
        }
        vertices[link.vertex] = link.record;
    }
    void Append(CqHandle point, CqHandle vertex) {
        table.push_back({++lastRecord, point, vertex});
        Enter(table.back());
    }
    int Unlink(CqHandle point, CqHandle vertex) {
        const auto entry = vertices.find(vertex);
        if (entry == vertices.end()) {
            return 0;
        }
        const auto link = std::find_if(table.begin(), table.end(), [&](const Link& each) {
            return each.record == entry->second;
        });
        vertices.erase(entry);
        if (point != 0 && point != link->point) {
            return 0;
        }
        Handles& list = points[link->point];
        list.erase(std::remove(list.begin(), list.end(), link->record), list.end());
        if (list.empty()) {
            points.erase(link->point);
        }
        table.erase(link);
        return 1;
    }
    void Reopen() {
        vertices.clear();
        points.clear();
        for (const Link& link : table) {
            Enter(link);
        }
    }
};

TEST_F(LinkIndexTest, FollowsRandomStepsThatAreKeptUndoneAndReopened) {
    constexpr unsigned kSeed = 31;
    constexpr CqHandle kPoints = 6;
    constexpr CqHandle kVertices = 40;
    SCOPED_TRACE("seed " + std::to_string(kSeed));
    std::mt19937 random(kSeed);
    const auto below = [&](std::uint32_t bound) { return static_cast<CqHandle>(random() % bound); };
    LinkModel model;

    const auto expectSame = [&] {
        ASSERT_EQ(m_table.GetRecordCount(), static_cast<std::int32_t>(model.table.size()));
        for (CqHandle vertex = 0; vertex < 100 + kVertices; ++vertex) {
            const auto entry = model.vertices.find(vertex);
            ASSERT_EQ(m_links.FindByVertex(vertex),
                      entry != model.vertices.end() ? entry->second : 0);
        }
        for (CqHandle point = 0; point <= kPoints; ++point) {
            const auto list = model.points.find(point);
            ASSERT_EQ(m_links.ListByPoint(point),
                      list != model.points.end() ? list->second : Handles{});
        }
    };

    for (int round = 0; round < 300 && !HasFatalFailure(); ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        const LinkModel before = model;
        ASSERT_NE(StoreBeginStep(kMount), 0);
        for (CqHandle step = below(60); step > 0; --step) {
            const CqHandle vertex = 100 + below(kVertices);
            if (below(2) == 0) {
                if (model.vertices.count(vertex) == 0) {
                    const CqHandle point = below(kPoints + 1);
                    m_links.AppendLink(point, vertex);
                    model.Append(point, vertex);
                }
            } else {
                const CqHandle point = below(4) == 0 ? 1 + below(kPoints) : 0;
                ASSERT_EQ(m_links.Unlink(point, vertex), model.Unlink(point, vertex));
            }
        }
        if (below(3) == 0) {
            ASSERT_NE(StoreRollbackStep(kMount), 0);
            m_links.UndoStep();
            model = before;
        } else {
            ASSERT_NE(StoreCommitStep(kMount), 0);
            m_links.KeepStep();
        }
        expectSame();
        if (below(20) == 0) {
            Reopen();
            model.Reopen();
            expectSame();
        }
    }
}

TEST_F(LinkIndexTest, UndoesAStepWithATieThatWasForgottenBeforeStillForgotten) {
    m_links.AppendLink(2, 10);
    m_links.AppendLink(2, 11);
    m_links.Unlink(3, 10);
    m_links.KeepStep();
    ASSERT_NE(StoreBeginStep(kMount), 0);
    m_links.Unlink(0, 11);
    m_links.AppendLink(5, 10);
    ASSERT_NE(StoreRollbackStep(kMount), 0);
    m_links.UndoStep();
    EXPECT_EQ(m_links.FindByVertex(10), 0U);
    EXPECT_EQ(PointOf(11), 2U);
    EXPECT_EQ(VerticesOf(2), (Handles{10, 11}));
    EXPECT_TRUE(m_links.ListByPoint(5).empty());
}

TEST_F(LinkIndexTest, UndoesTheForgettingOfTheStepItself) {
    m_links.AppendLink(2, 10);
    m_links.KeepStep();
    ASSERT_NE(StoreBeginStep(kMount), 0);
    m_links.Unlink(3, 10);
    ASSERT_NE(StoreRollbackStep(kMount), 0);
    m_links.UndoStep();
    EXPECT_EQ(PointOf(10), 2U);
}

}  // namespace
}  // namespace cqsurvey
