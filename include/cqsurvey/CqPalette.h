#pragma once

#include <cstdint>

#include "cqsurvey/Export.h"

namespace cqsurvey {

// The drawing's palette, whose numbers are the colours of layers and entities. Colours have red in
// the third byte, green in the second and blue in the lowest.

/// The colour that the palette has for `number`, 1 to 255. 7 is the ink, here white; every other
/// number gives black.
[[nodiscard]] CQSURVEY_API std::uint32_t GetPaletteColor(int number) noexcept;

/// The palette's number, 1 to 255, nearest to a colour, and 7 for black. `exact` becomes true when
/// it is that colour.
[[nodiscard]] CQSURVEY_API int FindPaletteColor(std::uint32_t rgb, bool& exact) noexcept;

}  // namespace cqsurvey
