#include "exchange/drawing/ImagePlace.h"

#include <cmath>
#include <numbers>

namespace cqsurvey::exchange {

std::array<Vec3, 4> CornersOf(const CqImagePlace& place) {
    const double c = std::cos(place.rotation * std::numbers::pi / 180.0);
    const double s = std::sin(place.rotation * std::numbers::pi / 180.0);
    const auto corner = [&](double along, double up) {
        return Vec3{place.east + (c * along * place.width - s * up * place.height) / 2,
                    place.north + (s * along * place.width + c * up * place.height) / 2, 0.0};
    };
    return {corner(-1, -1), corner(1, -1), corner(1, 1), corner(-1, 1)};
}

}  // namespace cqsurvey::exchange
