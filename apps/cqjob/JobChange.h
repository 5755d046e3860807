#pragma once

#include <cqsurvey/cqsurvey.h>

#include <optional>
#include <string>

namespace cqsurvey::cqjob {

/// A change of a job in one step. Without Commit nothing is changed.
class JobChange {
 public:
    /// Opens the job at `path`, as OpenToWrite.
    explicit JobChange(const std::string& path);

    [[nodiscard]] CqSurveyDB& GetJob() { return m_db; }

    /// Records the change and closes the job, as CloseChanged.
    void Commit();

 private:
    CqSurveyDB m_db;
    std::optional<CqBatch> m_batch;
};

/// Ends a change of the open job, and closes it. A job that has no identity (CqJobIdentity) gets
/// one: older jobs have none, and the first change of this program is when they do. Call it only
/// when the job was changed.
void CloseChanged(CqSurveyDB& db);

}  // namespace cqsurvey::cqjob
