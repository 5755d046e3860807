#include "exchange/dxf/read/Spline.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <vector>

namespace cqsurvey::exchange::dxf {
namespace {

TEST(SplineTest, ACubicOfOneSpanIsABezierCurve) {
    const Spline spline(3, {0, 0, 0, 0, 1, 1, 1, 1}, {{0, 0, 0}, {0, 6, 3}, {6, 6, 6}, {6, 0, 9}},
                        {});
    ASSERT_TRUE(spline.HasCurve());
    EXPECT_EQ(spline.GetSpans(), (std::vector<double>{0, 1}));
    for (const double t : {0.0, 0.25, 0.5, 1.0}) {
        const double u = 1 - t;
        const Vec3 at = spline.At(t);
        EXPECT_NEAR(at.x, 3 * u * t * t * 6 + t * t * t * 6, 1e-12);
        EXPECT_NEAR(at.y, 3 * u * u * t * 6 + 3 * u * t * t * 6, 1e-12);
        EXPECT_NEAR(at.z, 9 * t, 1e-12);
    }
}

TEST(SplineTest, WeightsMakeATrueCircle) {
    const double w = std::numbers::sqrt2 / 2;
    const Spline arc(2, {0, 0, 0, 1, 1, 1}, {{5, 0, 0}, {5, 5, 0}, {0, 5, 0}}, {1, w, 1});
    for (int i = 0; i <= 8; ++i) {
        const Vec3 at = arc.At(i / 8.0);
        EXPECT_NEAR(std::hypot(at.x, at.y), 5.0, 1e-12);
    }
}

TEST(SplineTest, KnotsThatRepeatMakeNoEmptySpan) {
    const Spline spline(1, {0, 0, 1, 1, 2, 2}, {{0, 0, 0}, {1, 0, 0}, {1, 5, 0}, {2, 5, 0}}, {});
    EXPECT_EQ(spline.GetSpans(), (std::vector<double>{0, 1, 2}));
    EXPECT_EQ(spline.At(2.0).x, 2.0);
    EXPECT_EQ(spline.At(0.5).x, 0.5);
}

TEST(SplineTest, WhatIsNoSplineHasNoCurve) {
    const std::vector<Vec3> controls{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}};
    EXPECT_FALSE(Spline(2, {0, 0, 0, 1, 1}, controls, {}).HasCurve());
    EXPECT_FALSE(Spline(2, {0, 0, 1, 0, 1, 1}, controls, {}).HasCurve());
    EXPECT_FALSE(Spline(2, {0, 0, 0, 1, 1, NAN}, controls, {}).HasCurve());
    EXPECT_FALSE(Spline(2, {0, 0, 0, 1, 1, 1}, controls, {1, 1}).HasCurve());
    EXPECT_FALSE(Spline(0, {0, 1, 2, 3}, controls, {}).HasCurve());
    EXPECT_FALSE(Spline(26, std::vector<double>(60, 0.0), controls, {}).HasCurve());
    EXPECT_FALSE(Spline(2, {1, 1, 1, 1, 1, 1}, controls, {}).HasCurve());
    EXPECT_FALSE(Spline(3, {}, {}, {}).HasCurve());
}

}  // namespace
}  // namespace cqsurvey::exchange::dxf
