#pragma once

#include <cqsurvey/CVector.h>

#include <optional>
#include <span>
#include <vector>

namespace cqsurvey::exchange {

/// A circle in the plan.
struct Circle {
    CVector centre;
    double radius = 0.0;
};

/// The circle through three points; nothing when they lie in line or two of them are one.
[[nodiscard]] std::optional<Circle> FindCircle(const CVector& a, const CVector& b,
                                               const CVector& c);

/// The circle for which the squares of the distances of the points from it have the least sum;
/// nothing when the points lie in line.
[[nodiscard]] std::optional<Circle> FitCircle(std::span<const CVector> points);

/// The bulges of the segments between the points of a curve.
struct FittedArc {
    std::vector<double> bulges;  ///< one less than there are points, but for a whole circle
    double deviation = 0.0;      ///< the largest distance of a point from the circle
};

/// Why a curve is drawn with straight segments.
enum class ArcFault { Straight, TooFar, Unsteady };

/// What ArcFitter makes of a curve.
struct ArcResult {
    std::optional<FittedArc> arc;
    ArcFault fault = ArcFault::Straight;  ///< when there is no arc
    double deviation = 0.0;               ///< of TooFar
};

/// Fits one circle to the shots of a curve, three of them or more.
///
///     three        the circle through them, exactly
///     more         the best circle, if every shot is within the tolerance of it
///
/// Each segment is then an arc about the circle's centre from shot to shot. It is no arc when the
/// shots lie in line, when they do not follow each other around the circle, or when they would go
/// around it more than once. A `whole` circle goes on from the last shot to the first, with one
/// more bulge.
[[nodiscard]] ArcResult FitArc(std::span<const CVector> points, double tolerance,
                               bool whole = false);

/// The bulge of the arc that leaves p in the direction of `tangent` and ends at q; nothing when the
/// tangent points away from q or there is no direction.
[[nodiscard]] std::optional<double> FindTangentBulge(const CVector& p, const CVector& tangent,
                                                     const CVector& q);

/// The direction in which the segment from p to q with this bulge ends.
[[nodiscard]] CVector FindEndTangent(const CVector& p, const CVector& q, double bulge);

}  // namespace cqsurvey::exchange
