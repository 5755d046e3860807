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
/// Until Commit returns nothing of the batch is in the job after a crash; after it everything is.
/// Leaving the scope without Commit undoes the batch in the file and in memory, the current layer,
/// colour, group, view and extents included. One batch a job at a time; `db` must outlive it.
class CQSURVEY_API CqBatch {
 public:
    /// Throws CqSurveyException error::kNoMount when no job is open,
    /// error::kInvalidArgument when a batch is.
    explicit CqBatch(CqSurveyDB& db);
    CqBatch(const CqBatch&) = delete;
    CqBatch& operator=(const CqBatch&) = delete;
    ~CqBatch();

    /// Writes the batch. On failure it throws CqSurveyException, and job and memory are as they
    /// were before the batch began. A second call, and one after the job was closed, throws
    /// error::kInvalidArgument.
    void Commit();

 private:
    Job& m_job;
    std::uint32_t m_number;
};

}  // namespace cqsurvey
