#include "cqsurvey/plan/PlotOptions.h"

#include <glib.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "plan/canvas/Units.h"
#include "text/NumberText.h"

namespace cqsurvey::plan {

namespace {

/// False for a not-a-number, too.
bool IsWithin(double value, double least, double largest) {
    return value >= least && value <= largest;
}

/// Why a PNG with the options would be too large; empty when it is not.
std::string FindPixelFault(const PlotOptions& options) {
    constexpr double kMostPixels = 30000.0;
    constexpr double kMostPixelsInAll = 400e6;
    const double width = options.paper.width * (options.dotsPerInch / kMillimetresInInch);
    const double height = options.paper.height * (options.dotsPerInch / kMillimetresInInch);
    // Rounding to whole pixels adds at most half a pixel.
    if (std::max(width, height) <= kMostPixels + 0.5 && width * height <= kMostPixelsInAll) {
        return {};
    }
    return "a PNG of " + FormatNumber(width, 0) + " x " + FormatNumber(height, 0) +
           " pixels is too large";
}

}  // namespace

std::optional<PictureFormat> FindFormat(std::string_view nameOrWord) {
    static constexpr std::array<std::pair<std::string_view, PictureFormat>, 3> kFormats{
        {{"svg", PictureFormat::Svg}, {"pdf", PictureFormat::Pdf}, {"png", PictureFormat::Png}}};
    const std::string_view word = nameOrWord.substr(nameOrWord.rfind('.') + 1);
    for (const auto& [name, format] : kFormats) {
        if (name.size() == word.size() &&
            g_ascii_strncasecmp(name.data(), word.data(), word.size()) == 0) {
            return format;
        }
    }
    return std::nullopt;
}

void PlotOptions::SetPixels(int width, int height) {
    constexpr double kDotsOfScreen = 96.0;
    paper = {width * kMillimetresInInch / kDotsOfScreen,
             height * kMillimetresInInch / kDotsOfScreen};
    turnsPaper = false;
    fillsPaper = true;
    dotsPerInch = kDotsOfScreen;
}

bool IsLineWidth(double width) {
    return IsWithin(width, 0.01, 5.0);
}

bool IsDrawable(const Box& extent) {
    constexpr double kLeastPart = 1e-9;
    constexpr double kLeastDistance = 1e-3;
    const double far = std::max({std::fabs(extent.minX), std::fabs(extent.maxX),
                                 std::fabs(extent.minY), std::fabs(extent.maxY), kLeastDistance});
    return extent.minX < extent.maxX && extent.minY < extent.maxY && far <= kFarthest &&
           std::max(extent.GetWidth(), extent.GetHeight()) >= far * kLeastPart;
}

std::string FindFault(const PlotOptions& options) {
    constexpr double kLeastSide = 1.0;
    constexpr double kLargestSide = 10'000.0;
    constexpr int kMostDecimals = 6;
    if (!IsWithin(options.paper.width, kLeastSide, kLargestSide) ||
        !IsWithin(options.paper.height, kLeastSide, kLargestSide)) {
        return "the sides of the paper are not from 1 to 10,000 mm";
    }
    if (!IsWithin(options.dotsPerInch, 10.0, 2400.0)) {
        return "the dots per inch are not from 10 to 2400";
    }
    if (options.scale && !IsWithin(*options.scale, 1e-3, 1e9)) {
        return "the scale is not from 0.001 to 1e9";
    }
    if (!IsWithin(options.labelHeight, 0.2, 50.0)) {
        return "the height of the labels is not from 0.2 to 50 mm";
    }
    if (options.heightDecimals < 0 || options.heightDecimals > kMostDecimals ||
        options.lineDecimals < 0 || options.lineDecimals > kMostDecimals) {
        return "the decimals are not from 0 to 6";
    }
    for (const LineWeight& weight : options.lineWeights) {
        if (!IsLineWidth(weight.width)) {
            return "the width of the lines is not from 0.01 to 5 mm";
        }
    }
    if (options.sheet && !options.divides) {
        return "a sheet is asked for, but the plan is not divided into sheets";
    }
    if (options.extent && !IsDrawable(*options.extent)) {
        return "the part to be drawn is empty, too small or too far away";
    }
    return options.format == PictureFormat::Png ? FindPixelFault(options) : std::string();
}

}  // namespace cqsurvey::plan
