#pragma once

#include <span>

namespace cqsurvey::plan {

/// Lengths of dashes and gaps in millimetres on paper, a dash first; empty for a continuous line.
/// The types: 1 dashed, 2 dotted, 3 dash and dot, 4 dash and two dots, 5 long dashes, 6 short
/// dashes, 7 long and short dashes; every other is continuous.
[[nodiscard]] std::span<const double> LinePattern(int line);

}  // namespace cqsurvey::plan
