#include "cqsurvey/CqSurveyDB.h"
#include "job/Job.h"
#include "job/JobStep.h"

namespace cqsurvey {

int CqSurveyDB::LinkSiPntAndVertex(CqHandle point, CqHandle vertex) {
    Job& job = *m_job;
    return Atomically(job, [&] {
        if (job.entities.FindEntity(vertex, EntVertex) == nullptr ||
            job.entities.FindEntity(point, EntSiPnt) == nullptr ||
            job.linkIndex.FindByVertex(vertex) != 0) {
            return 0;
        }
        job.linkIndex.AppendLink(point, vertex);
        return 1;
    });
}

int CqSurveyDB::UnlinkSiPntAndVertex(CqHandle point, CqHandle vertex) {
    if (vertex <= CqEntityTable::kHeader) {
        return 0;
    }
    return Atomically(*m_job, [&] { return m_job->linkIndex.Unlink(point, vertex); });
}

CqHandle CqSurveyDB::GetCadEntityHandleByPtName(const CString& name) const {
    return GetCadEntityHandleByCoordRecHandle(m_job->pointIndex.FindByName(name));
}

CqHandle CqSurveyDB::GetCadEntityHandleByCoordRecHandle(CqHandle handle) const {
    return handle == 0 ? 0 : m_job->points.GetAt<"EntityIndex">(handle);
}

}  // namespace cqsurvey
