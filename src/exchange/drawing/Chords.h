#pragma once

#include <vector>

#include "exchange/drawing/CurveFitter.h"

namespace cqsurvey::exchange {

/// The path with its arcs broken into straight lines within the tolerance, the heights of their
/// ends between those of the arc's. `deviation` is how far they are off at most.
[[nodiscard]] std::vector<PathVertex> BreakArcs(const std::vector<PathVertex>& path,
                                                double tolerance, double& deviation);

}  // namespace cqsurvey::exchange
