#include "exchange/drawing/DrawingWalk.h"

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "exchange/drawing/DrawingJob.h"
#include "support/Drawing.h"

namespace cqsurvey::exchange {
namespace {

using List = std::vector<std::string>;

/// An entity as its type and its vertices.
std::string Shown(const CqCadEntity& entity, const std::vector<WalkedVertex>& vertices) {
    std::string text = std::to_string(entity.GetType());
    for (const WalkedVertex& vertex : vertices) {
        text += " " + std::to_string(static_cast<int>(vertex.vertex.at.x)) +
                (vertex.vertex.hasHeight ? "" : "-") + (vertex.tied != 0 ? "t" : "");
    }
    return text;
}

List Walk(CqSurveyDB& db) {
    List list;
    WalkDrawing(db, nullptr, [&](const CqCadEntity& entity, const auto& vertices) {
        list.push_back(Shown(entity, vertices));
    });
    return list;
}

TEST(DrawingWalkTest, APolylineComesWithItsVerticesAndOthersWithNone) {
    DrawingJob job;
    EXPECT_TRUE(Walk(job.db).empty());
    const std::string circle = std::to_string(EntCircle);
    const std::string line = std::to_string(EntPline);
    DrawCircle(job.db, 9, 9, 1);
    DrawPath(job.db, {{1, 0, 0, 0}, {2, 0, std::numeric_limits<double>::quiet_NaN(), 0}});
    DrawPath(job.db, {{3, 0, 0, 0}, {4, 0, 0, 0}, {5, 0, 0, 0}});
    DrawCircle(job.db, 9, 9, 1);
    DrawPath(job.db, {{6, 0, 0, 0}, {7, 0, 0, 0}});
    EXPECT_EQ(Walk(job.db), (List{circle, line + " 1 2-", line + " 3 4 5", circle, line + " 6 7"}));
}

TEST(DrawingWalkTest, AVertexSaysWhichPointItIsTiedTo) {
    DrawingJob job;
    const CqHandle point = DrawPoint(job.db, u"P", 1, 0);
    CqHandle next = DrawPath(job.db, {{1, 0, 0, 0}, {2, 0, 0, 0}});
    CqCadEntity* line = nullptr;
    ASSERT_NE(job.db.GetNextCadEntity(next, line), 0);
    CqSurveyDB::DeleteCqCadEntityObject(line);
    ASSERT_EQ(job.db.LinkSiPntAndVertex(job.db.GetCadEntityHandleByCoordRecHandle(point), next), 1);
    EXPECT_EQ(Walk(job.db).back(), std::to_string(EntPline) + " 1t 2");
}

TEST(DrawingWalkTest, OneEntityIsShownByItsHandle) {
    DrawingJob job;
    DrawCircle(job.db, 9, 9, 1);
    const CqHandle handle = DrawPath(job.db, {{3, 0, 0, 0}, {4, 0, 0, 0}});
    DrawPath(job.db, {{6, 0, 0, 0}, {7, 0, 0, 0}});
    List list;
    const auto visit = [&](const CqCadEntity& entity, const auto& vertices) {
        list.push_back(Shown(entity, vertices));
    };
    ShowEntity(job.db, handle, visit);
    EXPECT_EQ(list, List{std::to_string(EntPline) + " 3 4"});
    ShowEntity(job.db, 0, visit);
    EXPECT_EQ(list.size(), 1U);
}

TEST(DrawingWalkTest, ProgressCountsVerticesTooAndMayEndTheWalk) {
    DrawingJob job;
    DrawPath(job.db, {{3, 0, 0, 0}, {4, 0, 0, 0}});
    std::size_t last = 0;
    WalkDrawing(
        job.db, [&](std::size_t walked) { last = walked; }, [](const CqCadEntity&, const auto&) {});
    EXPECT_EQ(last, 3U);
    EXPECT_THROW(WalkDrawing(
                     job.db, [](std::size_t) { throw std::runtime_error("stop"); },
                     [](const CqCadEntity&, const auto&) {}),
                 std::runtime_error);
}

}  // namespace
}  // namespace cqsurvey::exchange
