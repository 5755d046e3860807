#include "plan/Palette.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

namespace cqsurvey::plan {

namespace {

constexpr int kFirstHue = 10;
constexpr int kFirstGrey = 250;
constexpr int kLast = 255;
constexpr int kHues = 24;

constexpr std::array<Rgb, 10> kPure{{{0, 0, 0},
                                     {255, 0, 0},
                                     {255, 255, 0},
                                     {0, 255, 0},
                                     {0, 255, 255},
                                     {0, 0, 255},
                                     {255, 0, 255},
                                     {0, 0, 0},
                                     {128, 128, 128},
                                     {192, 192, 192}}};
constexpr int kInk = 7;

/// Red, green or blue of a full hue, `step` steps of the wheel from its own hue. It is 255 up to 4
/// steps away, and falls to 0 over the next 4.
int Part(int step) {
    step = (step % kHues + kHues) % kHues;
    const int away = std::min(step, kHues - step);
    return away <= 4 ? 255 : std::max(0, 255 * (8 - away) / 4);
}

std::uint8_t ToByte(int value) {
    return static_cast<std::uint8_t>(value);
}

Rgb OnTheWheel(int index) {
    // The ten shades of a hue are five pairs. Both of a pair are equally bright; the second is
    // mixed with grey.
    constexpr std::array<int, 5> kBrightness{255, 165, 127, 76, 38};
    const int hue = (index - kFirstHue) / 10;
    const int shade = index % 10;
    const int brightness = kBrightness[static_cast<std::size_t>(shade / 2)];
    const auto part = [&](int centre) {
        const int full = Part(hue - centre);
        return ToByte(shade % 2 == 0 ? full * brightness / 255
                                     : (full + 255) * brightness / (2 * 255));
    };
    return {part(0), part(8), part(16)};
}

/// The greys go from 51 to 255 in five steps.
Rgb Grey(int index) {
    const std::uint8_t level = ToByte(51 + (index - kFirstGrey) * 204 / (kLast - kFirstGrey));
    return {level, level, level};
}

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
    if (index < 1 || index == kInk || index > kLast) {
        return InkOn(background);
    }
    const Rgb color = index < kFirstHue    ? kPure[static_cast<std::size_t>(index)]
                      : index < kFirstGrey ? OnTheWheel(index)
                                           : Grey(index);
    return IsLike(color, background) ? InkOn(background) : color;
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
