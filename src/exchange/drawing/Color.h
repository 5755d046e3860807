#pragma once

#include <cstdint>

namespace cqsurvey::exchange {

inline constexpr int kColorOfBlock = 0;
inline constexpr int kColorOfLayer = 256;

/// The palette's colour number (1 to 255) nearest to a colour, whose red is in the third byte,
/// green in the second and blue in the lowest. `exact` is true when it is that colour.
[[nodiscard]] int NearestColor(std::uint32_t rgb, bool& exact);

}  // namespace cqsurvey::exchange
