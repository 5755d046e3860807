#pragma once

namespace cqsurvey::exchange {

// Colour numbers of an entity that are no colour of the palette (CqPalette.h).

inline constexpr int kColorOfBlock = 0;
inline constexpr int kColorOfLayer = 256;

}  // namespace cqsurvey::exchange
