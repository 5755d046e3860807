#pragma once

#include <cstdint>

#include "cqsurvey/CqPalette.h"

namespace cqsurvey::exchange::dxf {

inline constexpr int kColorOfBlock = 0;
inline constexpr int kColorOfLayer = 256;

/// The palette's colour number (1 to 255) nearest to a colour, whose red is in the third byte,
/// green in the second and blue in the lowest. `exact` is true when it is that colour.
[[nodiscard]] inline int NearestColor(std::uint32_t rgb, bool& exact) {
    return FindPaletteColor(rgb, exact);
}

}  // namespace cqsurvey::exchange::dxf
