#include "plan/labels/PointFinder.h"

#include <gtest/gtest.h>

#include <random>

namespace cqsurvey::plan {
namespace {

PlanPoint At(double x, double y) {
    PlanPoint point;
    point.at = {x, y};
    return point;
}

TEST(PointFinder, FindsThePointWithinReach) {
    Plan plan;
    plan.items = {At(100, 200), At(103, 200)};
    const PointFinder finder(plan, 1.0);
    ASSERT_NE(finder.Find({100.6, 200.6}), nullptr);
    EXPECT_EQ(finder.Find({100.6, 200.6})->at.GetX(), 100);
    EXPECT_EQ(finder.Find({103, 200})->at.GetX(), 103);
    EXPECT_EQ(finder.Find({101.5, 200}), nullptr);
}

TEST(PointFinder, FindsTheNearestAsIfAllWereCompared) {
    std::mt19937 random(8);
    std::uniform_real_distribution<double> place(-20.0, 20.0);
    Plan plan;
    for (int i = 0; i < 200; ++i) {
        plan.items.emplace_back(At(place(random), place(random)));
    }
    constexpr double kReach = 1.5;
    const PointFinder finder(plan, kReach);
    int found = 0;
    for (int i = 0; i < 1000; ++i) {
        const CVector at(place(random), place(random));
        double least = kReach;
        for (const PlanItem& item : plan.items) {
            least = std::min(least, (std::get<PlanPoint>(item).at - at).UNorm());
        }
        const PlanPoint* point = finder.Find(at);
        EXPECT_EQ(point != nullptr, least < kReach) << "seed 8, place " << i;
        if (point != nullptr) {
            EXPECT_EQ((point->at - at).UNorm(), least) << "seed 8, place " << i;
            ++found;
        }
    }
    EXPECT_GT(found, 300);
    EXPECT_LT(found, 950);
}

TEST(PointFinder, PlacesFarOutAndPlansWithoutPointsDoNoHarm) {
    Plan plan;
    EXPECT_EQ(PointFinder(plan, 1.0).Find({0, 0}), nullptr);
    plan.items = {At(1e12, -1e12)};
    EXPECT_NE(PointFinder(plan, 1e-9).Find({1e12, -1e12}), nullptr);
}

}  // namespace
}  // namespace cqsurvey::plan
