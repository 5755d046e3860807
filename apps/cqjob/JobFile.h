#pragma once

#include <cqsurvey/cqsurvey.h>

#include <functional>
#include <string>

namespace cqsurvey::cqjob {

/// Converts a path of the command line to UTF-16. Throws UsageError when it is not UTF-8.
[[nodiscard]] CString ToJobPath(const std::string& path);

/// True when both paths name the same existing file.
[[nodiscard]] bool IsSameFile(const std::string& a, const std::string& b);

/// Throws UsageError when `file` is the job at `job` itself, or has the name of a file that SQLite
/// keeps beside it ("-journal", "-wal", "-shm"): there it would be taken for a part of the job.
void RequireOtherFile(const std::string& file, const std::string& job);

/// Opens the job at `path` only for reading. Throws Failure with the path and the reason.
void OpenToRead(CqSurveyDB& db, const std::string& path);

/// Opens the job at `path` to change it. Throws Failure with the path and the reason, also when the
/// system does not allow writing the job.
void OpenToWrite(CqSurveyDB& db, const std::string& path);

/// Makes a job at the path that it is given, at which nothing is.
using JobMaker = std::function<void(const CString& path)>;

/// Lets `make` make a job at `path`. Throws Failure when anything exists there; with `replace`,
/// when anything but a job that can be opened exists there. That job stays unchanged until the new
/// one takes its place.
void PutJob(const std::string& path, bool replace, const JobMaker& make);

}  // namespace cqsurvey::cqjob
