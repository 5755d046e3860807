#include "exchange/codes/ArcFitter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>

namespace cqsurvey::exchange {

namespace {

CVector At(const Circle& circle, double angle, double off = 0.0) {
    return circle.centre + CVector((circle.radius + off) * std::cos(angle),
                                   (circle.radius + off) * std::sin(angle));
}

/// How far the arc between two shots is from the circle where it is farthest from its chord.
double DeviationOfArc(const Circle& circle, const CVector& p, const CVector& q, double bulge) {
    const CVector middle((p.GetX() + q.GetX()) / 2, (p.GetY() + q.GetY()) / 2);
    const CVector chord = q - p;
    // A positive bulge lies to the right of its chord.
    const CVector top = middle + CVector(chord.GetY() * bulge / 2, -chord.GetX() * bulge / 2);
    return std::abs((top - circle.centre).UNorm() - circle.radius);
}

TEST(ArcFitterTest, ThreeShotsGiveTheCircleThroughThem) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> part(0.05, 1.0);
    for (int i = 0; i < 2000; ++i) {
        const Circle circle{{355000 + 100 * part(random), 4611000 - 50 * part(random)},
                            std::pow(10.0, 4 * part(random) - 1)};
        const double sign = i % 2 == 0 ? 1.0 : -1.0;
        const double from = 7 * part(random);
        const double first = sign * (0.05 + 3 * part(random));
        const double second = sign * (0.05 + 3 * part(random));
        const std::vector<CVector> shots{At(circle, from), At(circle, from + first),
                                         At(circle, from + first + second)};
        const ArcResult result = FitArc(shots, 0.0);
        if (std::abs(first + second) > 6.2) {
            continue;
        }
        ASSERT_TRUE(result.arc.has_value());
        // Coordinates of this size hold a nanometre.
        EXPECT_NEAR(result.arc->bulges[0], std::tan(first / 4), 1e-4);
        EXPECT_NEAR(result.arc->bulges[1], std::tan(second / 4), 1e-4);
        const double most = 1e-7 * std::max(1.0, circle.radius);
        EXPECT_LT(DeviationOfArc(circle, shots[0], shots[1], result.arc->bulges[0]), most);
        EXPECT_LT(DeviationOfArc(circle, shots[1], shots[2], result.arc->bulges[1]), most);
    }
}

TEST(ArcFitterTest, MoreShotsGiveTheCircleThatFitsBest) {
    const Circle circle{{355000, 4611000}, 50.0};
    std::vector<CVector> shots;
    for (int i = 0; i < 6; ++i) {
        shots.push_back(At(circle, 0.2 * i, i % 2 == 0 ? 0.01 : -0.01));
    }
    const ArcResult result = FitArc(shots, 0.02);
    ASSERT_TRUE(result.arc.has_value());
    EXPECT_LT(result.arc->deviation, 0.015);
    for (std::size_t i = 0; i + 1 < shots.size(); ++i) {
        EXPECT_LT(DeviationOfArc(circle, shots[i], shots[i + 1], result.arc->bulges[i]), 0.02);
        EXPECT_GT(result.arc->bulges[i], 0.0);
    }
}

TEST(ArcFitterTest, NoOtherCircleNearbyFitsBetter) {
    std::mt19937 random(11);
    std::normal_distribution<double> scatter(0.0, 0.05);
    const auto sum = [](const std::vector<CVector>& shots, const Circle& circle) {
        double squares = 0.0;
        for (const CVector& shot : shots) {
            squares += std::pow((shot - circle.centre).UNorm() - circle.radius, 2);
        }
        return squares;
    };
    for (int i = 0; i < 200; ++i) {
        const Circle circle{{100, 200}, 5.0 + i};
        std::vector<CVector> shots;
        for (int k = 0; k < 4 + i % 9; ++k) {
            shots.push_back(At(circle, 0.3 * k, scatter(random)));
        }
        const std::optional<Circle> best = FitCircle(shots);
        ASSERT_TRUE(best.has_value());
        const double least = sum(shots, *best);
        for (const double step : {1e-3, -1e-3}) {
            EXPECT_LE(least, sum(shots, {best->centre + CVector(step, 0), best->radius}));
            EXPECT_LE(least, sum(shots, {best->centre + CVector(0, step), best->radius}));
            EXPECT_LE(least, sum(shots, {best->centre, best->radius + step}));
        }
    }
}

TEST(ArcFitterTest, ShotsFarFromEveryCircleAreNoArc) {
    const Circle circle{{0, 0}, 50.0};
    std::vector<CVector> shots;
    for (int i = 0; i < 6; ++i) {
        shots.push_back(At(circle, 0.2 * i, i == 3 ? 0.5 : 0.0));
    }
    const ArcResult result = FitArc(shots, 0.05);
    EXPECT_FALSE(result.arc.has_value());
    EXPECT_EQ(result.fault, ArcFault::TooFar);
    EXPECT_GT(result.deviation, 0.05);
}

TEST(ArcFitterTest, ShotsInLineAreNoArc) {
    const std::vector<CVector> three{{0, 0}, {1, 1}, {5, 5}};
    EXPECT_EQ(FitArc(three, 1.0).fault, ArcFault::Straight);
    EXPECT_FALSE(FitArc(three, 1.0).arc.has_value());
    const std::vector<CVector> four{{0, 0}, {1, 1}, {5, 5}, {7, 7}};
    EXPECT_FALSE(FitArc(four, 1.0).arc.has_value());
    const std::vector<CVector> twice{{0, 0}, {0, 0}, {5, 5}};
    EXPECT_FALSE(FitArc(twice, 1.0).arc.has_value());
}

TEST(ArcFitterTest, ShotsThatGoBackAndForthAreNoArc) {
    const Circle circle{{0, 0}, 50.0};
    const std::vector<CVector> shots{At(circle, 0.0), At(circle, 0.4), At(circle, 0.2),
                                     At(circle, 0.6)};
    const ArcResult result = FitArc(shots, 0.05);
    EXPECT_FALSE(result.arc.has_value());
    EXPECT_EQ(result.fault, ArcFault::Unsteady);
}

TEST(ArcFitterTest, ATangentArcGoesOnInTheDirectionOfTheSegmentBefore) {
    // North, then to the east by a quarter of a circle, which turns clockwise.
    const std::optional<double> bulge = FindTangentBulge({0, 0}, {0, 1}, {10, 10});
    ASSERT_TRUE(bulge.has_value());
    EXPECT_NEAR(*bulge, -std::tan(std::numbers::pi / 8), 1e-15);
    const CVector end = FindEndTangent({0, 0}, {10, 10}, *bulge);
    EXPECT_NEAR(end.GetY(), 0.0, 1e-12);
    EXPECT_GT(end.GetX(), 0.0);
    EXPECT_EQ(FindTangentBulge({0, 0}, {0, 1}, {0, -10}), std::nullopt);
    EXPECT_EQ(FindTangentBulge({0, 0}, {0, 1}, {0, 0}), std::nullopt);
    EXPECT_NEAR(FindTangentBulge({0, 0}, {0, 1}, {0, 5}).value_or(1.0), 0.0, 1e-15);
}

}  // namespace

}  // namespace cqsurvey::exchange
