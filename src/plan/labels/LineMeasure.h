#pragma once

#include <string>

#include "cqsurvey/CqAngleForm.h"
#include "plan/Plan.h"

namespace cqsurvey::plan {

/// The length of a segment with that bulge, along its arc.
[[nodiscard]] double MeasureLength(const CVector& from, const CVector& to, double bulge);

/// The area inside a closed line, with its arcs; 0 or more.
[[nodiscard]] double MeasureArea(const PlanLine& line);

/// The bearing from one place to another, clockwise from north: "45°30'00\"", "45.5000°" or
/// "50.5556 gon".
[[nodiscard]] std::string FormatBearing(const CVector& from, const CVector& to, CqAngleForm form);

/// True when the place is inside a closed line; arcs count as their chords.
[[nodiscard]] bool IsInside(const PlanLine& line, const CVector& place);

}  // namespace cqsurvey::plan
