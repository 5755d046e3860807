#include <gtest/gtest.h>

#include "exchange/inspect/SurveyBuilder.h"

namespace cqsurvey::exchange {
namespace {

std::string Search(const SurveyBuilder& builder) {
    Findings findings;
    FindFar(builder.survey, findings);
    return SurveyBuilder::Texts(findings);
}

TEST(FarPoints, AreFoundBehindAWideGap) {
    SurveyBuilder builder;
    builder.AddField(11);
    builder.Add("digit", 500.0, 5.0, 680.0);
    builder.Add("swapped", 5.0, -100.0, 680.0);
    EXPECT_EQ(
        Search(builder),
        "digit (#122) at easting 500.000, northing 5.000 is 490.0 away from the others, which "
        "lie within 10.0\n"
        "swapped (#123) at easting 5.000, northing -100.000 is 100.0 away from the others, "
        "which lie within 10.0\n");
}

TEST(FarPoints, ASecondSiteIsNotFar) {
    SurveyBuilder builder;
    builder.AddField(10);
    for (int i = 0; i < 20; ++i) {
        builder.Add("S" + std::to_string(i), 1000.0 + i, 5.0, 680.0);
    }
    EXPECT_EQ(Search(builder), "");
}

TEST(FarPoints, AFewPointsAreNowhereFar) {
    SurveyBuilder builder;
    builder.Add("a", 0, 0, 0);
    builder.Add("b", 1, 1, 0);
    builder.Add("c", 1e6, 1e6, 0);
    EXPECT_EQ(Search(builder), "");
}

}  // namespace
}  // namespace cqsurvey::exchange
