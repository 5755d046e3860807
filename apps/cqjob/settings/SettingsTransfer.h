#pragma once

#include <string>

#include "cqjob/Console.h"

namespace cqsurvey::cqjob {

/// The help of "settings import".
[[nodiscard]] std::string SettingsImportHelp();

/// Replaces the settings of `job` by those of the file `path`, all but its identity. Throws Failure
/// when the file cannot be read or is not a settings file of a job, and UsageError when it is the
/// job itself; the job is then unchanged.
void ImportSettings(const std::string& job, const std::string& path);

/// Writes the settings of `job`, byte for byte, to a file or, for "-", to the console's results.
/// Throws Failure when the file exists and `replace` is false, and UsageError when it is the job
/// itself.
void ExportSettings(Console& console, const std::string& job, const std::string& path,
                    bool replace);

}  // namespace cqsurvey::cqjob
