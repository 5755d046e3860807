#include "job/JobStep.h"

#include "job/Job.h"
#include "store/Failure.h"
#include "store/StoreExtras.h"

namespace cqsurvey {

JobStep::JobStep(Job& job) : m_job(job) {
    if (m_job.stepDepth == 0) {
        m_job.BeginStep();
    }
    ++m_job.stepDepth;
}

JobStep::~JobStep() {
    if (!m_ended) {
        Undo(error::kGeneralFailure);
    }
}

void JobStep::Undo(std::int32_t code) noexcept {
    m_ended = true;
    if (--m_job.stepDepth == 0) {
        m_job.RollbackStep();
    } else {
        // Half an operation must not become durable as part of the step around it.
        StoreSpoilStep(m_job.mountName, code);
    }
}

void JobStep::Commit() {
    m_ended = true;
    if (--m_job.stepDepth == 0) {
        m_job.CommitStep();
    }
}

void JobStep::EndFailed(std::int32_t code) noexcept {
    if (m_ended) {
        return;
    }
    const FailureKind kind = KindOf(code);
    if (kind == FailureKind::Medium || kind == FailureKind::Denied) {
        Undo(code);
        return;
    }
    try {
        Commit();
    } catch (...) {
        // Then everything has been undone. The caller gets the failure that ended the operation,
        // which came first.
    }
}

}  // namespace cqsurvey
