#include "cqjob/settings/SettingsTransfer.h"

#include <cqsurvey/Limits.h>
#include <cqsurvey/cqsurvey.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "cqjob/Failure.h"
#include "cqjob/InputFile.h"
#include "cqjob/JobChange.h"
#include "cqjob/JobFile.h"
#include "cqjob/OutputFile.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

namespace {

/// A new folder among the system's temporary files. It is removed with everything in it.
class TemporaryFolder {
 public:
    TemporaryFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "cqjob-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            throw Failure(Printable(pattern) + ": " + std::generic_category().message(errno));
        }
        m_path = pattern;
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    [[nodiscard]] std::string GetPath(const char* name) const { return m_path + "/" + name; }

 private:
    std::string m_path;
};

}  // namespace

void ImportSettings(const std::string& job, const std::string& path) {
    RequireOtherFile(path, job);
    const CString hostPath = ToJobPath(path);
    if (!IsUtf8(ReadInputFile(path, limits::kSettingsBytes))) {
        throw Failure(Printable(path) + ": is not UTF-8, so no setting was changed");
    }
    CqSurveyDB db;
    OpenToWrite(db, job);
    CqJobIdentity identity(db);
    const CString own = identity.Get();
    CqBatch batch(db);
    if (db.ImportSettingsFile(hostPath) == 0) {
        throw Failure(
            fmt::format("{}: {} is not a settings file with every key of a job in its range, so no "
                        "setting was changed; cqjob settings import --help lists the ranges",
                        Printable(job), Printable(path)));
    }
    // Settings come from other jobs, and an identity does not.
    if (identity.Set(own) == 0) {
        throw Failure(Printable(job) + ": the settings could not be written");
    }
    batch.Commit();
    CloseChanged(db);
}

void ExportSettings(Console& console, const std::string& job, const std::string& path,
                    bool replace) {
    RequireOtherFile(path, job);
    CqSurveyDB db;
    OpenToRead(db, job);
    OutputFile output(console, path, replace);
    // The library overwrites an existing file, so it writes elsewhere first.
    const TemporaryFolder folder;
    const std::string copy = folder.GetPath("settings");
    if (db.ExportSettingsFile(ToJobPath(copy)) == 0) {
        throw Failure(fmt::format("{}: the settings could not be written to {}", Printable(job),
                                  Printable(copy)));
    }
    db.Close();
    output.Write(ReadInputFile(copy, limits::kSettingsBytes));
    output.Finish();
}

}  // namespace cqsurvey::cqjob
