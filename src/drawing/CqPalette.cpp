#include "cqsurvey/CqPalette.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>

#include "cqsurvey/Limits.h"

namespace cqsurvey {

namespace {

constexpr int kInk = 7;
constexpr int kFirstHue = 10;
constexpr int kFirstGrey = 250;
constexpr int kLast = limits::kHighestPaletteColor;
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
    const int brightness = kBrightness[static_cast<std::size_t>(shade / 2)];
    const auto part = [&](int centre) {
        const int full = Part(hue - centre);
        return shade % 2 == 0 ? full * brightness / 255 : (full + 255) * brightness / (2 * 255);
    };
    return Join(part(0), part(8), part(16));
}

int Channel(std::uint32_t rgb, unsigned shift) {
    return static_cast<int>((rgb >> shift) & 0xFFU);
}

}  // namespace

std::uint32_t GetPaletteColor(int number) noexcept {
    if (number < 1 || number > kLast) {
        return 0;
    }
    static constexpr std::array<std::uint32_t, 10> kPure{0,        0xFF0000, 0xFFFF00, 0x00FF00,
                                                         0x00FFFF, 0x0000FF, 0xFF00FF, 0xFFFFFF,
                                                         0x808080, 0xC0C0C0};
    if (number < kFirstHue) {
        return kPure[static_cast<std::size_t>(number)];
    }
    if (number < kFirstGrey) {
        return OnTheWheel(number);
    }
    // The greys go from 51 to 255 in five steps.
    const int level = 51 + (number - kFirstGrey) * 204 / (kLast - kFirstGrey);
    return Join(level, level, level);
}

int FindPaletteColor(std::uint32_t rgb, bool& exact) noexcept {
    rgb &= 0xFFFFFFU;
    exact = true;
    if (rgb == 0) {
        // The ink is black or white, whichever the background is not.
        return kInk;
    }
    int nearest = kInk;
    int least = std::numeric_limits<int>::max();
    for (int number = 1; number <= kLast; ++number) {
        const std::uint32_t color = GetPaletteColor(number);
        int distance = 0;
        for (const unsigned shift : {0U, 8U, 16U}) {
            const int away = Channel(rgb, shift) - Channel(color, shift);
            distance += away * away;
        }
        if (distance < least) {
            least = distance;
            nearest = number;
        }
    }
    exact = least == 0;
    return nearest;
}

}  // namespace cqsurvey
