#pragma once

#include <cstdint>
#include <span>

#include "cqjob/Bitmap.h"

namespace cqsurvey::cqjob {

[[nodiscard]] bool IsBmp(std::span<const std::uint8_t> bytes);

/// Decodes a BMP of 1, 4, 8, 16, 24 or 32 bits a pixel, also a run-length encoded one. All of it is
/// opaque: what stands where opacity would be is mostly nothing. Throws Failure when the image is
/// damaged, too large, or holds something else, such as a JPEG.
[[nodiscard]] Bitmap DecodeBmp(std::span<const std::uint8_t> bytes);

}  // namespace cqsurvey::cqjob
