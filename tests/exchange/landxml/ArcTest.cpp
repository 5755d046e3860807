#include "exchange/landxml/read/Arc.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace cqsurvey::exchange::landxml {
namespace {

Segment CurveBetween(double north1, double east1, double north2, double east2) {
    Segment curve;
    curve.kind = "Curve";
    curve.start = Place{{east1, north1, 0.0}, false, true, {}, 0};
    curve.end = Place{{east2, north2, 0.0}, false, true, {}, 0};
    return curve;
}

TEST(ArcTest, ARadiusFarOffTheEndsIsTakenAsAHalfCircleAndTellsByHowMuch) {
    Segment curve = CurveBetween(0, 0, 0, 10);
    curve.radius = 4.5;
    curve.counterClockwise = true;
    const Arc arc = MakeArc(curve);
    EXPECT_TRUE(arc.fault.empty());
    EXPECT_NEAR(arc.bulge, 1.0, 1e-12);
    EXPECT_NEAR(arc.deviation, 0.5, 1e-12);
}

TEST(ArcTest, ACentreThatContradictsTheRadiusOnlyTellsTheSide) {
    Segment curve = CurveBetween(0, 10, 10, 0);
    curve.center = Place{{-20, -20, 0.0}, false, true, {}, 0};
    curve.radius = 10;
    curve.counterClockwise = true;
    const Arc arc = MakeArc(curve);
    EXPECT_NEAR(arc.bulge, std::tan(std::acos(-1.0) / 8), 1e-12);
    EXPECT_GT(arc.deviation, 1.0);
}

TEST(ArcTest, NegativeRadiiCountAsPositive) {
    Segment curve = CurveBetween(0, 10, 10, 0);
    curve.radius = -10;
    curve.counterClockwise = false;
    EXPECT_NEAR(MakeArc(curve).bulge, -std::tan(std::acos(-1.0) / 8), 1e-12);
}

TEST(ArcTest, EndsAtOnePlaceWithoutACentreAreNoArc) {
    Segment curve = CurveBetween(1, 2, 1, 2);
    curve.radius = 10;
    curve.counterClockwise = true;
    EXPECT_FALSE(MakeArc(curve).fault.empty());
    curve.center = curve.start;
    EXPECT_FALSE(MakeArc(curve).fault.empty());
}

TEST(ArcTest, ARadiusWithoutEndIsNone) {
    Segment curve = CurveBetween(0, 0, 0, 10);
    curve.radius = std::numeric_limits<double>::infinity();
    curve.counterClockwise = true;
    EXPECT_FALSE(MakeArc(curve).fault.empty());
}

TEST(ArcTest, ACentreOnTheWayBetweenTheEndsIsAHalfCircle) {
    Segment curve = CurveBetween(0, 0, 0, 10);
    curve.center = Place{{5, 0, 0.0}, false, true, {}, 0};
    curve.counterClockwise = false;
    EXPECT_NEAR(MakeArc(curve).bulge, -1.0, 1e-12);
}

}  // namespace
}  // namespace cqsurvey::exchange::landxml
