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

/// How a job is to be written as a SIMA file.
struct SimaWriteOptions {
    /// The code page of the file: 932 is that of Japan.
    int codePage = 932;
    /// The job's unit; the file is in metres.
    std::optional<LengthUnit> unit = std::nullopt;
    /// What the file calls the work.
    std::string project = "job";
    /// How far the lines may be from an arc that is broken, in the job's unit; positive.
    double tolerance = 0.001;
    /// Called with the number of entities read. An exception that it throws ends the writing.
    std::function<void(std::size_t entities)> progress = nullptr;
};

/// Writes the points of a job and its closed polylines as a file in SIMA's common format (see
/// SimaReader).
///
///     exchange::SimaWriter writer(db, options, [&](std::string_view bytes) { file << bytes; });
///     const exchange::DrawingReport report = writer.Write();
///
/// The corners of a parcel are points of the file. A vertex where no survey point is, and each
/// place where a broken arc bends, becomes a point of the file without a name. A parcel has the
/// name of the text inside it on the layer of parcel numbers; without one, its number.
class CQSURVEY_EXCHANGE_API SimaWriter {
 public:
    using Sink = std::function<void(std::string_view bytes)>;

    /// The open job must outlive the writer. Throws OptionError when the unit is not told, the code
    /// page is not known, or the tolerance is not a positive number.
    SimaWriter(CqSurveyDB& db, SimaWriteOptions options, Sink sink);
    SimaWriter(const SimaWriter&) = delete;
    SimaWriter& operator=(const SimaWriter&) = delete;

    /// Hands the whole file to the sink, piece by piece. Throws ExchangeError when not every entity
    /// of the job can be reached, and whatever the sink and `progress` throw. Call it once.
    [[nodiscard]] DrawingReport Write();

 private:
    CqSurveyDB& m_db;
    SimaWriteOptions m_options;
    Sink m_sink;
};

}  // namespace cqsurvey::exchange
