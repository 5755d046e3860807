#pragma once

#include <cstdint>

namespace cqsurvey {

/// The last number of the drawing palette.
inline constexpr int kLastColor = 255;

/// The colour of the drawing palette that `number` (1 to 255) names, red in the third byte, green
/// in the second and blue in the lowest: 1 to 9 are the pure colours, white and two greys, 10 to
/// 249 a wheel of 24 hues in ten shades each, 250 to 255 greys from dark to white. A number below 1
/// is black, one above 255 is white.
[[nodiscard]] std::uint32_t GetPaletteColor(int number);

}  // namespace cqsurvey
