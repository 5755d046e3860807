#include "gdal/Curve.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace cqsurvey::gdal {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

std::string Wkt(const OGRGeometry* geometry) {
    return geometry != nullptr ? geometry->exportToWkt() : "none";
}

TEST(CurveTest, StraightSegmentsAreALineString) {
    const std::vector<ArcVertex> vertices{{{0, 0}, 1, 0}, {{10, 0}, 2, 0}, {{10, 5}, 3, 0}};
    EXPECT_EQ(Wkt(MakeCurve(vertices).get()), "COMPOUNDCURVE Z ((0 0 1,10 0 2,10 5 3))");
}

TEST(CurveTest, APositiveBulgeBendsToTheRightOfItsChord) {
    const std::vector<ArcVertex> vertices{{{0, 0}, 0, 1}, {{10, 0}, 0, 0}};
    EXPECT_EQ(Wkt(MakeCurve(vertices).get()),
              "COMPOUNDCURVE Z (CIRCULARSTRING Z (0 0 0,5 -5 0,10 0 0))");
}

TEST(CurveTest, StretchesAlternateAndTheMiddleOfAnArcIsHalfWayUp) {
    const std::vector<ArcVertex> vertices{
        {{0, 0}, 0, 0}, {{10, 0}, 2, -1}, {{20, 0}, 4, 0}, {{30, 0}, 4, 0}};
    EXPECT_EQ(Wkt(MakeCurve(vertices).get()),
              "COMPOUNDCURVE Z ((0 0 0,10 0 2),CIRCULARSTRING Z (10 0 2,15 5 3,20 0 4),"
              "(20 0 4,30 0 4))");
}

TEST(CurveTest, AHeightThatWasNotMeasuredStaysOne) {
    const std::vector<ArcVertex> vertices{{{0, 0}, kNan, 0}, {{10, 0}, kNan, 1}, {{20, 0}, 1, 0}};
    const auto curve = MakeCurve(vertices);
    ASSERT_NE(curve, nullptr);
    const std::vector<ArcVertex> back = VerticesOf(*curve);
    ASSERT_EQ(back.size(), 3U);
    EXPECT_TRUE(std::isnan(back[0].height));
    EXPECT_EQ(back[2].height, 1.0);
}

TEST(CurveTest, ABulgeThatMakesNoArcIsALine) {
    for (const double bulge : {kNan, std::numeric_limits<double>::infinity(), 1e308}) {
        const std::vector<ArcVertex> vertices{{{1, 1}, 0, bulge}, {{9, 9}, 0, 0}};
        EXPECT_EQ(Wkt(MakeCurve(vertices).get()), "COMPOUNDCURVE Z ((1 1 0,9 9 0))") << bulge;
    }
}

TEST(CurveTest, WhatIsNotAtAPlaceIsNoCurve) {
    const std::vector<ArcVertex> one{{{0, 0}, 0, 0}};
    EXPECT_EQ(MakeCurve(one), nullptr);
    const std::vector<ArcVertex> nowhere{{{0, 0}, 0, 0}, {{kNan, 0}, 0, 0}};
    EXPECT_EQ(MakeCurve(nowhere), nullptr);
    EXPECT_EQ(MakeCircle({0, 0}, 0, kNan), nullptr);
    EXPECT_EQ(MakeCircle({1e308, 0}, 0, 1.7e308), nullptr);
}

TEST(CurveTest, ArcsComeBackAsTheirBulges) {
    std::mt19937 random(20261122);
    std::uniform_real_distribution<double> place(-1000, 1000);
    std::uniform_real_distribution<double> bend(-3, 3);
    for (int round = 0; round < 200; ++round) {
        std::vector<ArcVertex> vertices;
        for (int i = 0; i < 6; ++i) {
            const double bulge = i % 3 == 0 ? 0.0 : bend(random);
            vertices.push_back({{place(random), place(random)}, place(random), bulge});
        }
        vertices.back().bulge = 0.0;
        const auto curve = MakeCurve(vertices);
        ASSERT_NE(curve, nullptr);
        const std::vector<ArcVertex> back = VerticesOf(*curve);
        ASSERT_EQ(back.size(), vertices.size());
        for (std::size_t i = 0; i < back.size(); ++i) {
            EXPECT_EQ(back[i].at.GetX(), vertices[i].at.GetX());
            EXPECT_EQ(back[i].at.GetY(), vertices[i].at.GetY());
            EXPECT_EQ(back[i].height, vertices[i].height);
            EXPECT_NEAR(back[i].bulge, vertices[i].bulge, 1e-10);
        }
    }
}

TEST(CurveTest, AMiddleAnywhereOnTheArcGivesTheSameBulge) {
    // A quarter of the circle around 0, through a point a third of the way.
    OGRCircularString arc;
    arc.addPoint(10, 0);
    arc.addPoint(10 * std::cos(0.5), 10 * std::sin(0.5));
    arc.addPoint(0, 10);
    const std::vector<ArcVertex> vertices = VerticesOf(arc);
    ASSERT_EQ(vertices.size(), 2U);
    EXPECT_NEAR(vertices[0].bulge, std::tan(M_PI / 8), 1e-14);
    EXPECT_TRUE(std::isnan(vertices[0].height));
}

TEST(CurveTest, ACircleOfThreePointsBecomesTwoHalves) {
    OGRCircularString circle;
    circle.addPoint(0, 0, 3);
    circle.addPoint(10, 0, 3);
    circle.addPoint(0, 0, 3);
    const std::vector<ArcVertex> vertices = VerticesOf(circle);
    ASSERT_EQ(vertices.size(), 3U);
    EXPECT_EQ(vertices[0].bulge, 1.0);
    EXPECT_EQ(vertices[1].bulge, 1.0);
    CircleShape shape;
    ASSERT_TRUE(IsCircle(circle, shape));
    EXPECT_DOUBLE_EQ(shape.centre.GetX(), 5);
    EXPECT_DOUBLE_EQ(shape.radius, 5);
    EXPECT_EQ(shape.height, 3);
}

TEST(CurveTest, ACircleIsRecognisedAgain) {
    const auto circle = MakeCircle({431234.567, 5412345.678}, kNan, 2.4);
    ASSERT_NE(circle, nullptr);
    CircleShape shape;
    ASSERT_TRUE(IsCircle(*circle, shape));
    EXPECT_NEAR(shape.centre.GetX(), 431234.567, 1e-9);
    EXPECT_NEAR(shape.centre.GetY(), 5412345.678, 1e-9);
    EXPECT_NEAR(shape.radius, 2.4, 1e-9);
    EXPECT_TRUE(std::isnan(shape.height));
}

TEST(CurveTest, OtherClosedCurvesAreNoCircles) {
    OGRLineString square;
    for (const auto& [x, y] : {std::pair(0, 0), {1, 0}, {1, 1}, {0, 1}, {0, 0}}) {
        square.addPoint(x, y);
    }
    CircleShape shape;
    EXPECT_FALSE(IsCircle(square, shape));
    const std::vector<ArcVertex> lens{{{0, 0}, 0, 0.5}, {{10, 0}, 0, 0.5}, {{0, 0}, 0, 0}};
    EXPECT_FALSE(IsCircle(*MakeCurve(lens), shape));
}

}  // namespace
}  // namespace cqsurvey::gdal
