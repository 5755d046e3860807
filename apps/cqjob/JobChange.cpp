#include "cqjob/JobChange.h"

namespace cqsurvey::cqjob {

void CloseChanged(CqSurveyDB& db) {
    // Settings that are full cannot hold an identity. That is no reason to call a change failed
    // that was made.
    static_cast<void>(CqJobIdentity(db).Give());
    db.Close();
}

}  // namespace cqsurvey::cqjob
