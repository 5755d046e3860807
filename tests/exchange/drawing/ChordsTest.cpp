#include "exchange/drawing/Chords.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace cqsurvey::exchange {
namespace {

TEST(ChordsTest, AStraightPathStaysAsItIs) {
    double deviation = 1.0;
    const auto path = BreakArcs({{{0, 0, 1}, 0.0}, {{5, 5, 2}, 0.0}}, 0.01, deviation);
    EXPECT_EQ(path.size(), 2U);
    EXPECT_EQ(deviation, 0.0);
}

TEST(ChordsTest, AnArcIsBrokenWithinTheTolerance) {
    double deviation = 0.0;
    const auto path = BreakArcs({{{10, 0, 0}, 1.0}, {{-10, 0, 4}, 0.0}}, 0.05, deviation);
    EXPECT_GT(path.size(), 10U);
    EXPECT_LE(deviation, 0.05);
    double last = 0.0;
    for (const PathVertex& vertex : path) {
        EXPECT_NEAR(std::hypot(vertex.at.x, vertex.at.y), 10.0, 1e-9);
        EXPECT_EQ(vertex.bulge, 0.0);
        EXPECT_GE(vertex.at.z, last);
        last = vertex.at.z;
    }
    for (std::size_t i = 0; i + 1 < path.size(); ++i) {
        const double x = (path[i].at.x + path[i + 1].at.x) / 2;
        const double y = (path[i].at.y + path[i + 1].at.y) / 2;
        EXPECT_LE(10.0 - std::hypot(x, y), 0.05);
    }
}

TEST(ChordsTest, HeightsAreThereWhereBothEndsHaveOne) {
    double deviation = 0.0;
    const auto path = BreakArcs({{{10, 0, 3}, 1.0, true}, {{-10, 0, 0}, 0.0, false}}, 1, deviation);
    EXPECT_TRUE(path.front().hasHeight);
    EXPECT_TRUE(std::none_of(path.begin() + 1, path.end(),
                             [](const PathVertex& vertex) { return vertex.hasHeight; }));
}

}  // namespace
}  // namespace cqsurvey::exchange
