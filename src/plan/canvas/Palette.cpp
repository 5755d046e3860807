#include "plan/canvas/Palette.h"

#include <cmath>
#include <cstdlib>

#include "cqsurvey/CqPalette.h"

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

}  // namespace

Rgb InkOn(Rgb background) {
    return Brightness(background) < 128 ? kWhite : kBlack;
}

Rgb PaletteColor(int index, Rgb background) {
    constexpr int kLast = 255;
    if (index < 1 || index == kInk || index > kLast) {
        return InkOn(background);
    }
    const std::uint32_t value = GetPaletteColor(index);
    const Rgb color{static_cast<std::uint8_t>(value >> 16U), static_cast<std::uint8_t>(value >> 8U),
                    static_cast<std::uint8_t>(value)};
    return IsLike(color, background) ? InkOn(background) : color;
}

Rgb ReadableOn(Rgb background, Rgb color) {
    constexpr int kFarEnough = 100;
    return std::abs(Brightness(color) - Brightness(background)) < kFarEnough
               ? Mix(color, InkOn(background), 0.5)
               : color;
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
