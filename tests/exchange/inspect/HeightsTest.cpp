#include <gtest/gtest.h>

#include <limits>

#include "exchange/inspect/SurveyBuilder.h"

namespace cqsurvey::exchange {
namespace {

TEST(InspectedHeights, OneWrongHeightAmongOthersIsFound) {
    SurveyBuilder builder;
    builder.AddField(12);
    builder.Add("wrong", 5.5, 5.5, 583.02);
    builder.Add("shifted", 2.5, 8.5, 6801.2);
    EXPECT_EQ(
        builder.Heights(),
        "shifted (#146) has the height 6801.200; the points around it have 680.058 to "
        "680.190\n"
        "wrong (#145) has the height 583.020; the points around it have 680.211 to 680.341\n");
}

TEST(InspectedHeights, TwoNeighboursWithTheSameMistakeAreFound) {
    SurveyBuilder builder;
    builder.AddField(12);
    builder.Add("a", 5.5, 5.5, 7.0);
    builder.Add("b", 5.6, 5.5, 7.0);
    const std::string texts = builder.Heights();
    EXPECT_NE(texts.find("a (#145)"), std::string::npos) << texts;
    EXPECT_NE(texts.find("b (#146)"), std::string::npos) << texts;
}

TEST(InspectedHeights, ACliffIsNoMistake) {
    SurveyBuilder builder;
    for (int i = 0; i < 400; ++i) {
        const int east = i % 20;
        builder.Add("P" + std::to_string(i), east, i / 20,
                    (east < 10 ? 100.0 : 140.0) + 0.01 * (i % 7));
    }
    EXPECT_EQ(builder.Heights(), "");
}

TEST(InspectedHeights, SteepGroundIsNoMistake) {
    SurveyBuilder builder;
    for (int i = 0; i < 400; ++i) {
        const double east = i % 20;
        const double north = static_cast<double>(i) / 20;
        builder.Add("P" + std::to_string(i), 50.0 * east, 50.0 * std::floor(north),
                    1000.0 - 3.0 * std::hypot(east - 10.0, north - 10.0) * 10.0);
    }
    EXPECT_EQ(builder.Heights(), "");
}

TEST(InspectedHeights, LevelGroundAllowsSomething) {
    SurveyBuilder builder;
    for (int i = 0; i < 100; ++i) {
        builder.Add("P" + std::to_string(i), i % 10, i / 10, i < 50 ? 10.0 : 12.0);
    }
    builder.Add("step", 4.5, 2.5, 10.05);
    builder.Add("wrong", 5.5, 7.5, 112.0);
    EXPECT_EQ(builder.Heights(),
              "wrong (#102) has the height 112.000; the points around it have 12.000 to 12.000\n");
}

TEST(InspectedHeights, AFewPointsSayNothing) {
    SurveyBuilder builder;
    for (int i = 0; i < 6; ++i) {
        builder.Add("P" + std::to_string(i), i, 0, 10.0);
    }
    builder.Add("high", 3, 1, 1000.0);
    EXPECT_EQ(builder.Heights(), "");
}

TEST(InspectedHeights, PointsWithoutHeightOrPlaceAreLeftOut) {
    SurveyBuilder builder;
    const double none = std::numeric_limits<double>::quiet_NaN();
    builder.AddField(5);
    builder.Add("flat", 2.5, 2.5, none);
    builder.Add("lost", none, 2.5, 10.0);
    builder.Add("beyond", 1e300, 2.5, 10.0);
    EXPECT_EQ(builder.Heights(), "");
}

TEST(InspectedHeights, ManyPointsInOnePlaceAreLookedAtInTime) {
    SurveyBuilder builder;
    for (int i = 0; i < 20000; ++i) {
        builder.Add("P" + std::to_string(i), 1.0, 2.0, 3.0);
    }
    EXPECT_EQ(builder.Heights(), "");
}

}  // namespace
}  // namespace cqsurvey::exchange
