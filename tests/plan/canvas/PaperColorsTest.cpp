#include "plan/canvas/PaperColors.h"

#include <gtest/gtest.h>

namespace cqsurvey::plan {
namespace {

TEST(PaperColors, AColourThatCanBeSeenIsThatOfThePalette) {
    const PaperColors colors(kWhite);
    for (const int index : {1, 5, 8, 14, 34, 94, 170, 250}) {
        EXPECT_EQ(colors.OfLine(index), PaletteColor(index, kWhite)) << index;
    }
}

TEST(PaperColors, NoLineVanishesOnAnyPaper) {
    for (const Rgb paper : {kWhite, kBlack, Rgb{255, 250, 205}, Rgb{40, 40, 60}}) {
        const PaperColors colors(paper);
        for (int index = 0; index < 256; ++index) {
            const Rgb line = colors.OfLine(index);
            EXPECT_EQ(VisibleOn(paper, line), line) << index;
            const Rgb letter = colors.OfLetter(index);
            EXPECT_EQ(ReadableOn(paper, letter), letter) << index;
        }
    }
}

TEST(PaperColors, YellowIsNotYellowOnWhite) {
    EXPECT_FALSE(PaperColors(kWhite).OfLine(2) == (Rgb{255, 255, 0}));
    EXPECT_EQ(PaperColors(kBlack).OfLine(2), (Rgb{255, 255, 0}));
}

TEST(PaperColors, WhatIsNoColourIsTheInk) {
    const PaperColors colors(kWhite);
    for (const int index : {-5, 0, 7, 256, 100000}) {
        EXPECT_EQ(colors.OfLine(index), kBlack) << index;
        EXPECT_EQ(colors.OfLetter(index), kBlack) << index;
    }
}

}  // namespace
}  // namespace cqsurvey::plan
