#pragma once

#include <cstdint>

#include "cqsurvey/Export.h"

namespace cqsurvey {

class CqSurveyDB;
struct Job;

/// Groups any number of operations on one open job into one atomic step:
///
///     CqBatch batch(db);
///     ... any operations of db ...
///     batch.Commit();
///
/// After a crash the job holds nothing of a batch whose Commit had not returned, and all of one
/// whose Commit had. Leaving the scope without Commit undoes the batch in the file and in memory;
/// that includes the current layer, colour and group, the view and the extents. A job has one batch
/// at a time. `db` must outlive the batch.
class CQSURVEY_API CqBatch {
 public:
    /// Throws CqSurveyException with error::kNoMount when no job is open, and with
    /// error::kInvalidArgument when the job already has a batch.
    explicit CqBatch(CqSurveyDB& db);
    CqBatch(const CqBatch&) = delete;
    CqBatch& operator=(const CqBatch&) = delete;
    ~CqBatch();

    /// Writes the batch. When that fails, throws CqSurveyException, and the file and memory are as
    /// they were before the batch began. A second call throws error::kInvalidArgument, and so does
    /// a call after the job was closed.
    void Commit();

 private:
    Job& m_job;
    std::uint32_t m_number;
};

}  // namespace cqsurvey
