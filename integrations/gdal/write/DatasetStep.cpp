#include "gdal/write/DatasetStep.h"

namespace cqsurvey::gdal {

DatasetStep::DatasetStep(const LayerContext& context) : m_job(context.job) {
    context.Write();
    if (!m_job.HasBatchOf(context.dataset)) {
        m_job.BeginBatch(context.dataset);
        m_own = true;
    }
}

DatasetStep::~DatasetStep() {
    if (m_own) {
        m_job.UndoBatch();
    }
}

void DatasetStep::Keep() {
    m_job.Changed();
    if (m_own) {
        m_own = false;
        m_job.CommitBatch();
    }
}

}  // namespace cqsurvey::gdal
