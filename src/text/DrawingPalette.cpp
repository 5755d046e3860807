#include "text/DrawingPalette.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace cqsurvey {

namespace {

constexpr int kFirstHue = 10;
constexpr int kFirstGrey = 250;
constexpr int kHues = 24;

std::uint32_t Join(int red, int green, int blue) {
    return (static_cast<std::uint32_t>(red) << 16U) | (static_cast<std::uint32_t>(green) << 8U) |
           static_cast<std::uint32_t>(blue);
}

/// Red, green or blue of a full hue, `step` steps of the wheel from its own hue. It is 255 up to 4
/// steps away, and falls to 0 over the next 4.
int Part(int step) {
    step = (step % kHues + kHues) % kHues;
    const int away = std::min(step, kHues - step);
    return away <= 4 ? 255 : std::max(0, 255 * (8 - away) / 4);
}

std::uint32_t OnTheWheel(int number) {
    // The ten shades of a hue are five pairs. Both of a pair are equally bright; the second is
    // mixed with grey.
    constexpr std::array<int, 5> kBrightness{255, 165, 127, 76, 38};
    const int hue = (number - kFirstHue) / 10;
    const int shade = number % 10;
    const int brightness = kBrightness.at(static_cast<std::size_t>(shade / 2));
    const auto part = [&](int centre) {
        const int full = Part(hue - centre);
        return shade % 2 == 0 ? full * brightness / 255 : (full + 255) * brightness / (2 * 255);
    };
    return Join(part(0), part(8), part(16));
}

}  // namespace

std::uint32_t GetPaletteColor(int number) {
    static constexpr std::array<std::uint32_t, 10> kPure{0,        0xFF0000, 0xFFFF00, 0x00FF00,
                                                         0x00FFFF, 0x0000FF, 0xFF00FF, 0xFFFFFF,
                                                         0x808080, 0xC0C0C0};
    number = std::clamp(number, 0, kLastColor);
    if (number < kFirstHue) {
        return kPure.at(static_cast<std::size_t>(number));
    }
    if (number < kFirstGrey) {
        return OnTheWheel(number);
    }
    // The greys go from 51 to 255 in five steps.
    const int level = 51 + (number - kFirstGrey) * 204 / (kLastColor - kFirstGrey);
    return Join(level, level, level);
}

}  // namespace cqsurvey
