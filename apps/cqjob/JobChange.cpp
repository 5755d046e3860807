#include "cqjob/JobChange.h"

#include "cqjob/JobFile.h"

namespace cqsurvey::cqjob {

JobChange::JobChange(const std::string& path) {
    OpenToWrite(m_db, path);
    m_batch.emplace(m_db);
}

void JobChange::Commit() {
    m_batch->Commit();
    CloseChanged(m_db);
}

void CloseChanged(CqSurveyDB& db) {
    // Settings that are full cannot hold an identity. That is no reason to call a change failed
    // that was made.
    static_cast<void>(CqJobIdentity(db).Give());
    db.Close();
}

}  // namespace cqsurvey::cqjob
