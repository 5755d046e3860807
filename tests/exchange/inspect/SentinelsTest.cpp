#include <gtest/gtest.h>

#include "exchange/inspect/SurveyBuilder.h"

namespace cqsurvey::exchange {
namespace {

std::string Search(SurveyBuilder& builder) {
    Findings findings;
    FindSentinels(builder.survey, findings);
    return SurveyBuilder::Texts(findings);
}

TEST(Sentinels, NumbersOfNinesAndZerosAreFoundOutsideOfTheUsualRange) {
    SurveyBuilder builder;
    builder.AddField(5);
    const std::uint32_t first = builder.Add("a", 1, 1, -9999.0);
    builder.Add("b", 1, 1, -9999.0);
    builder.Add("c", 1, 1, -9.99e27);
    builder.Add("d", 1, 1, 0.0);
    builder.Add("e", 1, 1, 999.0);
    builder.Add("f", 1, 1, -32768.0);
    EXPECT_EQ(Search(builder),
              "2 points with the height -9999: a (#26), b (#27)\n"
              "1 point with the height -9.99e+27: c (#28)\n"
              "1 point with the height -32768: f (#31)\n"
              "1 point with the height 0: d (#29)\n"
              "1 point with the height 999: e (#30)\n");
    for (std::uint32_t i = first; i < builder.survey.points.size(); ++i) {
        EXPECT_TRUE(std::isnan(builder.survey.points[i].height));
    }
}

TEST(Sentinels, ANumberAmongItsLikeIsNone) {
    SurveyBuilder builder;
    for (int i = 0; i < 100; ++i) {
        builder.Add("P", i, i, 950.0 + i);
    }
    EXPECT_EQ(Search(builder), "");
    SurveyBuilder shore;
    for (int i = 0; i < 100; ++i) {
        shore.Add("P", i, i, -2.0 + 0.04 * i);
    }
    EXPECT_EQ(Search(shore), "") << "one of the heights is 0";
}

TEST(Sentinels, ManyZerosAmongHeightsAroundZeroAreFound) {
    SurveyBuilder builder;
    for (int i = 0; i < 100; ++i) {
        builder.Add("P", i, i, -2.03 + 0.04 * i);
    }
    for (int i = 0; i < 20; ++i) {
        builder.Add("Z", i, i, 0.0);
    }
    EXPECT_EQ(Search(builder).substr(0, 31), "20 points with the height 0: Z ");
}

TEST(Sentinels, APlaceAtTheOriginIsFoundWhereNoOtherIs) {
    SurveyBuilder builder;
    for (int i = 0; i < 100; ++i) {
        builder.Add("P", 500000.0 + i, 6000000.0 - i, 1.0);
    }
    builder.Add("z", 0.0, 0.0, 1.0);
    builder.Add("n", -9999.0, 6000000.0, 1.0);
    builder.Add("i", std::nan(""), 6000000.0, 1.0);
    EXPECT_EQ(Search(builder),
              "1 point with coordinates that are not numbers: i (#103)\n"
              "1 point with the easting -9999 and the northing 6000000: n (#102)\n"
              "1 point with the easting 0 and the northing 0: z (#101)\n");
    SurveyBuilder local;
    local.AddField(5);
    EXPECT_EQ(Search(local), "") << "the field begins at the origin";
}

}  // namespace
}  // namespace cqsurvey::exchange
