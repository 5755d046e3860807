#include "cqsurvey/CqSurveyDB.h"
#include "job/Job.h"
#include "job/JobStep.h"

namespace cqsurvey {

std::int32_t CqSurveyDB::SetSortCoordSetting(std::uint16_t key, std::uint16_t order,
                                             const COORDFILTER& filter) {
    // A step of its own although nothing is written, so that undoing a batch restores the view as
    // well.
    return Atomically(*m_job, [&] { return m_job->pointIndex.SetSetting(key, order, filter); });
}

std::int32_t CqSurveyDB::GetSortCoordSetting(std::uint16_t& key, std::uint16_t& order,
                                             COORDFILTER& filter) {
    return m_job->pointIndex.GetSetting(key, order, filter);
}

std::int32_t CqSurveyDB::GetSortCoordRecs() {
    return m_job->pointIndex.ViewSize();
}

CqHandle CqSurveyDB::GetSortCoordAt(int index, CqCoordRec& rec) {
    if (index < 0 || index >= m_job->pointIndex.ViewSize()) {
        return 0;
    }
    const CqHandle point = m_job->pointIndex.ViewAt(index);
    CqHandle next = point;
    GetNextCoordRec(next, rec);
    return point;
}

int CqSurveyDB::IsMatchSiPoint(CqHandle entity) const {
    return m_job->pointIndex.IsEntityInView(entity) ? 1 : 0;
}

}  // namespace cqsurvey
