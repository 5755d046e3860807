#pragma once

#include "cqsurvey/Export.h"

namespace cqsurvey {

/// A position or a difference of two in the plan: x is the easting, y the northing.
class CQSURVEY_API CVector {
 public:
    constexpr CVector() noexcept = default;
    constexpr CVector(double x, double y) noexcept : m_x(x), m_y(y) {}

    [[nodiscard]] constexpr double GetX() const noexcept { return m_x; }
    [[nodiscard]] constexpr double GetY() const noexcept { return m_y; }
    constexpr void SetX(double x) noexcept { m_x = x; }
    constexpr void SetY(double y) noexcept { m_y = y; }

    [[nodiscard]] constexpr CVector operator+(const CVector& other) const noexcept {
        return {m_x + other.m_x, m_y + other.m_y};
    }
    [[nodiscard]] constexpr CVector operator-(const CVector& other) const noexcept {
        return {m_x - other.m_x, m_y - other.m_y};
    }

    /// The length. Intermediate results neither overflow nor underflow.
    [[nodiscard]] double UNorm() const noexcept;

    /// The centre of the arc that runs from p to q through the included angle, in radians. A
    /// positive angle runs counter-clockwise, so the arc lies to the right of its chord. Returns p
    /// when the points coincide, and a centre that is not finite for an angle of 0, whose arc is a
    /// straight line.
    [[nodiscard]] static CVector CalcArcCenter(const CVector& p, const CVector& q,
                                               double angle) noexcept;

 private:
    double m_x = 0.0;
    double m_y = 0.0;
};

}  // namespace cqsurvey
