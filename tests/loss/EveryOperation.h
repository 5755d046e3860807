#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "cqsurvey/CqSurveyDB.h"

namespace cqsurvey {

/// One public operation that changes a job, on the job that FurnishWhole made. `folder` holds the
/// files of WriteImports.
struct ChangingOperation {
    const char* name;
    std::function<void(CqSurveyDB& db, const CString& folder)> run;
};

std::ostream& operator<<(std::ostream& out, const ChangingOperation& operation);

/// Every operation of CqSurveyDB that changes an open job, a batch, and an import.
[[nodiscard]] std::vector<ChangingOperation> EveryOperation();

/// Puts something of everything into a new job.
void FurnishWhole(CqSurveyDB& db, const CString& folder);

/// Writes the files that the operations import.
void WriteImports(const std::string& folder);

}  // namespace cqsurvey
