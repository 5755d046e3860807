#include "cqsurvey/CqLengthUnit.h"

#include <gtest/gtest.h>

namespace cqsurvey {

namespace {

TEST(CqLengthUnitTest, UnitsAreFoundByTheirWordsInAnyLetterCase) {
    EXPECT_EQ(FindLengthUnit("m"), CqLengthUnit::Metre);
    EXPECT_EQ(FindLengthUnit("FT"), CqLengthUnit::InternationalFoot);
    EXPECT_EQ(FindLengthUnit("Us-Ft"), CqLengthUnit::UsSurveyFoot);
    for (const char* word : {"", "ft ", "feet", "us", "metre"}) {
        EXPECT_EQ(FindLengthUnit(word), std::nullopt) << word;
    }
}

TEST(CqLengthUnitTest, UnitsHaveTheirDefinedLength) {
    EXPECT_EQ(GetMetres(CqLengthUnit::Metre), 1.0);
    EXPECT_EQ(GetMetres(CqLengthUnit::InternationalFoot), 0.3048);
    EXPECT_EQ(GetMetres(CqLengthUnit::UsSurveyFoot) * 3937.0, 1200.0);
    EXPECT_STREQ(GetUnitName(CqLengthUnit::UsSurveyFoot), "US survey foot");
}

}  // namespace

}  // namespace cqsurvey
