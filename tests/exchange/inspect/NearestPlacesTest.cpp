#include "exchange/inspect/NearestPlaces.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>

namespace cqsurvey::exchange {
namespace {

TEST(NearestPlaces, FindsWhatComparingAllFinds) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> coordinate(500000.0, 500100.0);
    std::vector<Place> places(1000);
    for (Place& place : places) {
        place = {coordinate(random), coordinate(random)};
    }
    const NearestPlaces nearest(places);
    for (int i = 0; i < 50; ++i) {
        const Place from{coordinate(random), coordinate(random)};
        std::vector<std::uint32_t> expected(places.size());
        std::iota(expected.begin(), expected.end(), 0U);
        std::sort(expected.begin(), expected.end(), [&](std::uint32_t a, std::uint32_t b) {
            const auto distance = [&](std::uint32_t place) {
                return std::hypot(places[place].easting - from.easting,
                                  places[place].northing - from.northing);
            };
            return distance(a) < distance(b);
        });
        expected.resize(5);
        std::vector<std::uint32_t> found;
        nearest.Find(from, 5, found);
        EXPECT_EQ(found, expected);
    }
}

TEST(NearestPlaces, FindsNoMoreThanThereAre) {
    const NearestPlaces nearest({{0.0, 0.0}, {1.0, 1.0}});
    std::vector<std::uint32_t> found;
    nearest.Find({0.9, 0.9}, 5, found);
    EXPECT_EQ(found, (std::vector<std::uint32_t>{1, 0}));
}

}  // namespace
}  // namespace cqsurvey::exchange
