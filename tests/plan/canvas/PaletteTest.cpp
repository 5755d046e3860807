#include "plan/canvas/Palette.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

namespace cqsurvey::plan {

static void PrintTo(const Rgb& color, std::ostream* out) {
    *out << int{color.red} << ' ' << int{color.green} << ' ' << int{color.blue};
}

namespace {

Rgb OnWhite(int index) {
    return PaletteColor(index, kWhite);
}

TEST(Palette, BeginsWithThePureColoursAndTwoGreys) {
    EXPECT_EQ(OnWhite(1), (Rgb{255, 0, 0}));
    EXPECT_EQ(OnWhite(2), (Rgb{255, 255, 0}));
    EXPECT_EQ(OnWhite(3), (Rgb{0, 255, 0}));
    EXPECT_EQ(OnWhite(4), (Rgb{0, 255, 255}));
    EXPECT_EQ(OnWhite(5), (Rgb{0, 0, 255}));
    EXPECT_EQ(OnWhite(6), (Rgb{255, 0, 255}));
    EXPECT_EQ(OnWhite(8), (Rgb{128, 128, 128}));
    EXPECT_EQ(OnWhite(9), (Rgb{192, 192, 192}));
}

TEST(Palette, SevenAndWhatHasNoColourAreTheInk) {
    for (const int index : {7, 0, -1, 256, 1000000}) {
        EXPECT_EQ(PaletteColor(index, kWhite), kBlack) << index;
        EXPECT_EQ(PaletteColor(index, kBlack), kWhite) << index;
    }
    EXPECT_EQ(InkOn({0, 0, 128}), kWhite);
    EXPECT_EQ(InkOn({255, 255, 0}), kBlack);
}

TEST(Palette, HasAWheelOfHues) {
    EXPECT_EQ(OnWhite(10), (Rgb{255, 0, 0}));
    EXPECT_EQ(OnWhite(20), (Rgb{255, 63, 0}));
    EXPECT_EQ(OnWhite(30), (Rgb{255, 127, 0}));
    EXPECT_EQ(OnWhite(40), (Rgb{255, 191, 0}));
    EXPECT_EQ(OnWhite(50), (Rgb{255, 255, 0}));
    EXPECT_EQ(OnWhite(90), (Rgb{0, 255, 0}));
    EXPECT_EQ(OnWhite(130), (Rgb{0, 255, 255}));
    EXPECT_EQ(OnWhite(170), (Rgb{0, 0, 255}));
    EXPECT_EQ(OnWhite(210), (Rgb{255, 0, 255}));
    EXPECT_EQ(OnWhite(240), (Rgb{255, 0, 63}));
}

TEST(Palette, HasTenShadesOfEachHue) {
    const std::array<Rgb, 10> reds{{{255, 0, 0},
                                    {255, 127, 127},
                                    {165, 0, 0},
                                    {165, 82, 82},
                                    {127, 0, 0},
                                    {127, 63, 63},
                                    {76, 0, 0},
                                    {76, 38, 38},
                                    {38, 0, 0},
                                    {38, 19, 19}}};
    for (int shade = 0; shade < 10; ++shade) {
        EXPECT_EQ(OnWhite(10 + shade), reds[static_cast<std::size_t>(shade)]) << shade;
    }
    EXPECT_EQ(OnWhite(131), (Rgb{127, 255, 255}));
    EXPECT_EQ(OnWhite(174), (Rgb{0, 0, 127}));
}

TEST(Palette, EachHueIsTheNextOneOverTurnedByAThird) {
    for (int index = 10; index < 170; ++index) {
        const Rgb color = OnWhite(index);
        const Rgb turned = OnWhite(index + 80);
        EXPECT_EQ(turned, (Rgb{color.blue, color.red, color.green})) << index;
    }
}

TEST(Palette, EndsWithGreysFromDarkToWhite) {
    int last = 0;
    for (const int level : {51, 91, 132, 173, 214}) {
        const Rgb color = OnWhite(250 + last++);
        EXPECT_EQ(color, (Rgb{static_cast<std::uint8_t>(level), static_cast<std::uint8_t>(level),
                              static_cast<std::uint8_t>(level)}));
    }
    EXPECT_EQ(PaletteColor(255, kBlack), kWhite);
}

TEST(Palette, NothingIsDrawnInTheColourOfTheBackground) {
    EXPECT_EQ(PaletteColor(255, kWhite), kBlack);
    EXPECT_EQ(PaletteColor(1, {250, 5, 0}), kWhite);
    EXPECT_EQ(PaletteColor(2, {250, 250, 10}), kBlack);
    for (int index = 0; index <= 255; ++index) {
        EXPECT_FALSE(PaletteColor(index, kWhite) == kWhite) << index;
        EXPECT_FALSE(PaletteColor(index, kBlack) == kBlack) << index;
    }
}

TEST(Palette, ReadsTheBackgroundColourFromItsLowestByte) {
    EXPECT_EQ(BackgroundColor(0xFFFFFF), kWhite);
    EXPECT_EQ(BackgroundColor(0x0000FF), (Rgb{255, 0, 0}));
    EXPECT_EQ(BackgroundColor(0xFF123456), (Rgb{0x56, 0x34, 0x12}));
}

TEST(Palette, WhatHasContrastKeepsItsColour) {
    for (const Rgb color : {Rgb{255, 0, 0}, Rgb{0, 0, 255}, Rgb{128, 64, 0}, kBlack}) {
        EXPECT_EQ(VisibleOn(kWhite, color), color);
    }
    EXPECT_EQ(VisibleOn(kBlack, {255, 255, 0}), (Rgb{255, 255, 0}));
}

TEST(Palette, BrightColoursAreDarkerOnWhitePaperAndKeepTheirHue) {
    const Rgb yellow = VisibleOn(kWhite, {255, 255, 0});
    EXPECT_EQ(yellow.red, yellow.green);
    EXPECT_EQ(yellow.blue, 0);
    EXPECT_LT(yellow.red, 160);
    EXPECT_GT(yellow.red, 120);
    EXPECT_LT(ReadableOn(kWhite, {255, 255, 0}).red, yellow.red) << "letters are darker still";
}

TEST(Palette, DarkColoursAreBrighterOnADarkBackground) {
    const Rgb blue = VisibleOn(kBlack, {0, 0, 255});
    EXPECT_EQ(blue.blue, 255);
    EXPECT_GT(blue.red, 0);
    EXPECT_EQ(blue.red, blue.green);
}

TEST(Palette, Mixes) {
    EXPECT_EQ(Mix(kBlack, kWhite, 0.0), kWhite);
    EXPECT_EQ(Mix(kBlack, kWhite, 1.0), kBlack);
    EXPECT_EQ(Mix({255, 0, 0}, kBlack, 0.5), (Rgb{128, 0, 0}));
}

}  // namespace
}  // namespace cqsurvey::plan
