#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "cqsurvey/CqCoordRec.h"
#include "cqsurvey/Types.h"
#include "cqsurvey/exchange/ImportReport.h"

namespace cqsurvey::exchange {

/// What is done with a point whose name the job has already.
enum class Duplicates {
    Refuse,  ///< it is refused
    Skip,    ///< it is left out
    Rename   ///< it is recorded under the next free name of P1_2, P1_3 ...
};

/// How the points of a file go into a job.
struct ImportOptions {
    Duplicates duplicates = Duplicates::Refuse;

    /// The data origin of the points.
    SurveyCoordType origin{1};

    /// The group that the points are put into, made when it is not there, at most 19 code units. It
    /// stays the job's current group. Empty: the job's current group.
    CString group;

    /// Nothing is recorded when anything is refused.
    bool strict = false;

    /// What messages call the job; empty: they do not name it. UTF-8 is shown as it is, other bytes
    /// as \x and their number.
    std::string jobName;

    /// Is told each note as it arises. Without it they are kept in the report.
    ImportReport::Listener note;

    /// Is told after each line how many points are recorded, how many bytes are read, and of how
    /// many where that is known. What it throws ends the import, which then leaves the job as it
    /// was.
    std::function<void(std::uint64_t recorded, std::uint64_t bytes,
                       std::optional<std::uint64_t> size)>
        progress;
};

}  // namespace cqsurvey::exchange
