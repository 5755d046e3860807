#include "cqsurvey/CqBatch.h"

#include "cqsurvey/CqSurveyDB.h"
#include "job/Job.h"

namespace cqsurvey {

CqBatch::CqBatch(CqSurveyDB& db) : m_job(db.GetJob()), m_number(m_job.batchNumber + 1) {
    if (!m_job.IsOpen()) {
        throw CqSurveyException(error::kNoMount, "a batch needs an open job");
    }
    if (m_job.batchOpen) {
        throw CqSurveyException(error::kInvalidArgument, "a batch is already open");
    }
    m_job.BeginStep();
    ++m_job.stepDepth;
    m_job.batchNumber = m_number;
    m_job.batchOpen = true;
}

CqBatch::~CqBatch() {
    // The job may have been closed since, which undid the batch.
    if (m_job.batchOpen && m_job.batchNumber == m_number) {
        m_job.batchOpen = false;
        --m_job.stepDepth;
        m_job.RollbackStep();
    }
}

void CqBatch::Commit() {
    if (!m_job.batchOpen || m_job.batchNumber != m_number) {
        throw CqSurveyException(error::kInvalidArgument, "the batch is over");
    }
    // The batch is over whether the commit succeeds or not: a commit that fails has undone it.
    m_job.batchOpen = false;
    --m_job.stepDepth;
    m_job.CommitStep();
}

}  // namespace cqsurvey
