#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "cqsurvey/CqCoordRec.h"
#include "cqsurvey/Types.h"
#include "cqsurvey/exchange/DrawingReport.h"
#include "cqsurvey/exchange/Export.h"
#include "cqsurvey/exchange/Import.h"
#include "cqsurvey/exchange/LengthUnit.h"
#include "cqsurvey/exchange/TextSource.h"

namespace cqsurvey {
class CqSurveyDB;
}

namespace cqsurvey::exchange {

/// How a LandXML file is to be read.
struct LandXmlReadOptions {
    /// How far a polyline may be from the spiral that it replaces, in the job's unit; positive.
    double tolerance = 0.001;

    /// Take the points of surfaces as survey points without names.
    bool surfacePoints = false;
    /// Take the breaklines, boundaries and contours of surfaces as polylines.
    bool surfaceLines = false;

    /// The unit of the job, and that of the file instead of what the file says. The lengths of the
    /// file are scaled when both units are known; otherwise they are taken as they are.
    std::optional<LengthUnit> jobUnit;
    std::optional<LengthUnit> fileUnit;

    /// Read a file that states another coordinate system than the job. Its coordinates are taken as
    /// they are.
    bool anySystem = false;

    /// What to do with a point whose name the job already has: Refuse and Skip leave it out, Rename
    /// records it under another name. Then the data origin of the points, and the group of those
    /// whose collection has no name, as in ImportOptions.
    Duplicates duplicates = Duplicates::Refuse;
    SurveyCoordType origin{1};
    CString group;

    /// How many bytes of memory the points may take that are kept: those of a collection until it
    /// ends, those that name a point which comes later, and the names and places of all. Then the
    /// same for lines: those of a feature until it is drawn, and from the first feature on that
    /// names a point which comes later, all of them. A device with little memory may want less.
    std::size_t mostPointBytes = std::size_t{1} << 30U;
    std::size_t mostLineBytes = std::size_t{1} << 30U;

    /// What messages call the job. Empty: they do not name it.
    std::string jobName;

    /// Called after each element with the number of elements, the bytes read, and the size of the
    /// file when it is known. An exception that it throws ends the import.
    std::function<void(std::uint64_t elements, std::uint64_t bytes,
                       std::optional<std::uint64_t> size)>
        progress;
};

/// Reads points and lines from a LandXML file of version 1.0, 1.1, 1.2 or 2.0.
///
///     exchange::FileSource source("plan.xml");
///     exchange::LandXmlReader reader(source, {});
///     const exchange::DrawingReport report = reader.Import(db);
///
/// CgPoints become survey points, each collection that has a name a group. PlanFeatures, Alignments
/// and Parcels become polylines with true arcs; spirals become arcs within a tolerance. A vertex
/// that names a point (pntRef) is tied to it, wherever in the file the point stands. The numbers of
/// parcels become texts. What was not taken, or not exactly, is in the report with the reason.
///
/// The file is read as a stream. Kept are the names and places of its points, and those of its
/// lines that wait for a point that comes later.
class CQSURVEY_EXCHANGE_API LandXmlReader {
 public:
    /// The source must outlive the reader, and nothing else may read it. Throws OptionError when
    /// the tolerance is not a positive number.
    LandXmlReader(TextSource& source, LandXmlReadOptions options);
    LandXmlReader(const LandXmlReader&) = delete;
    LandXmlReader& operator=(const LandXmlReader&) = delete;

    /// Records the points and lines in an open job, in one step. A job that is empty and states
    /// neither unit nor system gets those of the file. The current layer, colour and group stay as
    /// they were. Call Import once.
    ///
    /// Throws ExchangeError with the line when the file is no LandXML file, is cut off, or is too
    /// large in one of its parts; OptionError when it states another coordinate system than the
    /// job; CqSurveyException with error::kInvalidArgument when the job has an open CqBatch, with
    /// error::kNoMount when no job is open; and whatever CqBatch::Commit and `progress` throw. The
    /// job is then as it was before.
    [[nodiscard]] DrawingReport Import(CqSurveyDB& db);

 private:
    TextSource& m_source;
    LandXmlReadOptions m_options;
};

}  // namespace cqsurvey::exchange
