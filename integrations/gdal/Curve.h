#pragma once

#include <ogr_geometry.h>

#include <memory>
#include <span>
#include <vector>

#include <cqsurvey/CVector.h>

namespace cqsurvey::gdal {

/// A vertex of a polyline with the bulge of the segment that starts at it, as in CqSurveyDB.
struct ArcVertex {
    CVector at;
    double height = 0.0;
    double bulge = 0.0;
};

/// A polyline as a compound curve: straight stretches are line strings, arcs are circular strings,
/// each through the middle of the arc. Null when there are less than two vertices, or one is not
/// at a place. A bulge that is not a number, or too large for the arc to have a middle, is taken
/// as 0.
[[nodiscard]] std::unique_ptr<OGRCompoundCurve> MakeCurve(std::span<const ArcVertex> vertices);

/// A circle as two half circles. Null when it is not at a place.
[[nodiscard]] std::unique_ptr<OGRCircularString> MakeCircle(const CVector& centre, double height,
                                                            double radius);

/// The vertices of a curve, its arcs as bulges. A straight stretch keeps its coordinates to the
/// bit. A curve without heights gets not-a-numbers.
[[nodiscard]] std::vector<ArcVertex> VerticesOf(const OGRCurve& curve);

struct CircleShape {
    CVector centre;
    double height = 0.0;
    double radius = 0.0;
};
/// True when a closed curve is nothing but arcs of one circle, once around, to about the last
/// digit of its coordinates.
[[nodiscard]] bool IsCircle(const OGRCurve& curve, CircleShape& circle);

}  // namespace cqsurvey::gdal
