#pragma once

#include <cqsurvey/cqsurvey.h>

#include <cstdint>

#include "cqjob/Console.h"
#include "cqjob/ImportReport.h"
#include "cqjob/PointFile.h"
#include "cqjob/PointNames.h"
#include "cqjob/TextSource.h"

namespace cqsurvey::cqjob {

/// What is done with a point whose name the job has already.
enum class Duplicates { Refuse, Skip, Rename };

/// Records the points of a file in an open job, inside whatever batch the caller has open, and
/// reports every line.
class PointImport {
 public:
    /// All must outlive it. `origin` is the data origin of the points.
    PointImport(CqSurveyDB& db, ImportReport& report, Duplicates duplicates, int origin);

    /// Records every line of `file` that is a point; `source` is what the file reads. Throws
    /// Failure, with the file and the line, when a point cannot be recorded or the text cannot be
    /// read, when the report does not account for every line of the source, and when the program is
    /// interrupted.
    void Run(PointFile& file, const TextSource& source, Console& console);

 private:
    void Record(const PointLine& line);
    [[nodiscard]] bool IsTaken(const CString& name) const;

    CqSurveyDB& m_db;
    ImportReport& m_report;
    Duplicates m_duplicates;
    SurveyCoordType m_origin;
    PointNames m_names;
};

}  // namespace cqsurvey::cqjob
