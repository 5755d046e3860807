#include "exchange/dxf/Affine.h"

#include <cmath>
#include <cstddef>

namespace cqsurvey::exchange::dxf {

namespace {

Vec3 Cross(const Vec3& a, const Vec3& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

Vec3 Unit(const Vec3& v) {
    const double length = std::hypot(v.x, v.y, v.z);
    return {v.x / length, v.y / length, v.z / length};
}

}  // namespace

Affine Affine::Scale(double x, double y, double z) {
    Affine map;
    map.m_a = {{{x, 0, 0}, {0, y, 0}, {0, 0, z}}};
    map.m_same = x == 1.0 && y == 1.0 && z == 1.0;
    return map;
}

Affine Affine::Shift(const Vec3& by) {
    Affine map;
    map.m_shift = by;
    map.m_same = by.x == 0.0 && by.y == 0.0 && by.z == 0.0;
    return map;
}

Affine Affine::Turn(double radians) {
    if (radians == 0.0) {
        return {};
    }
    Affine map;
    const double c = std::cos(radians);
    const double s = std::sin(radians);
    map.m_a = {{{c, -s, 0}, {s, c, 0}, {0, 0, 1}}};
    map.m_same = false;
    return map;
}

Affine Affine::FromObject(const Vec3& extrusion) {
    if (extrusion.x == 0.0 && extrusion.y == 0.0 && !(extrusion.z < 0.0)) {
        return {};
    }
    // The format's rule for the x axis: any direction would do, so both sides must choose alike.
    constexpr double kNearAxis = 1.0 / 64.0;
    const Vec3 z = Unit(extrusion);
    const bool near = std::fabs(z.x) < kNearAxis && std::fabs(z.y) < kNearAxis;
    const Vec3 x = Unit(near ? Cross({0, 1, 0}, z) : Cross({0, 0, 1}, z));
    const Vec3 y = Unit(Cross(z, x));
    Affine map;
    map.m_a = {{{x.x, y.x, z.x}, {x.y, y.y, z.y}, {x.z, y.z, z.z}}};
    map.m_same = false;
    return map;
}

Affine Affine::operator*(const Affine& other) const {
    if (m_same) {
        return other;
    }
    if (other.m_same) {
        return *this;
    }
    Affine map;
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) {
            map.m_a[i][j] = m_a[i][0] * other.m_a[0][j] + m_a[i][1] * other.m_a[1][j] +
                            m_a[i][2] * other.m_a[2][j];
        }
    }
    map.m_shift = Point(other.m_shift);
    map.m_same = false;
    return map;
}

Vec3 Affine::Point(const Vec3& at) const {
    if (m_same) {
        return at;
    }
    const Vec3 d = Direction(at);
    return {d.x + m_shift.x, d.y + m_shift.y, d.z + m_shift.z};
}

Vec3 Affine::Direction(const Vec3& d) const {
    if (m_same) {
        return d;
    }
    return {m_a[0][0] * d.x + m_a[0][1] * d.y + m_a[0][2] * d.z,
            m_a[1][0] * d.x + m_a[1][1] * d.y + m_a[1][2] * d.z,
            m_a[2][0] * d.x + m_a[2][1] * d.y + m_a[2][2] * d.z};
}

double Affine::PlanScale() const {
    return std::hypot(m_a[0][0], m_a[1][0]);
}

bool Affine::KeepsCircles() const {
    if (m_same) {
        return true;
    }
    constexpr double kAlike = 1e-9;
    const double x = PlanScale();
    const double y = std::hypot(m_a[0][1], m_a[1][1]);
    const double both = m_a[0][0] * m_a[0][1] + m_a[1][0] * m_a[1][1];
    const double size = std::fmax(x, y);
    return std::fabs(x - y) <= kAlike * size && std::fabs(both) <= kAlike * size * size &&
           std::fabs(m_a[2][0]) <= kAlike * size && std::fabs(m_a[2][1]) <= kAlike * size;
}

}  // namespace cqsurvey::exchange::dxf
