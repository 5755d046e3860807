#pragma once

#include <cmath>
#include <limits>

#include "cqsurvey/CVector.h"

namespace cqsurvey {

/// Visits 2^depth + 1 points of the arc from p to q. It knows neither centre nor radius: the apex
/// lies half a chord times the bulge to the right of the chord's middle, and either half of an arc
/// is an arc whose bulge follows from halving the angle.
template <class Visit>
void SampleArc(const CVector& p, const CVector& q, double bulge, int depth, const Visit& visit) {
    if (depth == 0) {
        visit(p);
        visit(q);
        return;
    }
    const CVector d = q - p;
    const CVector apex(p.GetX() + 0.5 * d.GetX() + 0.5 * bulge * d.GetY(),
                       p.GetY() + 0.5 * d.GetY() - 0.5 * bulge * d.GetX());
    const double half = bulge / (1.0 + std::hypot(1.0, bulge));
    SampleArc(p, apex, half, depth - 1, visit);
    SampleArc(apex, q, half, depth - 1, visit);
}

/// How far the box of an arc may be from the box of its samples: by the sampling, by the rounding
/// of the included angle, which moves the centre of a nearly full circle, and by the rounding of
/// coordinates of the size of the radius.
inline double ArcTolerance(const CVector& p, const CVector& q, double bulge, int depth) {
    constexpr double kEpsilon = std::numeric_limits<double>::epsilon();
    const double chord = (q - p).UNorm();
    const double b = std::fabs(bulge);
    const double radius = chord * (1.0 + b * b) / (4.0 * b);
    const double step = 4.0 * std::atan(b) / std::pow(2.0, depth);
    return radius * step * step / 8.0 + 4.0 * kEpsilon * radius * radius / chord +
           16.0 * kEpsilon * (radius + p.UNorm() + q.UNorm());
}

}  // namespace cqsurvey
