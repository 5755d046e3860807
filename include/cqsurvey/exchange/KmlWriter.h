#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "cqsurvey/exchange/DrawingReport.h"
#include "cqsurvey/exchange/Export.h"
#include "cqsurvey/exchange/LengthUnit.h"

namespace cqsurvey {
class CqSurveyDB;
}

namespace cqsurvey::exchange {

/// How a job is to be written as a KML file.
struct KmlWriteOptions {
    /// The job's unit; heights are written in metres. Without it, they are written as they are.
    std::optional<LengthUnit> unit = std::nullopt;
    /// What the file calls the job.
    std::string project = "job";
    /// How far the lines may be from an arc that is broken, in the job's unit; positive.
    double tolerance = 0.001;
    /// Called with the number of entities read. An exception that it throws ends the writing.
    std::function<void(std::size_t entities)> progress = nullptr;
};

/// Writes the points and the drawing of a job as a KML file of version 2.2: positions are
/// longitudes and latitudes of WGS 84, in degrees with 11 decimals.
///
///     exchange::KmlWriter writer(db, {}, [&](std::string_view bytes) { file << bytes; });
///     const exchange::DrawingReport report = writer.Write();
///
/// Each layer is a folder. Points and texts are placemarks with a Point, polylines and circles with
/// a LineString, in their colours. Heights are written, but what is drawn lies on the ground.
class CQSURVEY_EXCHANGE_API KmlWriter {
 public:
    using Sink = std::function<void(std::string_view bytes)>;

    /// The open job must outlive the writer. Throws OptionError when the tolerance is not a
    /// positive number, and when the job states no system from which there is a way to WGS 84.
    KmlWriter(CqSurveyDB& db, KmlWriteOptions options, Sink sink);
    KmlWriter(const KmlWriter&) = delete;
    KmlWriter& operator=(const KmlWriter&) = delete;

    /// Hands the whole file to the sink, piece by piece. Throws ExchangeError when not every entity
    /// of the job can be reached, and whatever the sink and `progress` throw. Call it once.
    [[nodiscard]] DrawingReport Write();

 private:
    CqSurveyDB& m_db;
    KmlWriteOptions m_options;
    Sink m_sink;
};

}  // namespace cqsurvey::exchange
