#pragma once

#include <cstdint>
#include <span>

#include "cqjob/Bitmap.h"

namespace cqsurvey::cqjob {

[[nodiscard]] bool IsJpeg(std::span<const std::uint8_t> bytes);

/// Throws Failure when the image is damaged or too large.
[[nodiscard]] Bitmap DecodeJpeg(std::span<const std::uint8_t> bytes);

}  // namespace cqsurvey::cqjob
