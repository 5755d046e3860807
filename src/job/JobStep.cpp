#include "job/JobStep.h"

#include "cqsurvey/ErrorCodes.h"
#include "store/Qrfs.h"

namespace cqsurvey {

namespace {

/// After these the medium or the memory is in doubt, or the job cannot be written at all, so
/// nothing of the step is kept.
bool UndoesTheStep(std::int32_t code) {
    return code == error::kOutOfMemory || code == error::kReadWriteFailed ||
           code == error::kVolumeFull || code == error::kDamaged || code == error::kAccessDenied;
}

}  // namespace

// Operations that are const in the exported interface change the job all the same; a CqSurveyDB
// that is itself const cannot have a job open.
JobStep::JobStep(const CqSurveyDB& db)
    : m_db(const_cast<CqSurveyDB&>(db)) {  // NOLINT(cppcoreguidelines-pro-type-const-cast)
    if (m_db.m_stepDepth == 0) {
        m_db.BeginStep();
    }
    ++m_db.m_stepDepth;
}

JobStep::~JobStep() {
    if (!m_ended) {
        Undo(error::kGeneralFailure);
    }
}

void JobStep::Undo(std::int32_t code) noexcept {
    m_ended = true;
    if (--m_db.m_stepDepth == 0) {
        m_db.RollbackStep();
    } else {
        // Half an operation must not become durable with the step around it.
        QrfsSpoilStep(m_db.m_mountName, code);
    }
}

void JobStep::Commit() {
    m_ended = true;
    if (--m_db.m_stepDepth == 0) {
        m_db.CommitStep();
    }
}

void JobStep::EndFailed(std::int32_t code) noexcept {
    if (m_ended) {
        return;
    }
    if (UndoesTheStep(code)) {
        Undo(code);
        return;
    }
    try {
        Commit();
    } catch (...) {
        // Everything is undone then, and the failure that ended the operation is on its way.
    }
}

}  // namespace cqsurvey
