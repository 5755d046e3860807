#include "exchange/drawing/Drawing.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "exchange/drawing/DrawingJob.h"
#include "support/Drawing.h"

namespace cqsurvey::exchange {
namespace {

using List = std::vector<std::string>;

DrawnText TextAt(const Vec3& at, double rotation = 0.0) {
    DrawnText text;
    text.at = at;
    text.text = u"x";
    text.height = 2;
    text.rotation = rotation;
    return text;
}

class DrawingTest : public testing::Test {
 protected:
    struct UsedJob : DrawingJob {
        UsedJob() {
            db.AddLayer(u"Mine", 2, 0);
            db.AddLayer(u"Road", 3, 0);
            db.SetCurrentLayer(u"Mine");
            db.SetCurrentColor(5);
        }
    };

    UsedJob job;
    DrawingReport report;
    Drawing drawing{job.db, report};
    Style style{u"Road", 1, 4};
};

TEST_F(DrawingTest, WhatIsDrawnHasItsStyleAndIsCounted) {
    EXPECT_TRUE(drawing.Polyline(style, {{{1, 2, 3}, 0.5}, {{4, 5, 6}, 0}}, {}));
    EXPECT_TRUE(drawing.Circle(style, {1, 2, 3}, 4, {}));
    EXPECT_TRUE(drawing.Text(style, TextAt({1, 2, 3}), {}));
    EXPECT_EQ(job.List(),
              (List{"line 1,2,3(0.5) 4,5,6", "circle 1,2,3 4", "text x 1,2,3 h2 r0 a00"}));
    EXPECT_EQ(report.polylines, 1U);
    EXPECT_EQ(report.vertices, 2U);
    EXPECT_EQ(report.circles, 1U);
    EXPECT_EQ(report.texts, 1U);
    for (const CqCadEntityPtr& entity : Entities(job.db)) {
        EXPECT_EQ(entity->GetLayer(), u"Road");
        EXPECT_EQ(entity->GetColor(), 1);
    }
}

TEST_F(DrawingTest, WhatIsNotFiniteOrTooFarAwayIsRefusedAndNothingIsDrawn) {
    for (const double number : {std::nan(""), HUGE_VAL, -HUGE_VAL, 1.1e12}) {
        EXPECT_FALSE(drawing.Polyline(style, {{{1, 2, 3}, 0}, {{number, 5, 6}, 0}}, {}));
        EXPECT_FALSE(drawing.Polyline(style, {{{1, 2, 3}, 0}, {{4, 5, number}, 0}}, {}));
        EXPECT_FALSE(drawing.Circle(style, {1, number, 3}, 4, {}));
        EXPECT_FALSE(drawing.Circle(style, {1, 2, 3}, number, {}));
        EXPECT_FALSE(drawing.Text(style, TextAt({number, 2, 3}), {}));
    }
    EXPECT_FALSE(drawing.Polyline(style, {{{1, 2, 3}, std::nan("")}, {{4, 5, 6}, 0}}, {}));
    EXPECT_FALSE(drawing.Polyline(style, {{{1, 2, 3}, 0}}, {}));
    EXPECT_FALSE(drawing.Circle(style, {1, 2, 3}, 0, {}));
    EXPECT_FALSE(drawing.Text(style, TextAt({1, 2, 3}, HUGE_VAL), {}));
    EXPECT_TRUE(job.List().empty());
    EXPECT_EQ(report.vertices, 0U);
}

TEST_F(DrawingTest, AHeightIsMissingWhenTheExtrasOrTheVertexSaySo) {
    Extras none;
    none.Set("HEIGHT", "NONE");
    drawing.Circle(style, {1, 2, 3}, 4, none);
    drawing.Polyline(style, {{{1, 2, 3}, 0, false}, {{4, 5, 6}, 0, true}}, {});
    drawing.Polyline(style, {{{1, 2, 3}, 0}, {{4, 5, 6}, 0}}, none);
    EXPECT_EQ(job.List(), (List{"circle 1,2,- 4", "line 1,2,- 4,5,6", "line 1,2,- 4,5,-"}));
}

TEST_F(DrawingTest, VerticesAreTiedToTheirPoints) {
    const CqHandle point = DrawPoint(job.db, u"P", 4, 5, 6);
    const CqHandle entity = job.db.GetCadEntityHandleByCoordRecHandle(point);
    drawing.Polyline(style, {{{1, 2, 3}, 0}, {{4, 5, 6}, 0}, {{7, 8, 9}, 0}}, {}, {0, entity, 0});
    std::vector<CqHandle> ties;
    for (const CqCadEntityPtr& vertex : Entities(job.db)) {
        if (vertex->GetType() == EntVertex) {
            ties.push_back(vertex->GetMcadSiPointHandle());
        }
    }
    EXPECT_EQ(ties, (std::vector<CqHandle>{0, entity, 0}));
}

TEST_F(DrawingTest, AtTheEndLayerColourAndGroupAreAsTheyWere) {
    drawing.Circle(style, {1, 2, 3}, 4, {});
    EXPECT_EQ(job.db.GetCurrentLayer(), u"Road");
    EXPECT_EQ(drawing.GetLayerBefore(), u"Mine");
    drawing.Finish();
    EXPECT_EQ(job.db.GetCurrentLayer(), u"Mine");
    EXPECT_EQ(job.db.GetCurrentColor(), 5);
}

}  // namespace
}  // namespace cqsurvey::exchange
