#include "cqsurvey/CqPalette.h"

#include <gtest/gtest.h>

namespace cqsurvey {
namespace {

TEST(CqPaletteTest, TheFirstNumbersArePureColors) {
    EXPECT_EQ(GetPaletteColor(1), 0xFF0000U);
    EXPECT_EQ(GetPaletteColor(3), 0x00FF00U);
    EXPECT_EQ(GetPaletteColor(5), 0x0000FFU);
    EXPECT_EQ(GetPaletteColor(7), 0xFFFFFFU);
}

TEST(CqPaletteTest, TheWheelHasShadesAndTheEndIsGrey) {
    EXPECT_EQ(GetPaletteColor(30), 0xFF7F00U);
    EXPECT_EQ(GetPaletteColor(15), 0x7F3F3FU);
    EXPECT_EQ(GetPaletteColor(249), 0x261317U);
    EXPECT_EQ(GetPaletteColor(250), 0x333333U);
    EXPECT_EQ(GetPaletteColor(255), 0xFFFFFFU);
}

TEST(CqPaletteTest, EveryOtherNumberIsBlack) {
    for (const int number : {-2147483647 - 1, -1, 0, 256, 2147483647}) {
        EXPECT_EQ(GetPaletteColor(number), 0U) << number;
    }
}

TEST(CqPaletteTest, EveryColorOfThePaletteIsFoundAsItself) {
    for (int number = 1; number <= 255; ++number) {
        bool exact = false;
        const int found = FindPaletteColor(GetPaletteColor(number), exact);
        EXPECT_TRUE(exact) << number;
        EXPECT_EQ(GetPaletteColor(found), GetPaletteColor(number));
    }
}

TEST(CqPaletteTest, AnotherColorIsTheNearestAndBlackIsTheInk) {
    bool exact = true;
    EXPECT_EQ(FindPaletteColor(0xFE0102, exact), 1);
    EXPECT_FALSE(exact);
    EXPECT_EQ(FindPaletteColor(0x000000, exact), 7);
    EXPECT_TRUE(exact);
}

}  // namespace
}  // namespace cqsurvey
