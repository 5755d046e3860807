#include "cqsurvey/exchange/LengthUnit.h"

#include <gtest/gtest.h>

namespace cqsurvey::exchange {
namespace {

TEST(LengthUnitTest, EachUnitHasItsLengthAndWord) {
    EXPECT_EQ(MetresOf(LengthUnit::Foot), 0.3048);
    EXPECT_EQ(MetresOf(LengthUnit::UsSurveyFoot), 1200.0 / 3937.0);
    EXPECT_EQ(MetresOf(LengthUnit::Millimetre), 0.001);
    EXPECT_STREQ(UnitWord(LengthUnit::UsSurveyFoot), "US survey foot");
    EXPECT_STREQ(UnitWord(LengthUnit::Inch), "inch");
}

TEST(LengthUnitTest, AUnitIsFoundByItsWordAndByItsNumber) {
    EXPECT_EQ(UnitOfWord("us-ft"), LengthUnit::UsSurveyFoot);
    EXPECT_EQ(UnitOfWord("m"), LengthUnit::Metre);
    EXPECT_EQ(UnitOfWord("M"), std::nullopt);
    EXPECT_EQ(UnitOfWord(""), std::nullopt);
    EXPECT_EQ(UnitOfNumber(6), LengthUnit::Metre);
    EXPECT_EQ(UnitOfNumber(21), LengthUnit::UsSurveyFoot);
    for (const int number : {0, 3, 7, 20, -1}) {
        EXPECT_EQ(UnitOfNumber(number).has_value(), number == 7) << number;
    }
}

}  // namespace
}  // namespace cqsurvey::exchange
