#include "cqsurvey/CqBatch.h"

#include "cqsurvey/CqSurveyDB.h"

namespace cqsurvey {

CqBatch::CqBatch(CqSurveyDB& db) : m_db(db), m_number(db.m_batchNumber + 1) {
    if (!db.IsOpen()) {
        throw CqSurveyException(error::kNoMount, "a batch needs an open job");
    }
    if (db.m_batchOpen) {
        throw CqSurveyException(error::kInvalidArgument, "a batch is open already");
    }
    db.BeginStep();
    ++db.m_stepDepth;
    db.m_batchNumber = m_number;
    db.m_batchOpen = true;
}

CqBatch::~CqBatch() {
    if (m_db.m_batchOpen && m_db.m_batchNumber == m_number) {
        m_db.m_batchOpen = false;
        --m_db.m_stepDepth;
        m_db.RollbackStep();
    }
}

void CqBatch::Commit() {
    if (!m_db.m_batchOpen || m_db.m_batchNumber != m_number) {
        throw CqSurveyException(error::kInvalidArgument, "the batch is over");
    }
    m_db.m_batchOpen = false;
    --m_db.m_stepDepth;
    m_db.CommitStep();
}

}  // namespace cqsurvey
