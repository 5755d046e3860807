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

/// How a SIMA file is to be read.
struct SimaReadOptions {
    /// The code page of the file: 932 is that of Japan.
    int codePage = 932;

    /// The unit of the job, and that of the file when it is not the metre. The lengths of the file
    /// are scaled when the job's unit is known; otherwise they are taken as they are.
    std::optional<LengthUnit> jobUnit;
    std::optional<LengthUnit> fileUnit;

    /// What to do with a point whose name the job already has: Refuse and Skip leave it out, Rename
    /// records it under another name. Then the data origin of the points, and their group as in
    /// ImportOptions.
    Duplicates duplicates = Duplicates::Refuse;
    SurveyCoordType origin{1};
    CString group;

    /// How many bytes of memory may be taken by what is kept of the file: the numbers, names and
    /// places of its points, and its parcels, which are drawn at its end. A device with little
    /// memory may want less.
    std::size_t mostKeptBytes = std::size_t{1} << 30U;

    /// What messages call the job. Empty: they do not name it.
    std::string jobName;

    /// Called after each line with the number of lines, the bytes read, and the size of the file
    /// when it is known. An exception that it throws ends the import.
    std::function<void(std::uint64_t lines, std::uint64_t bytes, std::optional<std::uint64_t> size)>
        progress;
};

/// Reads points and parcels from a file in SIMA's common format, in which Japan's surveying
/// instruments and programs exchange them. Each line is a record, its fields between commas:
///
///     A00,                             points begin
///     A01,1,T-1,-100.250,2000.125,7.5, number, name, X to the north, Y to the east, height
///     A99,                             points end
///     D00,1,12-3,1,                    a parcel begins: number, name
///     B01,1,T-1,                       one of its corners: number and name of a point
///     D99,                             the parcel ends
///
///     exchange::FileSource source("plan.sim");
///     exchange::SimaReader reader(source, {});
///     const exchange::DrawingReport report = reader.Import(db);
///
/// Points become survey points, a parcel a closed polyline whose vertices are tied to them, and its
/// name a text. Every line is accounted for.
class CQSURVEY_EXCHANGE_API SimaReader {
 public:
    /// The source must outlive the reader, and nothing else may read it. Throws OptionError when
    /// the code page is not known.
    SimaReader(TextSource& source, SimaReadOptions options);
    SimaReader(const SimaReader&) = delete;
    SimaReader& operator=(const SimaReader&) = delete;

    /// Records the points and parcels in an open job, in one step. The current layer, colour and
    /// group stay as they were. Call Import once.
    ///
    /// Throws ExchangeError with the line when the file is no SIMA file, is cut off, or has a line
    /// of more than 64 KiB, or keeps too much in memory; CqSurveyException with
    /// error::kInvalidArgument when the job has an open CqBatch, with error::kNoMount when no job
    /// is open; and whatever CqBatch::Commit and `progress` throw. The job is then as it was
    /// before.
    [[nodiscard]] DrawingReport Import(CqSurveyDB& db);

 private:
    TextSource& m_source;
    SimaReadOptions m_options;
};

}  // namespace cqsurvey::exchange
