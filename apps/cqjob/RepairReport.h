#pragma once

#include <cstddef>
#include <string>

#include "cqjob/Console.h"

namespace cqsurvey::cqjob {

/// Makes a new job at `out` of what can be saved from the damaged one at `job`, and lists what
/// could not be saved, at most `limit` losses of it. Returns the exit status: 1 when anything was
/// lost. Throws Failure with the path and the reason when no job could be made; nothing is at `out`
/// then that was not there before.
[[nodiscard]] int RepairJob(Console& console, const std::string& job, const std::string& out,
                            bool json, std::size_t limit);

}  // namespace cqsurvey::cqjob
