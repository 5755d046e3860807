#pragma once

#include <optional>

#include "cqsurvey/exchange/DrawingReport.h"
#include "cqsurvey/exchange/LengthUnit.h"

namespace cqsurvey::exchange {

/// Decides by what the lengths of a file are multiplied, and tells the report: the ratio of the
/// units when both are known, otherwise 1.
void ScaleLengths(std::optional<LengthUnit> file, std::optional<LengthUnit> job,
                  DrawingReport& report);

}  // namespace cqsurvey::exchange
