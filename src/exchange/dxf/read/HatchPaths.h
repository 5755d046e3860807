#pragma once

#include <vector>

#include "exchange/drawing/CurveFitter.h"
#include "exchange/dxf/Record.h"

namespace cqsurvey::exchange::dxf {

/// The outlines of a HATCH, each as a path to be closed, in the hatch's own coordinates. Ellipses
/// and splines are fitted. Throws ExchangeError with the place when the counts of the record
/// contradict each other.
[[nodiscard]] std::vector<std::vector<PathVertex>> ReadHatchPaths(const Record& record,
                                                                  CurveFitter& fitter);

}  // namespace cqsurvey::exchange::dxf
