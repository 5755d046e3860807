#pragma once

#include <cstdint>
#include <span>

#include "plan/Bitmap.h"

namespace cqsurvey::plan {

[[nodiscard]] bool IsBmp(std::span<const std::uint8_t> bytes);

/// Decodes a BMP of 1, 4, 8, 16, 24 or 32 bits a pixel, also a run-length encoded one. All of it is
/// opaque: what stands where opacity would be is mostly nothing. Throws ImageFault when the image
/// is damaged, too large, or holds something else, such as a JPEG.
[[nodiscard]] Bitmap DecodeBmp(std::span<const std::uint8_t> bytes);

}  // namespace cqsurvey::plan
