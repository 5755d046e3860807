#pragma once

#include <cstdint>
#include <string>

#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/exchange/Import.h"
#include "cqsurvey/exchange/ImportReport.h"
#include "cqsurvey/exchange/TextSource.h"
#include "exchange/FieldTextFile.h"
#include "exchange/PointNames.h"
#include "exchange/PointPlaces.h"
#include "exchange/systems/PointProjection.h"

namespace cqsurvey::exchange {

/// Records the points of a file in an open job and reports every line. A name that is too long is
/// cut. What becomes of a point whose name the job already has, the options say. The class begins
/// no step of its own, so the caller can undo the whole import.
class PointImport {
 public:
    /// The job, the report, the options and the projection must outlive this object. `projection`
    /// may be null. Throws ExchangeError when the group of the options cannot be added.
    PointImport(CqSurveyDB& db, ImportReport& report, const ImportOptions& options,
                PointProjection* projection = nullptr);

    /// Records every line of `file` that is a point; `source` is the source of `file`. Throws
    /// ExchangeError, with the file and the line, when a point cannot be recorded, when the text
    /// cannot be read, and when the report does not account for every line of the source. Throws
    /// what the options' progress throws.
    void Run(FieldTextFile& file, const TextSource& source);

    /// True when the lines that were points look like latitudes and longitudes: all lie where these
    /// do, and most are written with five decimals or more.
    [[nodiscard]] bool LooksLikeDegrees() const;

 private:
    /// Records one line that is a point.
    void Take(const FieldTextLine& line);
    /// Does what the options say about a point whose name the job has. False: record it, under
    /// `point.name`, which is then another one.
    bool TakeRepeated(const FieldTextLine& line, ImportedPoint& point, const std::string& cut);
    void Update(CqHandle handle, const FieldTextLine& line, ImportedPoint& point);
    void Record(const FieldTextLine& line, const ImportedPoint& point);
    void Describe(CqHandle handle, const CString& description);
    void Refuse(const FieldTextLine& line, const std::string& reason, const std::string& cause);
    [[nodiscard]] bool IsTaken(const CString& name) const;

    CqSurveyDB& m_db;
    ImportReport& m_report;
    const ImportOptions& m_options;
    PointProjection* m_projection;
    PointNames m_names;
    PointPlaces m_places;
    std::uint64_t m_points = 0;
    std::uint64_t m_fine = 0;
    bool m_inDegrees = true;  // every point so far lies where latitudes and longitudes do
};

}  // namespace cqsurvey::exchange
