#include "gdal/write/CircleReader.h"

#include <array>
#include <cmath>
#include <limits>
#include <optional>

namespace cqsurvey::gdal {

namespace {

/// The circle of the fields, when the curve is about that.
bool IsStated(const OGRCurve& curve, const FeatureFields& fields, CircleShape& circle) {
    const std::optional<double> easting = fields.Real(FieldRole::Easting);
    const std::optional<double> northing = fields.Real(FieldRole::Northing);
    const std::optional<double> radius = fields.Real(FieldRole::Radius);
    if (!easting || !northing || !radius) {
        return false;
    }
    OGREnvelope box;
    curve.getEnvelope(&box);
    const double close = 1e-6 + 0.02 * std::abs(*radius);
    const auto isClose = [close](double a, double b) { return std::abs(a - b) <= close; };
    OGRPoint start;
    curve.StartPoint(&start);
    circle = {CVector(*easting, *northing),
              start.Is3D() != 0 ? start.getZ() : std::numeric_limits<double>::quiet_NaN(), *radius};
    return isClose((box.MinX + box.MaxX) / 2, *easting) &&
           isClose((box.MinY + box.MaxY) / 2, *northing) &&
           isClose(box.MaxX - box.MinX, 2 * std::abs(*radius)) &&
           isClose(box.MaxY - box.MinY, 2 * std::abs(*radius));
}

}  // namespace

CircleShape ReadCircle(const FeatureFields& fields, const SingleGeometries& singles) {
    CircleShape circle;
    if (singles.curves.size() == 1 && singles.points.empty() &&
        (IsCircle(*singles.curves.front(), circle) ||
         IsStated(*singles.curves.front(), fields, circle))) {
        return Sharpen(circle, fields);
    }
    const std::optional<double> radius = fields.Real(FieldRole::Radius);
    if (singles.points.size() == 1 && singles.curves.empty() && radius) {
        const std::array<double, 3> at = PlaceOf(*singles.points.front(), fields);
        return {CVector(at[0], at[1]), at[2], *radius};
    }
    throw RecordFailure(fields.Describe() + " is no circle");
}

CircleShape Sharpen(CircleShape circle, const FeatureFields& fields) {
    const std::optional<double> easting = fields.Real(FieldRole::Easting);
    const std::optional<double> northing = fields.Real(FieldRole::Northing);
    const std::optional<double> radius = fields.Real(FieldRole::Radius);
    const double close = 1e-6 * (1.0 + circle.radius);
    const auto isClose = [close](double a, double b) { return std::abs(a - b) <= close; };
    if (easting && northing && isClose(*easting, circle.centre.GetX()) &&
        isClose(*northing, circle.centre.GetY())) {
        circle.centre = CVector(*easting, *northing);
    }
    if (radius && isClose(std::abs(*radius), circle.radius)) {
        circle.radius = *radius;
    }
    return circle;
}

}  // namespace cqsurvey::gdal
