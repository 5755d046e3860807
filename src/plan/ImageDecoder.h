#pragma once

#include <string>

#include "plan/Cairo.h"
#include "plan/Plan.h"

namespace cqsurvey::plan {

/// Decodes an image of a job (PNG, JPEG or BMP, which its bytes tell) and gives it the brightness,
/// contrast and greyness asked for. Null, with the reason in `fault`, when that is not possible.
[[nodiscard]] CairoSurfacePtr DecodeImage(const PlanImage& image, std::string& fault);

}  // namespace cqsurvey::plan
