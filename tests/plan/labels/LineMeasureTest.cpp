#include "plan/labels/LineMeasure.h"

#include <gtest/gtest.h>

#include <numbers>

namespace cqsurvey::plan {
namespace {

constexpr double kPi = std::numbers::pi;

PlanLine Closed(std::vector<PlanVertex> vertices) {
    vertices.push_back(vertices.front());
    PlanLine line;
    line.vertices = std::move(vertices);
    return line;
}

TEST(LineMeasure, LengthsFollowTheArc) {
    EXPECT_DOUBLE_EQ(MeasureLength({0, 0}, {3, 4}, 0.0), 5.0);
    EXPECT_NEAR(MeasureLength({0, 0}, {2, 0}, 1.0), kPi, 1e-12) << "a half circle";
    EXPECT_NEAR(MeasureLength({0, 0}, {2, 0}, -1.0), kPi, 1e-12);
}

TEST(LineMeasure, AreasHaveTheirArcsWhicheverWayTheLineRuns) {
    EXPECT_DOUBLE_EQ(MeasureArea(Closed({{{0, 0}}, {{10, 0}}, {{10, 5}}, {{0, 5}}})), 50.0);
    EXPECT_DOUBLE_EQ(MeasureArea(Closed({{{0, 5}}, {{10, 5}}, {{10, 0}}, {{0, 0}}})), 50.0);
    // Two half circles of a radius of 1, bending outwards: counter-clockwise, to the right.
    EXPECT_NEAR(MeasureArea(Closed({{{0, 0}, 1.0}, {{2, 0}, 1.0}})), kPi, 1e-12);
    EXPECT_NEAR(MeasureArea(Closed({{{0, 0}, -1.0}, {{2, 0}, -1.0}})), kPi, 1e-12);
    // A square with a half circle bitten out of its lower side.
    EXPECT_NEAR(MeasureArea(Closed({{{0, 0}, -1.0}, {{2, 0}}, {{2, 2}}, {{0, 2}}})), 4.0 - kPi / 2,
                1e-12);
}

TEST(LineMeasure, AnAreaKeepsItsDigitsFarFromTheOrigin) {
    const double far = 5e6;
    EXPECT_NEAR(MeasureArea(Closed({{{far, far}}, {{far + 1, far}}, {{far + 1, far + 1}}})), 0.5,
                1e-9);
}

TEST(LineMeasure, BearingsRunClockwiseFromNorth) {
    constexpr CqAngleForm kDms = CqAngleForm::DegreesMinutesSeconds;
    EXPECT_EQ(FormatBearing({0, 0}, {0, 1}, kDms),
              "0\xC2\xB0"
              "00'00\"");
    EXPECT_EQ(FormatBearing({0, 0}, {1, 1}, kDms),
              "45\xC2\xB0"
              "00'00\"");
    EXPECT_EQ(FormatBearing({0, 0}, {-1, 0}, kDms),
              "270\xC2\xB0"
              "00'00\"");
    EXPECT_EQ(FormatBearing({0, 0}, {1, 1}, CqAngleForm::Degrees), "45.0000\xC2\xB0");
    EXPECT_EQ(FormatBearing({0, 0}, {1, 1}, CqAngleForm::Gon), "50.0000 gon");
}

TEST(LineMeasure, NoBearingIsAWholeTurn) {
    for (const CqAngleForm form :
         {CqAngleForm::DegreesMinutesSeconds, CqAngleForm::Degrees, CqAngleForm::Gon}) {
        EXPECT_EQ(FormatBearing({0, 0}, {-1e-9, 1}, form).front(), '0');
    }
}

TEST(LineMeasure, KnowsWhatIsInside) {
    const PlanLine hook = Closed({{{0, 0}}, {{10, 0}}, {{10, 10}}, {{8, 10}}, {{8, 2}}, {{0, 2}}});
    EXPECT_TRUE(IsInside(hook, {5, 1}));
    EXPECT_TRUE(IsInside(hook, {9, 9}));
    EXPECT_FALSE(IsInside(hook, {4, 6}));
    EXPECT_FALSE(IsInside(hook, {-1, 1}));
}

}  // namespace
}  // namespace cqsurvey::plan
