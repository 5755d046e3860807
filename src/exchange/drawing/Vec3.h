#pragma once

#include <cmath>

namespace cqsurvey::exchange {

/// A place in space: easting, northing, height.
struct Vec3 {
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;

    friend bool operator==(const Vec3&, const Vec3&) = default;
};

[[nodiscard]] inline bool IsFinite(const Vec3& v) {
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

}  // namespace cqsurvey::exchange
