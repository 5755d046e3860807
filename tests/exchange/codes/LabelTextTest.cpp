#include "exchange/codes/LabelText.h"

#include <gtest/gtest.h>

#include <limits>

namespace cqsurvey::exchange {

namespace {

TEST(LabelTextTest, NamesInBracesAreFilledIn) {
    const LabelValues values{"P1", "TR2", 312.345, "oak {name}"};
    EXPECT_EQ(FillLabel(u"{name}: {code} {height} {text}", values), u"P1: TR2 312.35 oak {name}");
    EXPECT_EQ(FillLabel(u"{nam} {", values), u"{nam} {");
    EXPECT_EQ(FillLabel(u"木", values), u"木");
}

TEST(LabelTextTest, WhatIsMissingLeavesNoBlanks) {
    const LabelValues values{"", "", std::numeric_limits<double>::quiet_NaN(), ""};
    EXPECT_EQ(FillLabel(u" {name} {height} {text}", values), u"");
}

TEST(LabelTextTest, ALabelIsCutToWhatAnAnnotationHolds) {
    const std::string text = std::string(254, 'x') + "\xF0\x9F\x8C\xB3";
    EXPECT_EQ(FillLabel(u"{text}", {"", "", 0.0, text}).size(), 254U);
}

}  // namespace

}  // namespace cqsurvey::exchange
