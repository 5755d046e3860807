#include <gtest/gtest.h>

#include "exchange/inspect/SurveyBuilder.h"

namespace cqsurvey::exchange {
namespace {

TEST(MissingHeights, AreCountedByGroupAndCode) {
    const double none = std::nan("");
    SurveyBuilder builder;
    builder.survey.groups.emplace_back("Road");
    builder.Add("a", 1, 1, none, "EP");
    builder.Add("b", 1, 1, none, "EP");
    builder.Add("c", 1, 1, 5.0, "EP");
    builder.Add("d", 1, 1, 5.0, "GS");
    builder.survey.points[builder.Add("e", 1, 1, none)].group = 1;
    Findings findings;
    FindMissingHeights(builder.survey, findings);
    EXPECT_EQ(SurveyBuilder::Texts(findings),
              "no group, code \"EP\": 2 of 3 points without height: a (#1), b (#2)\n"
              "group \"Road\", no code: 1 of 1 point without height: e (#5)\n");
}

}  // namespace
}  // namespace cqsurvey::exchange
