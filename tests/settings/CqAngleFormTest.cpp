#include "cqsurvey/CqAngleForm.h"

#include <gtest/gtest.h>

namespace cqsurvey {
namespace {

TEST(CqAngleForm, EachFormIsFoundByItsWord) {
    for (const CqAngleForm form :
         {CqAngleForm::DegreesMinutesSeconds, CqAngleForm::Degrees, CqAngleForm::Gon}) {
        EXPECT_EQ(FindAngleForm(GetAngleWord(form)), form);
    }
    EXPECT_EQ(FindAngleForm("GON"), CqAngleForm::Gon);
    EXPECT_EQ(FindAngleForm(""), std::nullopt);
    EXPECT_EQ(FindAngleForm("degrees"), std::nullopt);
}

}  // namespace
}  // namespace cqsurvey
