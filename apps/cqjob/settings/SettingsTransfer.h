#pragma once

#include <string>

#include "cqjob/Console.h"

namespace cqsurvey::cqjob {

/// The help of "settings import".
inline constexpr const char* kSettingsImportHelp =
    "The file must be UTF-8 and have the sections SETTINGS and BACKGROUND with every key that a\n"
    "new job has, JCoordDivision from 0 to 19, EntityColor from -1 to 255, Brightness from -255\n"
    "to 255 and Contrast from 0 to 65000. Otherwise the job keeps its settings.\n"
    "The job keeps its own identity in any case. Its length unit, coordinate system and code "
    "table\n"
    "become those of the file.\n"
    "\n"
    "Example:\n"
    "  cqjob settings import site.job office.ini";

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
