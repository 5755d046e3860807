#include "text/DrawingPalette.h"

#include <gtest/gtest.h>

namespace cqsurvey {
namespace {

TEST(DrawingPalette, HasPureColoursShadesAndGreys) {
    EXPECT_EQ(GetPaletteColor(1), 0xFF0000U);
    EXPECT_EQ(GetPaletteColor(7), 0xFFFFFFU);
    EXPECT_EQ(GetPaletteColor(30), 0xFF7F00U);
    EXPECT_EQ(GetPaletteColor(15), 0xA55252U);
    EXPECT_EQ(GetPaletteColor(249), 0x26131CU);
    EXPECT_EQ(GetPaletteColor(250), 0x333333U);
    EXPECT_EQ(GetPaletteColor(255), 0xFFFFFFU);
}

TEST(DrawingPalette, NumbersOutsideAreItsEnds) {
    EXPECT_EQ(GetPaletteColor(-5), 0U);
    EXPECT_EQ(GetPaletteColor(0), 0U);
    EXPECT_EQ(GetPaletteColor(256), 0xFFFFFFU);
}

}  // namespace
}  // namespace cqsurvey
