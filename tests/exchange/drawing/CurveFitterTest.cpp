#include "exchange/drawing/CurveFitter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>

#include "cqsurvey/CVector.h"

namespace cqsurvey::exchange {
namespace {

constexpr double kPi = std::numbers::pi;

Vec3 OnEllipse(double t) {
    return {10 * std::cos(t), 4 * std::sin(t), 0.0};
}

double FarthestFrom(const std::vector<PathVertex>& path, const CurveFitter::Curve& curve) {
    double farthest = 0.0;
    for (int i = 0; i <= 2000; ++i) {
        const Vec3 at = curve(2 * kPi * i / 2000);
        double nearest = HUGE_VAL;
        for (std::size_t k = 0; k + 1 < path.size(); ++k) {
            const Vec3& p = path[k].at;
            const Vec3& q = path[k + 1].at;
            if (path[k].bulge == 0.0) {
                const double length = std::hypot(q.x - p.x, q.y - p.y);
                const double along =
                    std::clamp(((at.x - p.x) * (q.x - p.x) + (at.y - p.y) * (q.y - p.y)) / length,
                               0.0, length);
                nearest = std::min(nearest, std::hypot(at.x - p.x - along * (q.x - p.x) / length,
                                                       at.y - p.y - along * (q.y - p.y) / length));
                continue;
            }
            const PlanArc arc = ArcOf(p, q, path[k].bulge);
            const double angle = std::atan2(at.y - arc.y, at.x - arc.x);
            double away = std::remainder(angle - arc.start - arc.sweep / 2, 2 * kPi);
            if (std::fabs(away) <= std::fabs(arc.sweep) / 2 + 1e-9) {
                nearest = std::min(nearest,
                                   std::fabs(std::hypot(at.x - arc.x, at.y - arc.y) - arc.radius));
            }
            nearest = std::min(nearest, std::hypot(at.x - p.x, at.y - p.y));
        }
        farthest = std::max(farthest, nearest);
    }
    return farthest;
}

std::vector<PathVertex> Fit(CurveFitter& fitter, const CurveFitter::Curve& curve) {
    std::vector<PathVertex> path;
    for (int i = 0; i < 4; ++i) {
        fitter.Fit(curve, i * kPi / 2, (i + 1) * kPi / 2, path);
    }
    path.push_back({curve(2 * kPi), 0.0});
    return path;
}

TEST(CurveFitterTest, TheArcOfABulgeIsTheJobsOwn) {
    for (const double bulge : {0.3, -0.7, 1.0, 2.5}) {
        const PlanArc arc = ArcOf({1, 2, 0}, {5, 3, 0}, bulge);
        const CVector centre = CVector::CalcArcCenter({1, 2}, {5, 3}, 4 * std::atan(bulge));
        EXPECT_NEAR(arc.x, centre.GetX(), 1e-12);
        EXPECT_NEAR(arc.y, centre.GetY(), 1e-12);
        EXPECT_NEAR(arc.radius, std::hypot(1 - arc.x, 2 - arc.y), 1e-12);
    }
}

TEST(CurveFitterTest, ACircleBecomesItsOwnArcs) {
    CurveFitter fitter(0.001, true);
    const auto circle = [](double t) -> Vec3 {
        return {7 + 3 * std::cos(t), 8 + 3 * std::sin(t), 5.0};
    };
    const std::vector<PathVertex> path = Fit(fitter, circle);
    ASSERT_EQ(path.size(), 5U);
    EXPECT_NEAR(path[0].bulge, std::tan(kPi / 8), 1e-12);
    EXPECT_LT(fitter.GetDeviation(), 1e-12);
}

TEST(CurveFitterTest, AnEllipseIsFittedWithinTheToleranceByFewArcs) {
    CurveFitter fitter(0.001, true);
    const std::vector<PathVertex> path = Fit(fitter, OnEllipse);
    EXPECT_LE(fitter.GetDeviation(), 0.001);
    EXPECT_LT(FarthestFrom(path, OnEllipse), 0.0015);
    EXPECT_LT(path.size(), 70U);
}

TEST(CurveFitterTest, WithoutArcsTheLinesAreWithinTheTolerance) {
    CurveFitter fitter(0.01, false);
    const std::vector<PathVertex> path = Fit(fitter, OnEllipse);
    EXPECT_LE(fitter.GetDeviation(), 0.01);
    EXPECT_LT(FarthestFrom(path, OnEllipse), 0.015);
    for (const PathVertex& vertex : path) {
        EXPECT_EQ(vertex.bulge, 0.0);
    }
}

TEST(CurveFitterTest, HeightsAreWithinTheToleranceToo) {
    CurveFitter fitter(0.01, true);
    const auto wave = [](double t) -> Vec3 { return {t, 0.0, std::sin(t)}; };
    std::vector<PathVertex> path;
    fitter.Fit(wave, 0.0, kPi, path);
    EXPECT_GT(path.size(), 8U);
}

TEST(CurveFitterTest, ACurveThatJumpsEndsAllTheSame) {
    CurveFitter fitter(1e-9, true);
    std::vector<PathVertex> path;
    fitter.Fit([](double t) -> Vec3 { return {t, t < 0.3 ? 0.0 : 100.0, 0.0}; }, 0.0, 1.0, path);
    EXPECT_LT(path.size(), 200U);
}

TEST(CurveFitterTest, NoNumbersAskForMoreVerticesThanAMachineHolds) {
    CurveFitter fitter(1e-9, false);
    std::vector<PathVertex> path;
    const auto rough = [](double t) -> Vec3 { return {t, 1e9 * std::sin(1e9 * t), 0.0}; };
    constexpr std::size_t kPieces = 100;
    for (std::size_t i = 0; i < kPieces; ++i) {
        const auto from = static_cast<double>(i);
        fitter.Fit(rough, from, from + 1.0, path);
    }
    EXPECT_GE(path.size(), CurveFitter::kMostVertices);
    EXPECT_LT(path.size(), CurveFitter::kMostVertices + 2 * kPieces);
    EXPECT_GT(fitter.GetDeviation(), 1.0);
}

}  // namespace
}  // namespace cqsurvey::exchange
