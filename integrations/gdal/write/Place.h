#pragma once

#include <ogr_geometry.h>

#include <array>
#include <vector>

#include "gdal/Curve.h"
#include "gdal/write/FeatureFields.h"

namespace cqsurvey::gdal {

/// The single geometries of a geometry: points, curves and the rings of surfaces, in their order.
/// Throws RecordFailure for one that a job has no place for.
struct SingleGeometries {
    std::vector<const OGRPoint*> points;
    std::vector<const OGRCurve*> curves;
};
[[nodiscard]] SingleGeometries Split(const FeatureFields& fields);

/// Easting, northing and height of a point. The height is that of the field when the point has
/// none, and not-a-number when there is neither. Throws RecordFailure when the point is not at a
/// place.
[[nodiscard]] std::array<double, 3> PlaceOf(const OGRPoint& point, const FeatureFields& fields);

/// The vertices of a line. Throws RecordFailure when they are less than two, or one is not at a
/// place.
[[nodiscard]] std::vector<ArcVertex> RequireCourse(const OGRCurve& curve,
                                                   const FeatureFields& fields);

/// The only point of a feature. Throws RecordFailure when it has none, or something else.
[[nodiscard]] std::array<double, 3> OnlyPlaceOf(const FeatureFields& fields);

}  // namespace cqsurvey::gdal
