#include "plan/sheet/TitleFields.h"

#include <gtest/gtest.h>

namespace cqsurvey::plan {
namespace {

TEST(TitleFields, WhatIsNotStatedIsLeftOut) {
    EXPECT_TRUE(MakeTitleFields({}, {}).empty());
    Plan plan;
    plan.title.client = "County Roads";
    plan.unit = CqLengthUnit::UsSurveyFoot;
    const std::vector<TitleField> fields = MakeTitleFields(plan, {2, 5});
    ASSERT_EQ(fields.size(), 3U);
    EXPECT_EQ(fields[0].caption, "Client");
    EXPECT_EQ(fields[0].text, "County Roads");
    EXPECT_EQ(fields[1].text, "US survey foot");
    EXPECT_EQ(fields[2].text, "2 of 5");
}

TEST(TitleFields, TheKeyPlanSaysWhatItIs) {
    EXPECT_EQ(MakeTitleFields({}, {0, 3}).back().text, "key plan of 3 sheets");
}

TEST(TitleFields, PaperHasItsNameEitherWayUp) {
    EXPECT_EQ(DescribePaper({297, 420}), "A3");
    EXPECT_EQ(DescribePaper({420, 297}), "A3");
    EXPECT_EQ(DescribePaper({300, 200}), "300 x 200 mm");
}

}  // namespace
}  // namespace cqsurvey::plan
