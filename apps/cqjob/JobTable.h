#pragma once

#include <string>
#include <vector>

#include "cqjob/Console.h"

namespace cqsurvey::cqjob {

/// Writes a row for each job: what it holds, where, from when to when and in how many bytes, or why
/// it cannot be read. Returns 1 when
/// a job cannot be read, else 0. Throws UsageError for a path that is not UTF-8.
[[nodiscard]] int WriteJobTable(Console& console, const std::vector<std::string>& jobs,
                                bool asJson);

}  // namespace cqsurvey::cqjob
