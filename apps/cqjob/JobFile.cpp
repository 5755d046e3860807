#include "cqjob/JobFile.h"

#include <fmt/format.h>

#include <filesystem>
#include <system_error>
#include <utility>

#include "cqjob/Failure.h"
#include "platform/System.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

namespace {

/// Runs `step` and turns what the library throws into a Failure that names the job.
template <class Step>
void Named(const std::string& path, const Step& step) {
    try {
        step();
    } catch (const CException& error) {
        throw Failure(path, "{}", Printable(error.what()));
    }
}

/// Removes a file at the end of the scope, unless it was told to keep it.
class Leftover {
 public:
    explicit Leftover(std::filesystem::path path) : m_path(std::move(path)) {}
    Leftover(const Leftover&) = delete;
    Leftover& operator=(const Leftover&) = delete;
    ~Leftover() {
        if (!m_path.empty()) {
            std::error_code ignored;
            std::filesystem::remove(m_path, ignored);
        }
    }
    void Keep() { m_path.clear(); }

 private:
    std::filesystem::path m_path;
};

}  // namespace

CString ToJobPath(const std::string& path) {
    if (!IsUtf8(path)) {
        throw UsageError("the path " + Quoted(path) + " is not UTF-8");
    }
    return FromUtf8(path);
}

bool IsSameFile(const std::string& a, const std::string& b) {
    std::error_code none;
    return std::filesystem::equivalent(a, b, none);
}

void RequireOtherFile(const std::string& file, const std::string& job) {
    if (IsSameFile(file, job)) {
        throw UsageError(Printable(file) + ": is the job itself");
    }
    std::error_code none;
    const std::filesystem::path end = system::EndOfLinks(file);
    const std::filesystem::path jobEnd = std::filesystem::canonical(job, none);
    for (const char* ending : {"-journal", "-wal", "-shm"}) {
        const std::filesystem::path beside = jobEnd.string() + ending;
        const bool sameName = end.filename() == beside.filename() &&
                              IsSameFile(system::FolderOf(end), system::FolderOf(beside));
        if (!none && (sameName || IsSameFile(end, beside))) {
            throw UsageError(Printable(file) +
                             ": has the name of a file that belongs to the job while it is open");
        }
    }
}

void OpenToRead(CqSurveyDB& db, const std::string& path) {
    const CString jobPath = ToJobPath(path);
    Named(path, [&] {
        try {
            db.OpenReadOnly(jobPath);
        } catch (const CqSurveyException& failure) {
            if (failure.m_code != error::kAccessDenied) {
                throw;
            }
            // Opening a job for writing undoes a change that was cut short.
            CqSurveyDB writer;
            writer.Open(jobPath);
            writer.Close();
            db.OpenReadOnly(jobPath);
        }
    });
}

void OpenToWrite(CqSurveyDB& db, const std::string& path) {
    const CString jobPath = ToJobPath(path);
    Named(path, [&] { db.Open(jobPath); });
}

void PutJob(const std::string& path, bool replace, const JobMaker& make) {
    const CString jobPath = ToJobPath(path);
    std::error_code error;
    const std::filesystem::path old = std::filesystem::canonical(path, error);
    const std::filesystem::path folder = std::filesystem::path(path).parent_path();
    std::error_code none;
    if (!folder.empty() && !std::filesystem::exists(folder, none)) {
        throw Failure(path, "there is no folder {}", Quoted(folder.string()));
    }
    if (!replace || error) {
        Named(path, [&] { make(jobPath); });
        return;
    }
    try {
        CqSurveyDB db;
        db.OpenReadOnly(jobPath);
        db.Close();
    } catch (const CException& reason) {
        throw Failure(path, "only a job can be replaced, and this file cannot be opened as one: {}",
                      Printable(reason.what()));
    }
    const std::filesystem::path made =
        old.string() + fmt::format(".new-{}", system::ProcessNumber());
    if (std::filesystem::exists(made, error)) {
        throw Failure(made.string(), "is in the way of the new job");
    }
    Leftover leftover(made);
    Named(path, [&] { make(ToJobPath(made.string())); });
    std::filesystem::rename(made, old, error);
    if (error) {
        throw Failure(path, "{}", error.message());
    }
    leftover.Keep();
}

}  // namespace cqsurvey::cqjob
