#include "exchange/dxf/Affine.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace cqsurvey::exchange::dxf {
namespace {

void ExpectNear(const Vec3& is, const Vec3& wanted) {
    EXPECT_NEAR(is.x, wanted.x, 1e-12);
    EXPECT_NEAR(is.y, wanted.y, 1e-12);
    EXPECT_NEAR(is.z, wanted.z, 1e-12);
}

TEST(AffineTest, WhatChangesNothingKeepsEveryBit) {
    const Vec3 at{0.1 + 0.2, -0.0, 1e300};
    for (const Affine& map : {Affine(), Affine::Scale(1, 1, 1), Affine::Shift({}), Affine::Turn(0),
                              Affine::FromObject({0, 0, 1}), Affine() * Affine::Scale(1, 1, 1)}) {
        EXPECT_TRUE(map.IsSame());
        EXPECT_EQ(map.Point(at).x, at.x);
        EXPECT_TRUE(std::signbit(map.Point(at).y));
        EXPECT_EQ(map.Direction(at).z, at.z);
    }
}

TEST(AffineTest, TheRightOneOfAProductComesFirst) {
    const Affine turn = Affine::Turn(std::numbers::pi / 2);
    const Affine shift = Affine::Shift({10, 0, 5});
    ExpectNear((turn * shift).Point({1, 0, 0}), {0, 11, 5});
    ExpectNear((shift * turn).Point({1, 0, 0}), {10, 1, 5});
    ExpectNear((shift * turn).Direction({1, 0, 0}), {0, 1, 0});
    ExpectNear((Affine::Scale(2, 3, 4) * shift).Point({1, 1, 1}), {22, 3, 24});
}

TEST(AffineTest, AnObjectsAxesFollowFromItsExtrusion) {
    ExpectNear(Affine::FromObject({0, 0, -1}).Point({1, 2, 3}), {-1, 2, -3});
    // Far from the z axis, the x axis lies in the plan.
    ExpectNear(Affine::FromObject({1, 0, 0}).Point({1, 2, 3}), {3, 1, 2});
    ExpectNear(Affine::FromObject({0, 5, 0}).Point({1, 2, 3}), {-1, 3, 2});
    // Near it, the x axis is square to the y axis of the world.
    const Vec3 x = Affine::FromObject({0.001, 0, 1}).Direction({1, 0, 0});
    EXPECT_EQ(x.y, 0.0);
    EXPECT_GT(x.x, 0.99);
    // No direction is up.
    EXPECT_TRUE(Affine::FromObject({0, 0, 0}).IsSame());
}

TEST(AffineTest, ACircleStaysOneUnderTurnsAndEvenScales) {
    EXPECT_TRUE((Affine::Turn(1) * Affine::Scale(3, 3, 1)).KeepsCircles());
    EXPECT_TRUE(Affine::Scale(-2, 2, 2).KeepsCircles());
    EXPECT_FALSE(Affine::Scale(2, 3, 1).KeepsCircles());
    EXPECT_FALSE((Affine::Turn(1) * Affine::Scale(2, 3, 1) * Affine::Turn(1)).KeepsCircles());
    EXPECT_FALSE(Affine::FromObject({0, 0.6, 0.8}).KeepsCircles());
    EXPECT_NEAR((Affine::Turn(1) * Affine::Scale(3, 3, 1)).PlanScale(), 3.0, 1e-12);
}

TEST(AffineTest, AMirrorTurnsTheOtherWay) {
    EXPECT_TRUE(Affine::Scale(-1, 1, 1).Mirrors());
    EXPECT_FALSE(Affine::Scale(-1, -1, 1).Mirrors());
    EXPECT_TRUE(Affine::FromObject({0, 0, -1}).Mirrors());
    EXPECT_NEAR(Affine::Scale(2, 3, 4).Determinant(), 6.0, 1e-12);
}

}  // namespace
}  // namespace cqsurvey::exchange::dxf
