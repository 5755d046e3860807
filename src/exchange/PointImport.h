#pragma once

#include <cstdint>

#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/exchange/Import.h"
#include "cqsurvey/exchange/ImportReport.h"
#include "cqsurvey/exchange/TextSource.h"
#include "exchange/FieldTextFile.h"
#include "exchange/PointNames.h"

namespace cqsurvey::exchange {

/// Records the points of a file in an open job and reports every line. A name that is too long is
/// cut. A point whose name the job already has is refused, skipped or renamed. The class begins no
/// step of its own, so the caller can undo the whole import.
class PointImport {
 public:
    using Progress = decltype(ImportOptions::progress);

    /// The job and the report must outlive this object. `origin` is the data origin of the points.
    PointImport(CqSurveyDB& db, ImportReport& report, Duplicates duplicates,
                SurveyCoordType origin);

    /// Records every line of `file` that is a point; `source` is the source of `file`. Throws
    /// ExchangeError, with the file and the line, when a point cannot be recorded, when the text
    /// cannot be read, and when the report does not account for every line of the source. Throws
    /// what `progress` throws.
    void Run(FieldTextFile& file, const TextSource& source, const Progress& progress);

 private:
    void Record(const FieldTextLine& line);
    [[nodiscard]] bool IsTaken(const CString& name) const;

    CqSurveyDB& m_db;
    ImportReport& m_report;
    Duplicates m_duplicates;
    SurveyCoordType m_origin;
    PointNames m_names;
};

}  // namespace cqsurvey::exchange
