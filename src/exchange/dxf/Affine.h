#pragma once

#include <array>
#include <numbers>

#include "exchange/drawing/Vec3.h"

namespace cqsurvey::exchange::dxf {

[[nodiscard]] inline double Radians(double degrees) {
    return degrees * std::numbers::pi / 180.0;
}

/// A map of space: scale, rotation, mirroring, shift. Entities are mapped from the coordinates in
/// which they are written to those of the drawing.
class Affine {
 public:
    /// Changes nothing.
    Affine() = default;

    [[nodiscard]] static Affine Scale(double x, double y, double z);
    [[nodiscard]] static Affine Shift(const Vec3& by);
    /// Turns counter-clockwise about the z axis.
    [[nodiscard]] static Affine Turn(double radians);
    /// From the coordinates of an object with this extrusion direction to those of the world.
    [[nodiscard]] static Affine FromObject(const Vec3& extrusion);

    /// First `other`, then this.
    [[nodiscard]] Affine operator*(const Affine& other) const;

    [[nodiscard]] Vec3 Point(const Vec3& at) const;
    /// Maps a difference of two points.
    [[nodiscard]] Vec3 Direction(const Vec3& d) const;

    /// True when it changes nothing at all.
    [[nodiscard]] bool IsSame() const { return m_same; }
    /// True when a circle in the xy plane stays a circle in plan, at one height.
    [[nodiscard]] bool KeepsCircles() const;
    /// True when a counter-clockwise turn becomes a clockwise one.
    [[nodiscard]] bool Mirrors() const { return Determinant() < 0.0; }
    /// The length in plan of a unit of the x axis. With KeepsCircles, of any direction.
    [[nodiscard]] double PlanScale() const;
    [[nodiscard]] double Determinant() const {
        return m_a[0][0] * m_a[1][1] - m_a[0][1] * m_a[1][0];
    }

 private:
    std::array<std::array<double, 3>, 3> m_a{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
    Vec3 m_shift;
    bool m_same = true;  // exact, where a product with 1 and a sum with 0 might lose a sign
};

}  // namespace cqsurvey::exchange::dxf
