#pragma once

#include <string>

#include "cqjob/Console.h"

namespace cqsurvey::cqjob {

/// The help of "settings import".
inline constexpr const char* kSettingsImportHelp =
    "The file needs the sections SETTINGS and BACKGROUND with every key that an export of a new\n"
    "job has, JCoordDivision from 0 to 19, EntityColor from -1 to 255, Brightness from -255 to "
    "255\n"
    "and Contrast from 0 to 65000; else the job keeps its settings. It is UTF-8.\n"
    "\n"
    "Example:\n"
    "  cqjob settings import site.job office.ini";

/// Replaces the settings of `job` by those of the host's file `path`. Throws Failure, the job
/// unchanged, when the file cannot be read or is no settings file of a job, and UsageError when it
/// is the job.
void ImportSettings(const std::string& job, const std::string& path);

/// Writes the settings of `job`, byte for byte, into a file or, for "-", to the console's results.
/// Throws Failure when something is there and `replace` is false, and UsageError when it is the
/// job.
void ExportSettings(Console& console, const std::string& job, const std::string& path,
                    bool replace);

}  // namespace cqsurvey::cqjob
