#pragma once

#include <optional>
#include <vector>

#include "cqsurvey/CVector.h"
#include "cqsurvey/plan/Box.h"

namespace cqsurvey::plan {

/// Part of a circle. It begins at the angle `start` (radians, counter-clockwise from east) and runs
/// through the angle `sweep`, clockwise when that is negative.
struct Arc {
    CVector centre;
    double radius = 0.0;
    double start = 0.0;
    double sweep = 0.0;

    /// The point of the circle at an angle.
    [[nodiscard]] CVector At(double angle) const;

    /// The box of the arc itself, without the rest of its circle.
    [[nodiscard]] Box GetBox() const;
};

/// The arc from `p` to `q` of that bulge, the tangent of a quarter of its angle. Returns nothing
/// when it is a straight line or closer to one than `flat`, and when it is too large to compute
/// with.
[[nodiscard]] std::optional<Arc> FindArc(const CVector& p, const CVector& q, double bulge,
                                         double flat = 0.0);

/// The parts of `arc` inside `window`, in the arc's direction.
[[nodiscard]] std::vector<Arc> Clip(const Arc& arc, const Box& window);

/// Cuts the straight line from `p` to `q` down to its part inside `window`. False, with both
/// unchanged, when no part is inside.
[[nodiscard]] bool Clip(CVector& p, CVector& q, const Box& window);

}  // namespace cqsurvey::plan
