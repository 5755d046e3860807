#pragma once

#include <array>

#include "cqsurvey/CqImagePlace.h"
#include "exchange/drawing/Vec3.h"

namespace cqsurvey::exchange {

/// The corners of an image: lower left, lower right, upper right, upper left, at height 0.
[[nodiscard]] std::array<Vec3, 4> CornersOf(const CqImagePlace& place);

}  // namespace cqsurvey::exchange
