#pragma once

#include <string>

namespace cqsurvey {

/// Makes the golden job at `path`: one that holds everything that a job can hold. Host files that
/// it takes in are made in `folder`. The same operations with the same clock every time, so the
/// file is the same on every machine but for the number of the SQLite version that wrote it.
void MakeGoldenJob(const std::string& path, const std::string& folder);

}  // namespace cqsurvey
