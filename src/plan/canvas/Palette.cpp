#include "plan/canvas/Palette.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "cqsurvey/CqPalette.h"
#include "cqsurvey/Limits.h"

namespace cqsurvey::plan {

namespace {

constexpr int kInk = 7;

int Brightness(Rgb color) {
    return (299 * color.red + 587 * color.green + 114 * color.blue) / 1000;
}

bool IsLike(Rgb a, Rgb b) {
    constexpr int kClose = 16;
    return std::abs(a.red - b.red) < kClose && std::abs(a.green - b.green) < kClose &&
           std::abs(a.blue - b.blue) < kClose;
}

/// How bright a colour is to the eye, 0 to 1, as sRGB defines it.
double Luminance(Rgb color) {
    const auto linear = [](std::uint8_t part) {
        const double value = part / 255.0;
        return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.red) + 0.7152 * linear(color.green) + 0.0722 * linear(color.blue);
}

/// From 1 for equal colours to 21 for black and white.
double Contrast(Rgb a, Rgb b) {
    // The light that paper and screens reflect even where they are black.
    constexpr double kFlare = 0.05;
    const auto [dark, bright] = std::minmax({Luminance(a), Luminance(b)});
    return (bright + kFlare) / (dark + kFlare);
}

Rgb WithContrast(Rgb background, Rgb color, double contrast) {
    constexpr int kSteps = 64;
    const Rgb ink = InkOn(background);
    const auto mix = [&](int step) {
        return step == 0 ? color : Mix(ink, color, static_cast<double>(step) / kSteps);
    };
    int step = 0;
    while (step < kSteps && Contrast(mix(step), background) < contrast) {
        ++step;
    }
    return mix(step);
}

}  // namespace

Rgb InkOn(Rgb background) {
    return Brightness(background) < 128 ? kWhite : kBlack;
}

Rgb PaletteColor(int index, Rgb background) {
    if (index < 1 || index == kInk || index > limits::kHighestPaletteColor) {
        return InkOn(background);
    }
    const std::uint32_t value = GetPaletteColor(index);
    const Rgb color{static_cast<std::uint8_t>(value >> 16U), static_cast<std::uint8_t>(value >> 8U),
                    static_cast<std::uint8_t>(value)};
    return IsLike(color, background) ? InkOn(background) : color;
}

Rgb VisibleOn(Rgb background, Rgb color) {
    constexpr double kLines = 3.0;
    return WithContrast(background, color, kLines);
}

Rgb ReadableOn(Rgb background, Rgb color) {
    constexpr double kLetters = 3.5;
    return WithContrast(background, color, kLetters);
}

Rgb BackgroundColor(std::uint32_t setting) {
    return {static_cast<std::uint8_t>(setting), static_cast<std::uint8_t>(setting >> 8U),
            static_cast<std::uint8_t>(setting >> 16U)};
}

Rgb Mix(Rgb color, Rgb background, double part) {
    const auto mix = [part](std::uint8_t a, std::uint8_t b) {
        return static_cast<std::uint8_t>(std::lround(a * part + b * (1.0 - part)));
    };
    return {mix(color.red, background.red), mix(color.green, background.green),
            mix(color.blue, background.blue)};
}

}  // namespace cqsurvey::plan
