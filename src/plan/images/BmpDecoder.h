#pragma once

#include <cstdint>
#include <span>

#include "plan/images/Bitmap.h"

namespace cqsurvey::plan {

[[nodiscard]] bool IsBmp(std::span<const std::uint8_t> bytes);

/// Decodes a BMP of 1, 4, 8, 16, 24 or 32 bits per pixel, run-length encoded or not. All pixels are
/// opaque, because few programs set the bits of the opacity. Throws ImageFault when the image is
/// damaged, too large, or holds something else, such as a JPEG.
[[nodiscard]] Bitmap DecodeBmp(std::span<const std::uint8_t> bytes);

}  // namespace cqsurvey::plan
