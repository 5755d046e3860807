#pragma once

#include <cstdint>

#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/exchange/Import.h"
#include "cqsurvey/exchange/ImportReport.h"
#include "cqsurvey/exchange/TextSource.h"
#include "exchange/FieldTextFile.h"
#include "exchange/PointNames.h"

namespace cqsurvey::exchange {

/// Records the points of a file in an open job and reports every line. The job need not take them:
/// names that are too long are cut, and a name that the job has already is refused, skipped or
/// changed. It makes no step of its own, so that the caller can undo it all.
class PointImport {
 public:
    using Progress = decltype(ImportOptions::progress);

    /// All must outlive it. `origin` is the data origin of the points.
    PointImport(CqSurveyDB& db, ImportReport& report, Duplicates duplicates,
                SurveyCoordType origin);

    /// Records every line of `file` that is a point; `source` is what the file reads. Throws
    /// ExchangeError, with the file and the line, when a point cannot be recorded, when the text
    /// cannot be read, and when the report does not account for every line of the source; and what
    /// `progress` throws.
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
