#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/exchange/CoordinateOperation.h"
#include "cqsurvey/exchange/DrawingReport.h"
#include "cqsurvey/exchange/LengthUnit.h"
#include "exchange/drawing/CurveFitter.h"
#include "exchange/drawing/DrawingWalk.h"

namespace cqsurvey::exchange {

/// What an entity comes to on the globe: one position or a line of them.
struct GeoShape {
    std::vector<Vec3> places;  ///< longitude, latitude, height in metres
    bool hasHeights = false;   ///< otherwise the heights mean nothing
    bool broken = false;       ///< its arcs were broken into lines
    bool lostHeights = false;  ///< some of its vertices have a height, and others have none
    double deviation = 0.0;    ///< in the job's unit
    std::string_view fault{};  ///< why there is no shape; empty when there is one
};

/// Brings the entities of a job to longitudes and latitudes of WGS 84; or leaves them where they
/// are, for a file of plain coordinates.
class GeoPlaces {
 public:
    /// Throws OptionError unless there is a way from the job's system to WGS 84, or `plain` is set.
    GeoPlaces(CqSurveyDB& db, bool plain, std::optional<LengthUnit> unit, double tolerance);

    [[nodiscard]] GeoShape ShapeOf(const CqCadEntity& entity,
                                   const std::vector<WalkedVertex>& vertices);

    /// Tells the report which operation it was, and which unit the heights have.
    void Report(DrawingReport& report) const;

    /// A number of a position as text: degrees with 11 decimals, plain coordinates exactly.
    [[nodiscard]] std::string Text(double value) const;

    /// "longitude,latitude", and the height when the shape has heights.
    [[nodiscard]] std::string Text(const GeoShape& shape, const Vec3& place) const;

 private:
    bool m_plain;
    std::optional<CoordinateOperation> m_operation;
    std::optional<LengthUnit> m_unit;
    double m_metres;
    double m_tolerance;
};

}  // namespace cqsurvey::exchange
