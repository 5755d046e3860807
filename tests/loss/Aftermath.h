#pragma once

#include <set>
#include <string>

#include "loss/Workload.h"

namespace cqsurvey {

/// What a look at a folder of jobs after an accident found.
struct Aftermath {
    bool ahead = false;    ///< the step under way was there, whole
    bool halfway = false;  ///< a change was left to be undone
    bool draft = false;    ///< half a new job was left
};

/// Opens the jobs of a folder on which a workload was done until the accident, and fails the test
/// unless they hold all that was reported, and all or nothing of the step under way; unless
/// CqJobCheck finds nothing; and unless one file is left of each job and nothing else. `work` has
/// done the reported steps; afterwards it is where the folder is.
[[nodiscard]] Aftermath LookAtFolder(const std::string& folder, Workload& work);

/// The names in a folder.
[[nodiscard]] std::set<std::string> NamesInFolder(const std::string& folder);

}  // namespace cqsurvey
