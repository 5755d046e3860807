#include "plan/Geometry.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>

namespace cqsurvey::plan {
namespace {

constexpr double kPi = std::numbers::pi;

TEST(Box, IsEmptyUntilSomethingIsAdded) {
    Box box;
    EXPECT_TRUE(box.IsEmpty());
    EXPECT_EQ(box.GetWidth(), 0.0);
    box.Add(Box());
    EXPECT_TRUE(box.IsEmpty());
    box.Add(CVector(3.0, 4.0));
    EXPECT_FALSE(box.IsEmpty());
    EXPECT_EQ(box.GetWidth(), 0.0);
    box.Add(CVector(1.0, 9.0));
    EXPECT_EQ(box.GetWidth(), 2.0);
    EXPECT_EQ(box.GetHeight(), 5.0);
}

TEST(Box, MeetsAndHoldsAlsoAtTheEdge) {
    const Box box{0, 0, 2, 2};
    EXPECT_TRUE(box.Meets({2, 2, 3, 3}));
    EXPECT_FALSE(box.Meets({2.1, 0, 3, 1}));
    EXPECT_FALSE(box.Meets({0, 2.1, 1, 3}));
    EXPECT_TRUE(box.Holds(box));
    EXPECT_FALSE(box.Holds({0, 0, 2, 2.1}));
    EXPECT_FALSE(box.Meets(Box()));
}

TEST(Arc, OfAHalfCircleBendsToTheRightWhenTheBulgeIsPositive) {
    const auto arc = FindArc({0, 0}, {2, 0}, 1.0);
    ASSERT_TRUE(arc.has_value());
    EXPECT_NEAR(arc->radius, 1.0, 1e-12);
    EXPECT_NEAR(arc->sweep, kPi, 1e-12);
    const CVector middle = arc->At(arc->start + arc->sweep / 2);
    EXPECT_NEAR(middle.GetX(), 1.0, 1e-12);
    EXPECT_NEAR(middle.GetY(), -1.0, 1e-12);
}

TEST(Arc, IsAStraightLineWithoutBulgeOrChordAndWhereItIsFlatEnough) {
    EXPECT_FALSE(FindArc({0, 0}, {2, 0}, 0.0));
    EXPECT_FALSE(FindArc({0, 0}, {2, 0}, 1e-9));
    EXPECT_FALSE(FindArc({1, 1}, {1, 1}, 1.0));
    EXPECT_FALSE(FindArc({0, 0}, {2, 0}, std::nan("")));
    EXPECT_FALSE(FindArc({0, 0}, {2, 0}, INFINITY));
    EXPECT_FALSE(FindArc({0, 0}, {100, 0}, 1e-4, 0.02));
    EXPECT_TRUE(FindArc({0, 0}, {100, 0}, 1e-3, 0.02));
}

TEST(Arc, OfAnyBulgeRunsFromOneEndToTheOtherAndStaysInItsBox) {
    std::mt19937 random(20240611);
    std::uniform_real_distribution<double> place(-1000.0, 1000.0);
    std::uniform_real_distribution<double> power(-3.0, 3.0);
    for (int i = 0; i < 5000; ++i) {
        const CVector p(place(random), place(random));
        const CVector q(place(random), place(random));
        const double bulge = std::pow(10.0, power(random)) * (i % 2 == 0 ? 1.0 : -1.0);
        SCOPED_TRACE(testing::Message() << "seed 20240611, arc " << i << ", bulge " << bulge);
        const auto arc = FindArc(p, q, bulge);
        ASSERT_TRUE(arc.has_value());
        const double slack = 1e-9 * arc->radius + 1e-9;
        EXPECT_LT((arc->At(arc->start) - p).UNorm(), slack);
        EXPECT_LT((arc->At(arc->start + arc->sweep) - q).UNorm(), slack);
        Box sampled;
        constexpr int kSamples = 400;
        for (int k = 0; k <= kSamples; ++k) {
            sampled.Add(arc->At(arc->start + arc->sweep * k / kSamples));
        }
        const Box box = arc->GetBox();
        EXPECT_TRUE(box.Grow(slack).Holds(sampled));
        // What lies between two samples strays by the sagitta of their arc at most.
        const double step = std::fabs(arc->sweep) / kSamples;
        EXPECT_TRUE(sampled.Grow(arc->radius * step * step / 2 + slack).Holds(box));
    }
}

TEST(Clip, CutsALineToItsPartInside) {
    const Box window{0, 0, 10, 10};
    CVector p(-10, 5);
    CVector q(30, 5);
    ASSERT_TRUE(Clip(p, q, window));
    EXPECT_EQ(p.GetX(), 0.0);
    EXPECT_EQ(q.GetX(), 10.0);
    CVector a(2, 3);
    CVector b(7, 8);
    ASSERT_TRUE(Clip(a, b, window));
    EXPECT_EQ(a.GetX(), 2.0);
    EXPECT_EQ(b.GetY(), 8.0);
    CVector c(-5, 0);
    CVector d(0, 20);
    EXPECT_FALSE(Clip(c, d, window));
    EXPECT_EQ(d.GetY(), 20.0);
}

TEST(Clip, ALineFromVeryFarKeepsItsPlaceInside) {
    CVector p(-1e12, -1e12);
    CVector q(1e12, 1e12);
    ASSERT_TRUE(Clip(p, q, {-1, -1, 1, 1}));
    EXPECT_NEAR(p.GetX(), -1.0, 1e-3);
    EXPECT_NEAR(q.GetY(), 1.0, 1e-3);
}

TEST(Clip, GivesEveryPartOfACircleInside) {
    // The circle reaches out on all four sides and leaves the four corners inside.
    const Arc circle{{0, 0}, 5.0, 0.0, 2 * kPi};
    const Box window{-4, -4, 4, 4};
    const std::vector<Arc> parts = Clip(circle, window);
    ASSERT_EQ(parts.size(), 4U);
    double sum = 0.0;
    for (const Arc& part : parts) {
        EXPECT_GT(part.sweep, 0.0);
        sum += part.sweep;
        EXPECT_TRUE(window.Grow(1e-9).Holds(part.GetBox()));
    }
    EXPECT_NEAR(sum, 2 * kPi - 8 * std::acos(4.0 / 5.0), 1e-9);
    EXPECT_TRUE(Clip(circle, {-1, -1, 1, 1}).empty());
}

TEST(Clip, KeepsTheDirectionOfAnArc) {
    const Arc arc{{0, 0}, 5.0, kPi, -kPi};
    const std::vector<Arc> parts = Clip(arc, {-4, -10, 4, 10});
    ASSERT_EQ(parts.size(), 1U);
    EXPECT_LT(parts[0].sweep, 0.0);
    EXPECT_NEAR(parts[0].At(parts[0].start).GetX(), -4.0, 1e-9);
}

}  // namespace
}  // namespace cqsurvey::plan
