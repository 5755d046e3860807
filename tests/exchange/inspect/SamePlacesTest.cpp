#include "exchange/inspect/SamePlaces.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

#include "exchange/inspect/SurveyBuilder.h"

namespace cqsurvey::exchange {
namespace {

using Groups = std::vector<std::vector<std::uint32_t>>;

TEST(SamePlaces, PointsWithinTheToleranceAreInOnePlace) {
    SurveyBuilder builder;
    builder.Add("a", 10.0, 20.0, 1.0);
    builder.Add("b", 11.0, 20.0, 1.0);
    builder.Add("c", 10.0009, 20.0, 1.0);
    builder.Add("d", 11.0, 20.0011, 1.0);
    EXPECT_EQ(SamePlaces(builder.survey, 0.001).GetShared(), (Groups{{0, 2}}));
    EXPECT_EQ(SamePlaces(builder.survey, 0.002).GetShared(), (Groups{{0, 2}, {1, 3}}));
    EXPECT_EQ(SamePlaces(builder.survey, 0.0).GetShared(), Groups{});
    EXPECT_EQ(SamePlaces(builder.survey, 5.0).GetShared(), (Groups{{0, 1, 2, 3}}));
}

TEST(SamePlaces, AgreesWithComparingEveryPairOfPoints) {
    constexpr double kTolerance = 0.5;
    for (unsigned seed = 1; seed <= 20; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        std::uniform_real_distribution<double> coordinate(-10.0, 10.0);
        SurveyBuilder builder;
        for (int i = 0; i < 300; ++i) {
            builder.Add("P", coordinate(random), coordinate(random), 0.0);
        }
        const SamePlaces places(builder.survey, kTolerance);
        for (std::uint32_t a = 0; a < 300; ++a) {
            for (std::uint32_t b = 0; b < a; ++b) {
                const SurveyedPoint& p = builder.survey.points[a];
                const SurveyedPoint& q = builder.survey.points[b];
                if (std::hypot(p.easting - q.easting, p.northing - q.northing) < kTolerance) {
                    EXPECT_EQ(places.PlaceOf(a), places.PlaceOf(b)) << a << " " << b;
                }
            }
        }
        for (const auto& group : places.GetShared()) {
            for (const std::uint32_t point : group) {
                const SurveyedPoint& p = builder.survey.points[point];
                EXPECT_TRUE(std::any_of(group.begin(), group.end(), [&](std::uint32_t other) {
                    const SurveyedPoint& q = builder.survey.points[other];
                    return other != point &&
                           std::hypot(p.easting - q.easting, p.northing - q.northing) <= kTolerance;
                })) << point;
            }
        }
    }
}

TEST(SamePlaces, PointsWithoutAPlaceShareNone) {
    const double none = std::numeric_limits<double>::quiet_NaN();
    SurveyBuilder builder;
    builder.Add("a", none, none, 1.0);
    builder.Add("b", none, none, 1.0);
    builder.Add("c", 1e300, 1.0, 1.0);
    builder.Add("d", 1e300, 1.0, 1.0);
    const SamePlaces places(builder.survey, 0.001);
    EXPECT_EQ(places.GetShared(), Groups{});
    EXPECT_TRUE(places.GetFirsts().empty());
}

TEST(SamePlaces, ReportsHowFarTheHeightsDiffer) {
    SurveyBuilder builder;
    builder.Add("rim", 10.0, 20.0, 105.5);
    builder.Add("invert", 10.0, 20.0, 103.0);
    builder.Add("x", 1.0, 2.0, 3.0);
    builder.Add("y", 1.0, 2.0, 3.0);
    Findings findings;
    SamePlaces(builder.survey, 0.001).Report(builder.survey, findings);
    EXPECT_EQ(SurveyBuilder::Texts(findings),
              "rim (#1), invert (#2) are in the same place; their heights differ by 2.500\n"
              "x (#3), y (#4) are in the same place\n");
}

}  // namespace
}  // namespace cqsurvey::exchange
