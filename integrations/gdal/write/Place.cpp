#include "gdal/write/Place.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace cqsurvey::gdal {

namespace {

void Add(const OGRGeometry& geometry, const FeatureFields& fields, SingleGeometries& singles) {
    if (geometry.IsEmpty() != 0) {
        return;
    }
    const OGRwkbGeometryType type = wkbFlatten(geometry.getGeometryType());
    if (type == wkbPoint) {
        singles.points.push_back(geometry.toPoint());
    } else if (OGR_GT_IsCurve(type) != 0) {
        singles.curves.push_back(geometry.toCurve());
    } else if (OGR_GT_IsSubClassOf(type, wkbCurvePolygon) != 0) {
        const OGRCurvePolygon* polygon = geometry.toCurvePolygon();
        singles.curves.push_back(polygon->getExteriorRingCurve());
        for (int i = 0; i < polygon->getNumInteriorRings(); ++i) {
            singles.curves.push_back(polygon->getInteriorRingCurve(i));
        }
    } else if (OGR_GT_IsSubClassOf(type, wkbGeometryCollection) != 0) {
        const OGRGeometryCollection* collection = geometry.toGeometryCollection();
        for (int i = 0; i < collection->getNumGeometries(); ++i) {
            Add(*collection->getGeometryRef(i), fields, singles);
        }
    } else if (OGR_GT_IsSubClassOf(type, wkbPolyhedralSurface) != 0) {
        const OGRPolyhedralSurface* surface = geometry.toPolyhedralSurface();
        for (int i = 0; i < surface->getNumGeometries(); ++i) {
            Add(*surface->getGeometryRef(i), fields, singles);
        }
    } else {
        throw RecordFailure(fields.Describe() + ": a job has no place for a " +
                            geometry.getGeometryName());
    }
}

}  // namespace

SingleGeometries Split(const FeatureFields& fields) {
    SingleGeometries singles;
    if (const OGRGeometry* geometry = fields.Feature().GetGeometryRef()) {
        Add(*geometry, fields, singles);
    }
    return singles;
}

std::array<double, 3> PlaceOf(const OGRPoint& point, const FeatureFields& fields) {
    if (!std::isfinite(point.getX()) || !std::isfinite(point.getY())) {
        throw RecordFailure(fields.Describe() + " is not at a place");
    }
    const double height =
        point.Is3D() != 0
            ? point.getZ()
            : fields.Real(FieldRole::Height).value_or(std::numeric_limits<double>::quiet_NaN());
    return {point.getX(), point.getY(), height};
}

std::vector<ArcVertex> RequireCourse(const OGRCurve& curve, const FeatureFields& fields) {
    std::vector<ArcVertex> vertices = VerticesOf(curve);
    if (vertices.size() < 2) {
        throw RecordFailure(fields.Describe() + ": a line needs two vertices");
    }
    if (!std::all_of(vertices.begin(), vertices.end(), [](const ArcVertex& vertex) {
            return std::isfinite(vertex.at.GetX()) && std::isfinite(vertex.at.GetY());
        })) {
        throw RecordFailure(fields.Describe() + " has a vertex that is not at a place");
    }
    return vertices;
}

std::array<double, 3> OnlyPlaceOf(const FeatureFields& fields) {
    const SingleGeometries singles = Split(fields);
    if (singles.points.size() != 1 || !singles.curves.empty()) {
        throw RecordFailure(fields.Describe() + " is not one point");
    }
    return PlaceOf(*singles.points.front(), fields);
}

}  // namespace cqsurvey::gdal
