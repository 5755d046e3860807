#include "cqsurvey/CVector.h"

#include <cmath>
#include <numbers>
#include <numeric>

namespace cqsurvey {

double CVector::UNorm() const noexcept {
    return std::hypot(m_x, m_y);
}

// Let d = q - p, let m be the middle of the chord, and n = (-d.y, d.x), which is as long as the
// chord and points to its left. The centre lies on the line m + h n. Seen from the centre, each
// half of the chord spans half the included angle, so tan(angle / 2) = (|d| / 2) / (h |d|), and
// therefore h = 1 / (2 tan(angle / 2)). For an angle up to pi, h is positive and the centre on the
// left, as it must be: whoever walks along a circle counter-clockwise has its centre on the left.
// Beyond a half circle the tangent is negative and the centre is on the right. A negative angle
// mirrors all of it.
//
// The tangent keeps its relative accuracy for small angles, and the accuracy that is lost near 2 pi
// is already lost in the given angle. Only at the half circle would the formula be slightly wrong:
// pi is not exactly a double, so the tangent is not infinite.
CVector CVector::CalcArcCenter(const CVector& p, const CVector& q, double angle) noexcept {
    const CVector middle(std::midpoint(p.m_x, q.m_x), std::midpoint(p.m_y, q.m_y));
    const CVector d = q - p;
    const bool coincide = d.m_x == 0.0 && d.m_y == 0.0;
    if (coincide || std::fabs(angle) == std::numbers::pi) {
        return middle;
    }
    const double h = 0.5 / std::tan(0.5 * angle);
    return middle + CVector(-d.m_y * h, d.m_x * h);
}

}  // namespace cqsurvey
