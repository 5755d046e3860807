#pragma once

#include <string>

#include "plan/Plan.h"
#include "plan/canvas/Cairo.h"

namespace cqsurvey::plan {

/// Decodes an image of a job and applies its brightness, contrast and monotone settings. The bytes
/// tell whether it is a PNG, JPEG or BMP. Returns null, with the reason in `fault`, when it cannot
/// be decoded.
[[nodiscard]] CairoSurfacePtr DecodeImage(const PlanImage& image, std::string& fault);

}  // namespace cqsurvey::plan
