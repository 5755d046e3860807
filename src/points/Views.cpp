#include "cqsurvey/CqSurveyDB.h"
#include "job/JobStep.h"
#include "tables/CqPointTable.h"

namespace cqsurvey {

std::int32_t CqSurveyDB::SetSortCoordSetting(std::uint16_t key, std::uint16_t order,
                                             const COORDFILTER& filter) {
    // A step of its own, though nothing is written: a batch around it takes the view back, too.
    return Atomically(*this, [&] { return m_points->SetSetting(key, order, filter); });
}

std::int32_t CqSurveyDB::GetSortCoordSetting(std::uint16_t& key, std::uint16_t& order,
                                             COORDFILTER& filter) {
    return m_points->GetSetting(key, order, filter);
}

std::int32_t CqSurveyDB::GetSortCoordRecs() {
    return m_points->ViewSize();
}

CqHandle CqSurveyDB::GetSortCoordAt(int index, CqCoordRec& rec) {
    if (index < 0 || index >= m_points->ViewSize()) {
        return 0;
    }
    const CqHandle point = m_points->ViewAt(index);
    CqHandle next = point;
    GetNextCoordRec(next, rec);
    return point;
}

int CqSurveyDB::IsMatchSiPoint(CqHandle entity) const {
    return m_points->IsEntityInView(entity) ? 1 : 0;
}

}  // namespace cqsurvey
