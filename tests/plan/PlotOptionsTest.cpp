#include "cqsurvey/plan/PlotOptions.h"

#include <gtest/gtest.h>

#include <limits>

namespace cqsurvey::plan {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(PictureFormat, IsFoundByTheEndOfANameAndByWords) {
    EXPECT_EQ(FindFormat("a/b.c/plan.SVG"), PictureFormat::Svg);
    EXPECT_EQ(FindFormat("plan.pdf"), PictureFormat::Pdf);
    EXPECT_EQ(FindFormat("png"), PictureFormat::Png);
    EXPECT_FALSE(FindFormat("plan.svgz"));
    EXPECT_FALSE(FindFormat("plan."));
    EXPECT_FALSE(FindFormat(""));
}

TEST(PlotOptions, TheUsualOnesHaveNoFault) {
    EXPECT_EQ(FindFault(PlotOptions()), "");
}

TEST(PlotOptions, EachFieldHasARange) {
    PlotOptions options;
    for (const double side : {0.0, 0.9, 10'001.0, -5.0, kNaN}) {
        options.paper = {side, 100.0};
        EXPECT_NE(FindFault(options), "") << side;
        options.paper = {100.0, side};
        EXPECT_NE(FindFault(options), "") << side;
    }
    options = PlotOptions();
    for (const double dots : {9.0, 2401.0, kNaN}) {
        options.dotsPerInch = dots;
        EXPECT_NE(FindFault(options), "") << dots;
    }
    options = PlotOptions();
    for (const double scale : {0.0, -1.0, 2e9, kNaN}) {
        options.scale = scale;
        EXPECT_NE(FindFault(options), "") << scale;
    }
    options = PlotOptions();
    for (const double height : {0.1, 51.0, kNaN}) {
        options.labelHeight = height;
        EXPECT_NE(FindFault(options), "") << height;
    }
    options = PlotOptions();
    options.extent = Box();
    EXPECT_NE(FindFault(options), "");
    options.extent = Box{0, 0, 10, 20};
    EXPECT_EQ(FindFault(options), "");
}

TEST(PlotOptions, APngHasSoManyPixelsAtMost) {
    PlotOptions options;
    options.paper = {841.0, 1189.0};
    options.dotsPerInch = 2400.0;
    EXPECT_EQ(FindFault(options), "");
    options.format = PictureFormat::Png;
    EXPECT_EQ(FindFault(options), "a PNG of 79465 x 112346 pixels is too large");
    options.dotsPerInch = 300.0;
    EXPECT_EQ(FindFault(options), "");
}

TEST(PlotOptions, PixelsAreThoseOfAScreenAndFilled) {
    PlotOptions options;
    options.SetPixels(960, 96);
    EXPECT_DOUBLE_EQ(options.paper.width, 254.0);
    EXPECT_DOUBLE_EQ(options.paper.height, 25.4);
    EXPECT_EQ(options.dotsPerInch, 96.0);
    EXPECT_TRUE(options.fillsPaper);
    EXPECT_FALSE(options.turnsPaper);
}

TEST(IsDrawable, WantsSidesInOrderAndARoomThatNumbersCanTellApart) {
    EXPECT_TRUE(IsDrawable({0, 0, 1, 1}));
    EXPECT_TRUE(IsDrawable({0, 0, 1e-9, 1e-9}));
    EXPECT_FALSE(IsDrawable({0, 0, 0, 1}));
    EXPECT_FALSE(IsDrawable({0, 1, 1, 0}));
    EXPECT_FALSE(IsDrawable({0, 0, kNaN, 1}));
    EXPECT_FALSE(IsDrawable({1e6, 1e6, 1e6 + 1e-4, 1e6 + 1e-4}));
    EXPECT_TRUE(IsDrawable({-kFarthest, 0, kFarthest, 1}));
    EXPECT_FALSE(IsDrawable({-2e12, 0, 1, 1}));
}

}  // namespace
}  // namespace cqsurvey::plan
