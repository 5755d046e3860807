#include "exchange/dxf/read/ReachTree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <utility>

namespace cqsurvey::exchange::dxf {
namespace {

constexpr double kInfinite = std::numeric_limits<double>::infinity();

using Hits = std::vector<std::pair<double, std::uint32_t>>;

Hits Find(const ReachTree& tree, double x, double y, std::size_t most) {
    std::vector<ReachTree::Found> found{{1.0, 99}};
    tree.Find(x, y, most, found);
    Hits hits;
    for (const ReachTree::Found& one : found) {
        hits.emplace_back(one.distance, one.place);
    }
    return hits;
}

/// The same by looking at every place.
Hits Model(const std::vector<ReachingPlace>& places, double x, double y, std::size_t most) {
    Hits hits;
    for (std::uint32_t i = 0; i < places.size(); ++i) {
        const double distance = std::hypot(places[i].x - x, places[i].y - y);
        if (distance <= places[i].reach) {
            hits.emplace_back(distance, i);
        }
    }
    std::sort(hits.begin(), hits.end());
    hits.resize(std::min(hits.size(), most));
    return hits;
}

class ReachTreeModel : public testing::TestWithParam<int> {};

// Whole numbers, so that many places are equally far, and as far as their reach.
TEST_P(ReachTreeModel, FindsWhatLookingAtEveryPlaceFinds) {
    const int width = GetParam();
    std::mt19937 random(static_cast<unsigned>(width));
    std::uniform_int_distribution<int> coordinate(-width, width);
    std::uniform_int_distribution<int> reach(0, 12);
    for (std::size_t count = 0; count < 200; count = count * 3 / 2 + 1) {
        std::vector<ReachingPlace> places(count);
        for (ReachingPlace& place : places) {
            const int far = reach(random);
            place = {1.0 * coordinate(random), 1.0 * coordinate(random),
                     far == 12 ? 3.0 * width : far};
        }
        const ReachTree tree(places);
        for (int i = 0; i < 50; ++i) {
            const double x = coordinate(random);
            const double y = coordinate(random);
            for (const std::size_t most : {1U, 3U, 8U}) {
                EXPECT_EQ(Find(tree, x, y, most), Model(places, x, y, most)) << count;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Crowds, ReachTreeModel, testing::Values(0, 1, 10, 1000));

TEST(ReachTreeTest, AnswersAlsoWhereTheCoordinatesAreFarApart) {
    std::mt19937 random(3);
    std::uniform_real_distribution<double> power(-15.0, 15.0);
    std::vector<ReachingPlace> places(2000);
    for (ReachingPlace& place : places) {
        place = {std::pow(10.0, power(random)), -std::pow(10.0, power(random)),
                 std::pow(10.0, power(random))};
    }
    const ReachTree tree(places);
    for (int i = 0; i < 200; ++i) {
        const double x = std::pow(10.0, power(random));
        const double y = -std::pow(10.0, power(random));
        EXPECT_EQ(Find(tree, x, y, 8), Model(places, x, y, 8));
    }
}

TEST(ReachTreeTest, WhatIsNotFiniteReachesNothing) {
    const ReachTree tree({{std::nan(""), 0, 10},
                          {0, kInfinite, 10},
                          {0, 0, std::nan("")},
                          {3, 4, 5},
                          {1e300, 0, kInfinite}});
    EXPECT_EQ(Find(tree, 0, 0, 8), (Hits{{5.0, 3}, {1e300, 4}}));
    EXPECT_EQ(Find(tree, std::nan(""), 0, 8), Hits());
    EXPECT_EQ(Find(tree, 0, 0, 0), Hits());
    EXPECT_EQ(Find(ReachTree({}), 0, 0, 8), Hits());
}

// These would take hours if a search looked at a good part of the places.

constexpr std::uint32_t kCrowd = 200'000;
constexpr std::uint32_t kSearches = 20'000;

TEST(ReachTreeTest, ACrowdAtOnePlaceIsNotLookedAtOneByOne) {
    std::vector<ReachingPlace> places(kCrowd, {7, 7, 5});
    for (std::uint32_t i = kCrowd / 2; i < kCrowd; ++i) {
        places[i].reach = 5.0 + i;
    }
    const ReachTree tree(places);
    for (std::uint32_t i = 0; i < kSearches; ++i) {
        ASSERT_EQ(Find(tree, 7, 7, 2), (Hits{{0.0, 0}, {0.0, 1}}));
        ASSERT_EQ(Find(tree, 7, 17, 1), (Hits{{10.0, kCrowd / 2}}));
    }
}

TEST(ReachTreeTest, OnePlaceThatReachesFarDoesNotMakeTheOthersLookedAt) {
    std::vector<ReachingPlace> places;
    for (std::uint32_t i = 0; i < kCrowd; ++i) {
        places.push_back({0.001 * i, 0, 0.0004});
    }
    places[5] = {0, 1, 1e6};
    const ReachTree tree(places);
    for (std::uint32_t i = 10; i < kSearches; ++i) {
        ASSERT_EQ(Find(tree, 0.001 * i, 0, 8).size(), 2U);
    }
}

TEST(ReachTreeTest, ACrowdThatAlmostReachesIsNotLookedAtOneByOne) {
    std::vector<ReachingPlace> places;
    for (std::uint32_t i = 0; i < kCrowd; ++i) {
        places.push_back({1e-9 * i, 1e-9 * (i % 1000), 1});
    }
    places.push_back({-5, 0, 1.9});
    const ReachTree tree(places);
    for (std::uint32_t i = 0; i < kSearches; ++i) {
        ASSERT_EQ(Find(tree, 1.5, 0, 8), Hits());
    }
}

}  // namespace
}  // namespace cqsurvey::exchange::dxf
