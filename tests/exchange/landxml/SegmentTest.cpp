#include "exchange/landxml/read/Segment.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace cqsurvey::exchange::landxml {
namespace {

constexpr double kTolerance = 0.001;

Place At(double x, double y, CqHandle entity = 0) {
    Place place;
    place.at = {x, y, 5.0};
    place.hasHeight = place.known = true;
    place.entity = entity;
    return place;
}

TiedVertex Vertex(double x, double y) {
    return {{{x, y, 5.0}, 0.0, true}, 0};
}

Segment Make(const char* kind, const Place& start, const Place& end) {
    Segment segment;
    segment.kind = kind;
    segment.start = start;
    segment.end = end;
    return segment;
}

TEST(SegmentTest, ALineGoesFromItsStartToItsEndAndKeepsTheirPoints) {
    std::vector<TiedVertex> path;
    EXPECT_EQ(MakePath(Make("Line", At(1, 2, 7), At(3, 4, 8)), kTolerance, path).fate,
              DrawingFate::Taken);
    ASSERT_EQ(path.size(), 2U);
    EXPECT_EQ(path[0].vertex.at.x, 1.0);
    EXPECT_EQ(path[0].entity, 7U);
    EXPECT_EQ(path[1].vertex.at.y, 4.0);
    EXPECT_EQ(path[1].entity, 8U);
}

TEST(SegmentTest, TheListOfAnIrregularLineMayRepeatItsEndsOrLeaveThemOut) {
    std::vector<TiedVertex> path;
    Segment segment = Make("IrregularLine", At(0, 0), At(9, 9));
    segment.between = {Vertex(0, 0), Vertex(4, 5), Vertex(9, 9)};
    EXPECT_EQ(MakePath(segment, kTolerance, path).fate, DrawingFate::Taken);
    EXPECT_EQ(path.size(), 3U);
    segment.between = {Vertex(4, 5)};
    EXPECT_EQ(MakePath(segment, kTolerance, path).fate, DrawingFate::Taken);
    EXPECT_EQ(path.size(), 3U);
}

TEST(SegmentTest, AChainNeedsTwoPlacesAndNoEnds) {
    std::vector<TiedVertex> path;
    Segment segment;
    segment.kind = "Chain";
    segment.between = {Vertex(1, 1)};
    EXPECT_EQ(MakePath(segment, kTolerance, path).what, "it has fewer than two places");
    EXPECT_TRUE(path.empty());
    segment.between.push_back(Vertex(2, 2));
    EXPECT_EQ(MakePath(segment, kTolerance, path).fate, DrawingFate::Taken);
    EXPECT_EQ(path.size(), 2U);
}

TEST(SegmentTest, ASegmentWithoutAnEndOrWithNumbersThatAreNoneIsLeftOut) {
    std::vector<TiedVertex> path;
    Segment segment = Make("Line", At(1, 2), At(3, 4));
    segment.end.reset();
    EXPECT_EQ(MakePath(segment, kTolerance, path).fate, DrawingFate::LeftOut);
    EXPECT_EQ(MakePath(Make("Line", At(1, 2), At(HUGE_VAL, 4)), kTolerance, path).what, kNotFinite);
    segment = Make("Line", At(1, 2), At(3, 4));
    segment.fault = "any reason";
    EXPECT_EQ(MakePath(segment, kTolerance, path).what, "any reason");
    EXPECT_TRUE(path.empty());
}

TEST(SegmentTest, ACurveIsOneArcAndAWholeCircleTwo) {
    std::vector<TiedVertex> path;
    Segment segment = Make("Curve", At(10, 0), At(0, 10));
    segment.center = At(0, 0);
    segment.counterClockwise = true;
    EXPECT_EQ(MakePath(segment, kTolerance, path).fate, DrawingFate::Taken);
    ASSERT_EQ(path.size(), 2U);
    EXPECT_NEAR(path[0].vertex.bulge, std::tan(M_PI / 8), 1e-12);
    segment.end = At(10, 0);
    EXPECT_EQ(MakePath(segment, kTolerance, path).fate, DrawingFate::Taken);
    ASSERT_EQ(path.size(), 3U);
    EXPECT_NEAR(path[1].vertex.at.x, -10.0, 1e-9);
}

TEST(SegmentTest, WhatIsNotKnownWellEnoughIsStraightAndSaidToBe) {
    std::vector<TiedVertex> path;
    EXPECT_EQ(MakePath(Make("Curve", At(0, 0), At(3, 4)), kTolerance, path).fate,
              DrawingFate::Converted);
    EXPECT_EQ(path.size(), 2U);
    Segment spiral = Make("Spiral", At(0, 0), At(3, 4));
    EXPECT_EQ(MakePath(spiral, kTolerance, path).fate, DrawingFate::Converted);
    EXPECT_EQ(path.size(), 2U);
    spiral.length = 1.0;
    spiral.counterClockwise = true;
    EXPECT_EQ(MakePath(spiral, kTolerance, path).fate, DrawingFate::Converted);
    EXPECT_EQ(path.back().vertex.at.x, 3.0);
}

}  // namespace
}  // namespace cqsurvey::exchange::landxml
