#pragma once

#include <cqsurvey/cqsurvey.h>

#include <limits>
#include <optional>
#include <vector>

namespace cqsurvey::cqjob {

/// A rectangle along the axes; empty until something was added.
struct Box {
    double minX = std::numeric_limits<double>::infinity();
    double minY = std::numeric_limits<double>::infinity();
    double maxX = -std::numeric_limits<double>::infinity();
    double maxY = -std::numeric_limits<double>::infinity();

    [[nodiscard]] bool IsEmpty() const { return !(minX <= maxX && minY <= maxY); }
    /// 0 of an empty box.
    [[nodiscard]] double GetWidth() const { return IsEmpty() ? 0.0 : maxX - minX; }
    [[nodiscard]] double GetHeight() const { return IsEmpty() ? 0.0 : maxY - minY; }
    void Add(const CVector& point);
    void Add(const Box& box);
    /// All sides moved out by `margin`.
    [[nodiscard]] Box Grow(double margin) const;
    /// True when the boxes have a point in common.
    [[nodiscard]] bool Meets(const Box& box) const;
    [[nodiscard]] bool Holds(const Box& box) const;
};

/// Part of a circle: from the angle `start` (radians, counter-clockwise from east) through `sweep`,
/// clockwise when that is negative.
struct Arc {
    CVector centre;
    double radius = 0.0;
    double start = 0.0;
    double sweep = 0.0;

    [[nodiscard]] CVector At(double angle) const;
    /// The box of the arc itself.
    [[nodiscard]] Box GetBox() const;
};

/// The arc from `p` to `q` whose quarter angle has the tangent `bulge`; nothing when that is a
/// straight line, or so nearly one that it strays from it by less than `flat`, or when the arc is
/// too large for numbers.
[[nodiscard]] std::optional<Arc> FindArc(const CVector& p, const CVector& q, double bulge,
                                         double flat = 0.0);

/// The parts of `arc` inside `window`, in the arc's direction.
[[nodiscard]] std::vector<Arc> Clip(const Arc& arc, const Box& window);

/// Cuts the straight line from `p` to `q` down to its part inside `window`. False, with both
/// unchanged, when none is inside.
[[nodiscard]] bool Clip(CVector& p, CVector& q, const Box& window);

}  // namespace cqsurvey::cqjob
