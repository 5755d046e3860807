#pragma once

#include "gdal/Curve.h"
#include "gdal/write/FeatureFields.h"
#include "gdal/write/Place.h"

namespace cqsurvey::gdal {

/// The circle of a feature: its geometry, or its centre with the radius of its field. A circle that
/// came as straight lines, or that is too small for its arcs, is that of its fields as long as it
/// lies where these say. Throws RecordFailure when it is no circle.
[[nodiscard]] CircleShape ReadCircle(const FeatureFields& fields, const SingleGeometries& singles);

/// The circle with the exact numbers of the fields, where they speak of the same one.
[[nodiscard]] CircleShape Sharpen(CircleShape circle, const FeatureFields& fields);

}  // namespace cqsurvey::gdal
