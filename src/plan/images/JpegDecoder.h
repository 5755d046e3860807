#pragma once

#include <cstdint>
#include <span>

#include "plan/images/Bitmap.h"

namespace cqsurvey::plan {

[[nodiscard]] bool IsJpeg(std::span<const std::uint8_t> bytes);

/// Throws ImageFault when the image is damaged or too large.
[[nodiscard]] Bitmap DecodeJpeg(std::span<const std::uint8_t> bytes);

}  // namespace cqsurvey::plan
