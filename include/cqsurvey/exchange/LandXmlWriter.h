#pragma once

#include <cstddef>
#include <cstdint>
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

/// How a job is to be written as a LandXML file.
struct LandXmlWriteOptions {
    /// The job's unit, which every LandXML file tells.
    std::optional<LengthUnit> unit = std::nullopt;
    /// What the file calls the project.
    std::string project = "job";
    /// When the file is written, in seconds since 1970-01-01 00:00 UTC; without it, now.
    std::optional<std::uint32_t> time = std::nullopt;
    /// Called with the number of entities read. An exception that it throws ends the writing.
    std::function<void(std::size_t entities)> progress = nullptr;
};

/// Writes the points and the drawing of a job as a LandXML file of version 1.2. LandXmlReader reads
/// the same job back, except for what the report says is lost.
///
///     exchange::LandXmlWriter writer(db, options, [&](std::string_view bytes) { file << bytes; });
///     const exchange::DrawingReport report = writer.Write();
///
/// Points are CgPoints, a collection for each group. Polylines, circles and texts are PlanFeatures
/// that are called by their layers. A vertex that is tied to a point where that stands names it
/// (pntRef). What LandXML has no place for, such as colours, is written in Feature elements with
/// the code CQSURVEY.
class CQSURVEY_EXCHANGE_API LandXmlWriter {
 public:
    using Sink = std::function<void(std::string_view bytes)>;

    /// The open job must outlive the writer. Throws OptionError when there is no unit.
    LandXmlWriter(CqSurveyDB& db, LandXmlWriteOptions options, Sink sink);
    LandXmlWriter(const LandXmlWriter&) = delete;
    LandXmlWriter& operator=(const LandXmlWriter&) = delete;

    /// Hands the whole file to the sink, piece by piece. Throws ExchangeError when not every entity
    /// of the job can be reached, and whatever the sink and `progress` throw. Call it once.
    [[nodiscard]] DrawingReport Write();

 private:
    CqSurveyDB& m_db;
    LandXmlWriteOptions m_options;
    Sink m_sink;
};

}  // namespace cqsurvey::exchange
