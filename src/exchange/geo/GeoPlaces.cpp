#include "exchange/geo/GeoPlaces.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "cqsurvey/CqJobSystem.h"
#include "cqsurvey/Text.h"
#include "cqsurvey/exchange/CoordinateSystem.h"
#include "cqsurvey/exchange/ExchangeError.h"
#include "exchange/drawing/Chords.h"
#include "exchange/drawing/Outcomes.h"
#include "text/NumberText.h"
#include "text/Printable.h"

namespace cqsurvey::exchange {

namespace {

CoordinateOperation FindWay(CqSurveyDB& db) {
    const std::string stated = ToUtf8(CqJobSystem(db).GetSystem());
    if (stated.empty()) {
        throw OptionError(
            "the job states no coordinate system, so nothing tells where on the globe it is");
    }
    const CoordinateSystem own = CoordinateSystem::Find(stated);
    if (own.GetKind() != CoordinateSystem::Kind::Projected) {
        throw OptionError(
            fmt::format("the job's system {} is not a projected one", Printable(own.Describe())));
    }
    return {own, CoordinateSystem::Find("EPSG:4326")};
}

/// A circle as two half ones.
std::vector<PathVertex> CircleOf(const CqCadEntity& entity) {
    bool hasHeight = false;
    const Vec3 centre = PlaceOf(entity, hasHeight);
    const double radius = entity.GetRadius();
    std::vector<PathVertex> path;
    for (const double side : {1.0, -1.0, 1.0}) {
        path.push_back({{centre.x + side * radius, centre.y, centre.z}, 1.0, hasHeight});
    }
    return path;
}

}  // namespace

GeoPlaces::GeoPlaces(CqSurveyDB& db, bool plain, std::optional<LengthUnit> unit, double tolerance)
    : m_plain(plain),
      m_unit(unit),
      m_metres(unit && !plain ? MetresOf(*unit) : 1.0),
      m_tolerance(tolerance) {
    if (!std::isfinite(tolerance) || !(tolerance > 0.0)) {
        throw OptionError("the tolerance must be a positive number");
    }
    if (!plain) {
        m_operation = FindWay(db);
    }
}

GeoShape GeoPlaces::ShapeOf(const CqCadEntity& entity, const std::vector<WalkedVertex>& vertices) {
    GeoShape shape;
    std::vector<PathVertex> path;
    switch (entity.GetType()) {
        case EntPline:
            for (const WalkedVertex& vertex : vertices) {
                path.push_back(vertex.vertex);
            }
            break;
        case EntCircle:
            path = CircleOf(entity);
            break;
        case EntSiPnt:
        case EntText: {
            PathVertex vertex;
            vertex.at = PlaceOf(entity, vertex.hasHeight);
            path.push_back(vertex);
            if (entity.GetType() == EntText &&
                (!std::isfinite(entity.GetHeight()) || !std::isfinite(entity.GetRot()))) {
                shape.fault = kNotFinite;
                return shape;
            }
            break;
        }
        case EntBitmap:
            shape.fault = "its picture is not in the job";
            return shape;
        case EntVertex:
            shape.fault = "it belongs to no polyline";
            return shape;
    }
    const bool line = entity.GetType() == EntPline || entity.GetType() == EntCircle;
    if (line && path.size() < 2) {
        shape.fault = "it has fewer than two vertices";
        return shape;
    }
    if (!std::all_of(path.begin(), path.end(), [](const PathVertex& vertex) {
            return IsFinite(vertex.at) && std::isfinite(vertex.bulge);
        })) {
        shape.fault = kNotFinite;
        return shape;
    }
    if (line) {
        shape.broken = std::any_of(path.begin(), path.end() - 1,
                                   [](const PathVertex& vertex) { return vertex.bulge != 0.0; });
        path = BreakArcs(path, m_tolerance, shape.deviation);
    }
    const auto hasHeight = [](const PathVertex& vertex) { return vertex.hasHeight; };
    shape.hasHeights = std::all_of(path.begin(), path.end(), hasHeight);
    shape.lostHeights = !shape.hasHeights && std::any_of(path.begin(), path.end(), hasHeight);
    for (const PathVertex& vertex : path) {
        Vec3 at = vertex.at;
        if (m_operation && !m_operation->Transform(at.x, at.y)) {
            shape.fault = "there is no way from its position to WGS 84";
            return shape;
        }
        at.z *= m_metres;
        if (!IsFinite(at)) {
            shape.fault = kNotFinite;
            return shape;
        }
        shape.places.push_back(at);
    }
    return shape;
}

void GeoPlaces::Report(DrawingReport& report) const {
    if (m_plain) {
        report.unit = m_unit ? UnitWord(*m_unit) : "unspecified";
        report.Note(
            "positions are the job's own eastings and northings, so the file is not as RFC 7946 "
            "has it");
        return;
    }
    report.unit = "degree";
    if (m_operation && !m_operation->GetName().empty()) {
        report.Note(
            fmt::format("positions went to WGS 84 by: {}{}", Printable(m_operation->GetName()),
                        m_operation->GetAccuracy()
                            ? fmt::format(", {} m", FormatNumber(*m_operation->GetAccuracy()))
                            : ", the accuracy is not known"));
    }
    report.Note(m_unit ? "heights are in metres above what the job measures them from, not above "
                         "the ellipsoid"
                       : "heights are in the job's unit, which is not known, not in metres");
}

std::string GeoPlaces::Text(double value) const {
    constexpr double kDegreeParts = 1e11;
    return FormatNumber(m_plain ? value : std::round(value * kDegreeParts) / kDegreeParts);
}

std::string GeoPlaces::Text(const GeoShape& shape, const Vec3& place) const {
    return Text(place.x) + "," + Text(place.y) +
           (shape.hasHeights ? "," + FormatNumber(place.z) : std::string());
}

}  // namespace cqsurvey::exchange
