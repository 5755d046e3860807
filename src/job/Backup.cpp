#include "cqsurvey/CqJobCheck.h"
#include "cqsurvey/CqSurveyDB.h"
#include "job/Job.h"
#include "store/StoreExtras.h"
#include "store/ThrowStorageError.h"

namespace cqsurvey {

std::size_t CqSurveyDB::Backup(const CString& path) const {
    if (!IsOpen()) {
        throw CqSurveyException(error::kNoMount, "a copy needs an open job");
    }
    if (m_job->batchOpen) {
        throw CqSurveyException(error::kInvalidArgument,
                                "a job cannot be copied while a batch is open");
    }
    CString draft;
    if (StoreCopyVolume(m_job->mountName, path, draft) == 0) {
        ThrowLastStorageError();
    }
    try {
        CqSurveyDB copy;
        copy.OpenReadOnly(draft);
        const std::size_t faults = CqJobCheck(copy, 0).GetCount();
        copy.Close();
        if (StorePublishVolume(path) == 0) {
            ThrowLastStorageError();
        }
        return faults;
    } catch (...) {
        StoreRemoveDraft(path);
        throw;
    }
}

}  // namespace cqsurvey
