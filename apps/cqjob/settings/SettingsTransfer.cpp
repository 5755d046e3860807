#include "cqjob/settings/SettingsTransfer.h"

#include <cqsurvey/Limits.h>
#include <cqsurvey/cqsurvey.h>
#include <fmt/format.h>

#include <filesystem>

#include "cqjob/Failure.h"
#include "cqjob/InputFile.h"
#include "cqjob/JobChange.h"
#include "cqjob/JobFile.h"
#include "cqjob/OutputFile.h"
#include "cqjob/ScratchFolder.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

std::string SettingsImportHelp() {
    return fmt::format(
        "The file must be UTF-8 and have the sections SETTINGS and BACKGROUND with every key that "
        "a\n"
        "new job has, JCoordDivision from {} to {}, EntityColor from {} to {}, Brightness from {}\n"
        "to {} and Contrast from {} to {}. Otherwise the job keeps its settings.\n"
        "The job keeps its own identity in any case. Its length unit, coordinate system and code "
        "table\n"
        "become those of the file.\n"
        "\n"
        "Example:\n"
        "  cqjob settings import site.job office.ini",
        limits::kNoDivision, limits::kHighestDivision, limits::kNoForcedColor,
        limits::kHighestForcedColor, limits::kLowestBrightness, limits::kHighestBrightness,
        limits::kLowestContrast, limits::kHighestContrast);
}

void ImportSettings(const std::string& job, const std::string& path) {
    RequireOtherFile(path, job);
    const CString hostPath = ToJobPath(path);
    if (!IsUtf8(ReadInputFile(path, limits::kSettingsBytes))) {
        throw Failure(path, "is not UTF-8, so no setting was changed");
    }
    JobChange change(job);
    CqSurveyDB& db = change.GetJob();
    CqJobIdentity identity(db);
    const CString own = identity.Get();
    if (db.ImportSettingsFile(hostPath) == 0) {
        throw Failure(job,
                      "{} is not a settings file with every key of a job in its range, so no "
                      "setting was changed; cqjob settings import --help lists the ranges",
                      Printable(path));
    }
    // Settings come from other jobs, and an identity does not.
    if (identity.Set(own) == 0) {
        throw Failure(job, "the settings could not be written");
    }
    change.Commit();
}

void ExportSettings(Console& console, const std::string& job, const std::string& path,
                    bool replace) {
    RequireOtherFile(path, job);
    CqSurveyDB db;
    OpenToRead(db, job);
    OutputFile output(console, path, replace);
    // The library overwrites an existing file, so it writes elsewhere first.
    const ScratchFolder folder(std::filesystem::temp_directory_path() / "cqjob-settings");
    const std::string copy = folder.PathOf("settings");
    if (db.ExportSettingsFile(ToJobPath(copy)) == 0) {
        throw Failure(job, "the settings could not be written to {}", Printable(copy));
    }
    db.Close();
    output.Write(ReadInputFile(copy, limits::kSettingsBytes));
    output.Finish();
}

}  // namespace cqsurvey::cqjob
