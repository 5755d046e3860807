#include "exchange/codes/FigureShaper.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

namespace cqsurvey::exchange {

namespace {

class FigureShaperTest : public testing::Test {
 protected:
    FigureShaperTest() { m_table.Add({.code = u"A", .kind = CqCodeKind::Line}); }

    /// Shapes the one figure of the points; each has a place and what stands behind its code.
    ShapedFigure Shape(std::initializer_list<std::pair<CVector, std::string>> shots) {
        const CodeWords words = CodeWords::FromText("words,curve-point=ON");
        FieldCodes codes(m_table, words);
        FigureBuilder builder;
        FieldDescription description;
        m_points.clear();
        for (const auto& [place, text] : shots) {
            FieldPoint point;
            point.place = place;
            point.height = static_cast<double>(m_points.size());
            codes.Parse("A " + text, description);
            builder.Add(m_points.size(), m_points.size(), description.codes.front());
            m_points.push_back(point);
        }
        const FigureShaper shaper(m_points, 0.01, [&](const std::string& name) {
            return name == "7" ? std::optional<std::size_t>(0) : std::nullopt;
        });
        return shaper.Shape(builder.Finish().front());
    }

    static std::string Reasons(const ShapedFigure& shaped) {
        std::string reasons;
        for (const Finding& finding : shaped.findings) {
            reasons += std::to_string(finding.row) + " " + finding.reason + "\n";
        }
        return reasons;
    }

    CqCodeTable m_table;
    std::vector<FieldPoint> m_points;
};

TEST_F(FigureShaperTest, CurvesFollowEachOtherAtOnePoint) {
    const ShapedFigure shaped =
        Shape({{{0, 0}, "BC"}, {{1, 1}, ""}, {{2, 0}, "EC BC"}, {{3, -1}, ""}, {{4, 0}, "EC"}});
    EXPECT_EQ(Reasons(shaped), "");
    const double half = std::tan(std::atan(1.0) / 2);
    ASSERT_EQ(shaped.paths.size(), 1U);
    EXPECT_NEAR(shaped.paths[0].vertices[0].bulge, -half, 1e-12);
    EXPECT_NEAR(shaped.paths[0].vertices[1].bulge, -half, 1e-12);
    EXPECT_NEAR(shaped.paths[0].vertices[2].bulge, half, 1e-12);
    EXPECT_NEAR(shaped.paths[0].vertices[3].bulge, half, 1e-12);
}

TEST_F(FigureShaperTest, PointsOnACurveInARowAreOneCurve) {
    const ShapedFigure shaped =
        Shape({{{-5, 0}, ""}, {{0, 0}, "ON"}, {{1, 1}, "ON"}, {{2, 0}, "ON"}, {{2, -5}, ""}});
    EXPECT_EQ(Reasons(shaped), "");
    EXPECT_EQ(shaped.paths[0].vertices[0].bulge, 0.0);
    EXPECT_NE(shaped.paths[0].vertices[1].bulge, 0.0);
    EXPECT_NE(shaped.paths[0].vertices[2].bulge, 0.0);
    EXPECT_EQ(shaped.paths[0].vertices[3].bulge, 0.0);
    EXPECT_EQ(Reasons(Shape({{{0, 0}, ""}, {{1, 0}, "ON"}, {{2, 0}, ""}})),
              "1 a curve of one point\n");
}

TEST_F(FigureShaperTest, ATangentArcGoesOnFromAnArc) {
    const ShapedFigure shaped =
        Shape({{{0, 0}, "BC"}, {{1, 1}, ""}, {{2, 0}, "EC BC"}, {{3, -1}, "EC"}});
    EXPECT_EQ(Reasons(shaped), "");
    // The first arc ends southwards; from there a quarter of a circle turns to the east.
    EXPECT_NEAR(shaped.paths[0].vertices[2].bulge, std::tan(std::atan(1.0) / 2), 1e-12);
}

TEST_F(FigureShaperTest, AFigureThatIsClosedInACurveIsClosedByItsArc) {
    // A door: three straight sides and a half circle above.
    const ShapedFigure shaped =
        Shape({{{0, 10}, ""}, {{0, 0}, ""}, {{20, 0}, ""}, {{20, 10}, "BC"}, {{10, 20}, "CLS"}});
    EXPECT_EQ(Reasons(shaped), "");
    const double quarter = std::tan(std::atan(1.0) / 2);
    ASSERT_EQ(shaped.paths[0].vertices.size(), 6U);
    EXPECT_TRUE(shaped.paths[0].closed);
    const std::array<double, 6> bulges{0.0, 0.0, 0.0, quarter, quarter, 0.0};
    for (std::size_t i = 0; i < bulges.size(); ++i) {
        EXPECT_NEAR(shaped.paths[0].vertices[i].bulge, bulges[i], 1e-12) << i;
    }
}

TEST_F(FigureShaperTest, AFigureThatIsClosedByTwoPointsOfACurveIsClosedByATangentArc) {
    // The last side runs to the east and then in a half circle back to the beginning.
    const ShapedFigure shaped = Shape({{{0, 10}, ""}, {{0, 0}, ""}, {{5, 0}, "BC CLS"}});
    EXPECT_EQ(Reasons(shaped), "");
    EXPECT_NEAR(shaped.paths[0].vertices[2].bulge, std::tan(std::atan2(10.0, -5.0) / 2), 1e-12);
}

TEST_F(FigureShaperTest, AClosedFigureOfPointsOnACurveIsAWholeCircle) {
    for (const char* word : {"ON", ""}) {
        const std::string begin = *word == 0 ? "BC" : word;
        const std::string close = std::string(word) + " CLS";
        const ShapedFigure shaped =
            Shape({{{10, 0}, begin}, {{0, 10}, word}, {{-10, 0}, word}, {{0, -10}, close}});
        EXPECT_EQ(Reasons(shaped), "");
        ASSERT_EQ(shaped.paths[0].vertices.size(), 5U);
        for (std::size_t i = 0; i < 4; ++i) {
            EXPECT_NEAR(shaped.paths[0].vertices[i].bulge, std::tan(std::atan(1.0) / 2), 1e-12);
        }
    }
}

TEST_F(FigureShaperTest, ACurveRunsOnThroughTheFirstPoint) {
    // Three quarters of a circle around the first point, and a corner.
    const ShapedFigure shaped = Shape({{{10, 0}, "ON"},
                                       {{0, 10}, "ON"},
                                       {{-10, 10}, ""},
                                       {{-10, 0}, "ON"},
                                       {{0, -10}, "ON CLS"}});
    EXPECT_EQ(Reasons(shaped), "");
    const double quarter = std::tan(std::atan(1.0) / 2);
    const std::array<double, 6> bulges{quarter, 0.0, 0.0, quarter, quarter, 0.0};
    for (std::size_t i = 0; i < bulges.size(); ++i) {
        EXPECT_NEAR(shaped.paths[0].vertices[i].bulge, bulges[i], 1e-12) << i;
    }
}

TEST_F(FigureShaperTest, ACurveThatHasEndedIsClosedStraight) {
    const ShapedFigure shaped = Shape({{{0, 0}, "BC"}, {{10, 10}, ""}, {{20, 0}, "EC CLS"}});
    EXPECT_EQ(Reasons(shaped), "");
    EXPECT_NE(shaped.paths[0].vertices[1].bulge, 0.0);
    EXPECT_EQ(shaped.paths[0].vertices[2].bulge, 0.0);
    // Where the first point lies on no such circle, nothing of the curve is guessed.
    const ShapedFigure open =
        Shape({{{0, -5}, ""}, {{0, 0}, "BC"}, {{10, 10}, ""}, {{20, 0}, "CLS"}});
    EXPECT_TRUE(Reasons(open).starts_with("1 a shot of the curve is ")) << Reasons(open);
    for (const FigureVertex& vertex : open.paths[0].vertices) {
        EXPECT_EQ(vertex.bulge, 0.0);
    }
}

TEST_F(FigureShaperTest, WhatCannotBeMadeIsTold) {
    EXPECT_EQ(Reasons(Shape({{{0, 0}, "BC"}, {{1, 0}, "BC"}, {{2, 1}, ""}, {{3, 0}, "EC"}})),
              "0 the curve has no end, so it is drawn straight\n");
    EXPECT_EQ(Reasons(Shape({{{0, 0}, "BC"}, {{1, 0}, ""}, {{2, 0}, "EC"}})),
              "0 the shots of the curve lie in line, so it is drawn straight\n");
    EXPECT_EQ(Reasons(Shape({{{0, 0}, "RT 3"}, {{1, 0}, ""}})),
              "0 a turn needs a segment before it\n");
    EXPECT_EQ(Reasons(Shape({{{0, 0}, ""}, {{1, 0}, "BC RT 3"}, {{2, 1}, ""}, {{3, 0}, "EC"}})),
              "1 a turn cannot be made where a curve goes on\n");
    EXPECT_EQ(Reasons(Shape({{{0, 0}, "CIR"}, {{1, 0}, ""}, {{2, 0}, ""}})),
              "0 the three points of the circle lie in line\n"
              "1 the three points of the circle lie in line\n"
              "2 the three points of the circle lie in line\n");
    EXPECT_EQ(Reasons(Shape({{{0, 0}, "RECT 3"}})),
              "0 a rectangle with a width needs two points\n");
    EXPECT_EQ(Reasons(Shape({{{0, 0}, "CIR 0"}})), "0 a circle needs a radius above 0\n");
    EXPECT_EQ(Reasons(Shape({{{0, 0}, "CIR 2 H1"}})), "0 there is no line for the parallel\n");
    EXPECT_EQ(Reasons(Shape({{{0, 0}, "JPT 7"}, {{1, 0}, ""}})),
              "0 the point would be joined to itself\n");
}

TEST_F(FigureShaperTest, ACircleThroughThreePointsHasTheMiddleOfTheirHeights) {
    const ShapedFigure shaped = Shape({{{0, 0}, "CIR"}, {{10, 10}, ""}, {{20, 0}, ""}});
    ASSERT_TRUE(shaped.circle.has_value());
    EXPECT_NEAR(shaped.circle->centre.GetX(), 10.0, 1e-12);
    EXPECT_NEAR(shaped.circle->centre.GetY(), 0.0, 1e-12);
    EXPECT_NEAR(shaped.circle->radius, 10.0, 1e-12);
    EXPECT_EQ(shaped.circle->height, 1.0);
}

}  // namespace

}  // namespace cqsurvey::exchange
