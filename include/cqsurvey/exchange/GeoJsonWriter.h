#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string_view>

#include "cqsurvey/exchange/DrawingReport.h"
#include "cqsurvey/exchange/Export.h"
#include "cqsurvey/exchange/LengthUnit.h"

namespace cqsurvey {
class CqSurveyDB;
}

namespace cqsurvey::exchange {

/// How a job is to be written as a GeoJSON file.
struct GeoJsonWriteOptions {
    /// Write the job's own northings and eastings, in its own unit. That is no GeoJSON as RFC 7946
    /// has it, but most programs read it.
    bool plain = false;
    /// The job's unit; heights are written in metres. Without it, they are written as they are.
    std::optional<LengthUnit> unit = std::nullopt;
    /// How far the lines may be from an arc that is broken, in the job's unit; positive.
    double tolerance = 0.001;
    /// Called with the number of entities read. An exception that it throws ends the writing.
    std::function<void(std::size_t entities)> progress = nullptr;
};

/// Writes the points and the drawing of a job as a GeoJSON file (RFC 7946): positions are
/// longitudes and latitudes of WGS 84, in degrees with 11 decimals.
///
///     exchange::GeoJsonWriter writer(db, {}, [&](std::string_view bytes) { file << bytes; });
///     const exchange::DrawingReport report = writer.Write();
///
/// Points and texts are features with a Point, polylines and circles with a LineString. What the
/// job knows of them is in their properties.
class CQSURVEY_EXCHANGE_API GeoJsonWriter {
 public:
    using Sink = std::function<void(std::string_view bytes)>;

    /// The open job must outlive the writer. Throws OptionError when the tolerance is not a
    /// positive number and, unless options.plain is set, when the job states no system from which
    /// there is a way to WGS 84.
    GeoJsonWriter(CqSurveyDB& db, GeoJsonWriteOptions options, Sink sink);
    GeoJsonWriter(const GeoJsonWriter&) = delete;
    GeoJsonWriter& operator=(const GeoJsonWriter&) = delete;

    /// Hands the whole file to the sink, piece by piece. Throws ExchangeError when not every entity
    /// of the job can be reached, and whatever the sink and `progress` throw. Call it once.
    [[nodiscard]] DrawingReport Write();

 private:
    CqSurveyDB& m_db;
    GeoJsonWriteOptions m_options;
    Sink m_sink;
};

}  // namespace cqsurvey::exchange
