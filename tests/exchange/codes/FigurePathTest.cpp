#include "exchange/codes/FigurePath.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace cqsurvey::exchange {

namespace {

FigurePath Line(std::initializer_list<FigureVertex> vertices, bool closed = false) {
    return {std::vector<FigureVertex>(vertices), closed};
}

TEST(FigurePathTest, AParallelRunsToTheRightAndMeetsAtCorners) {
    const FigurePath path = Line({{{0, 0}, 1}, {{10, 0}, 2}, {{10, 10}, 3}});
    const std::optional<FigurePath> beside = FindParallel(path, {1.0, 0.5});
    ASSERT_TRUE(beside.has_value());
    ASSERT_EQ(beside->vertices.size(), 3U);
    EXPECT_NEAR(beside->vertices[0].place.GetY(), -1.0, 1e-12);
    EXPECT_NEAR(beside->vertices[1].place.GetX(), 11.0, 1e-12);
    EXPECT_NEAR(beside->vertices[1].place.GetY(), -1.0, 1e-12);
    EXPECT_NEAR(beside->vertices[2].place.GetX(), 11.0, 1e-12);
    EXPECT_EQ(beside->vertices[0].height, 1.5);
    EXPECT_EQ(beside->vertices[2].height, 3.5);
    EXPECT_EQ(beside->vertices[0].point, FigureVertex::kFree);
}

TEST(FigurePathTest, TheParallelOfAnArcHasTheSameCentre) {
    // A quarter of a circle around (0, 10), and a line that goes on in its direction.
    const double quarter = std::tan(std::numbers::pi / 8);
    const FigurePath path = Line({{{0, 0}, 0, quarter}, {{10, 10}, 0}, {{10, 20}, 0}});
    for (const double across : {2.0, -2.0}) {
        const std::optional<FigurePath> beside = FindParallel(path, {across, 0.0});
        ASSERT_TRUE(beside.has_value());
        ASSERT_EQ(beside->vertices.size(), 3U);
        EXPECT_NEAR(beside->vertices[0].bulge, quarter, 1e-12);
        EXPECT_NEAR(beside->vertices[0].place.GetY(), -across, 1e-12);
        EXPECT_NEAR(beside->vertices[1].place.GetX(), 10 + across, 1e-12);
        EXPECT_NEAR(beside->vertices[1].place.GetY(), 10, 1e-12);
    }
    EXPECT_FALSE(FindParallel(path, {-10.5, 0.0}).has_value()) << "inside of the centre";
}

TEST(FigurePathTest, TheParallelOfAClosedPathIsClosed) {
    const FigurePath path = Line({{{0, 0}}, {{10, 0}}, {{10, 10}}, {{0, 10}}, {{0, 0}}}, true);
    const std::optional<FigurePath> beside = FindParallel(path, {-1.0, 0.0});
    ASSERT_TRUE(beside.has_value());
    ASSERT_EQ(beside->vertices.size(), 5U);
    EXPECT_NEAR(beside->vertices[0].place.GetX(), 1.0, 1e-12);
    EXPECT_NEAR(beside->vertices[0].place.GetY(), 1.0, 1e-12);
    EXPECT_EQ((beside->vertices[4].place - beside->vertices[0].place).UNorm(), 0.0);
    EXPECT_FALSE(FindParallel(path, {-6.0, 0.0}).has_value()) << "nothing is left inside";
}

TEST(FigurePathTest, SharpCornersOfAParallelAreCutOff) {
    const FigurePath path = Line({{{0, 0}}, {{100, 0}}, {{0, 1}}});
    const std::optional<FigurePath> beside = FindParallel(path, {1.0, 0.0});
    ASSERT_TRUE(beside.has_value());
    EXPECT_EQ(beside->vertices.size(), 4U);
    for (const FigureVertex& vertex : beside->vertices) {
        EXPECT_LT(vertex.place.GetX(), 111.0);
    }
}

TEST(FigurePathTest, SegmentsOfNoLengthHaveNoParallel) {
    const FigurePath path = Line({{{0, 0}}, {{0, 0}}, {{10, 0}}});
    const std::optional<FigurePath> beside = FindParallel(path, {1.0, 0.0});
    ASSERT_TRUE(beside.has_value());
    EXPECT_EQ(beside->vertices.size(), 2U);
    EXPECT_FALSE(FindParallel(Line({{{0, 0}}, {{0, 0}}}), {1.0, 0.0}).has_value());
}

TEST(FigurePathTest, ACrossingIsFoundAlsoWhereAnArcCrosses) {
    EXPECT_EQ(FindCrossing(Line({{{0, 0}}, {{4, 4}}, {{4, 0}}, {{0, 4}}, {{0, 0}}}, true)), 0U);
    EXPECT_EQ(FindCrossing(Line({{{0, 0}}, {{4, 0}}, {{4, 4}}, {{0, 4}}, {{0, 0}}}, true)),
              std::nullopt);
    // The arc of the first side reaches above the third.
    EXPECT_EQ(FindCrossing(Line({{{0, 0}, 0, -1.5}, {{4, 0}}, {{4, 2}}, {{0, 2}}, {{0, 0}}}, true)),
              0U);
    EXPECT_EQ(FindCrossing(Line({{{0, 0}}, {{4, 0}}, {{0, 4}}, {{0, 0}}}, true)), std::nullopt);
}

}  // namespace

}  // namespace cqsurvey::exchange
