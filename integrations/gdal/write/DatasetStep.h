#pragma once

#include "gdal/LayerContext.h"

namespace cqsurvey::gdal {

/// One change of a dataset: all of it is kept, or nothing. Within a transaction of the dataset it
/// belongs to that, and a change that fails must have refused before it changed anything. Otherwise
/// it is a batch of its own.
class DatasetStep {
 public:
    /// Opens the job for writing. Throws CqSurveyException as SharedJob::Write and
    /// SharedJob::BeginBatch.
    explicit DatasetStep(const LayerContext& context);
    DatasetStep(const DatasetStep&) = delete;
    DatasetStep& operator=(const DatasetStep&) = delete;
    /// Undoes the change unless it was kept.
    ~DatasetStep();

    void Keep();

 private:
    SharedJob& m_job;
    bool m_own = false;
};

}  // namespace cqsurvey::gdal
