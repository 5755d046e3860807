#include "cqsurvey/CqSurveyDB.h"
#include "drawing/GoToEntity.h"
#include "job/JobStep.h"
#include "tables/CqEntityTable.h"
#include "tables/CqLinkTable.h"
#include "tables/CqPointTable.h"

namespace cqsurvey {

int CqSurveyDB::LinkSiPntAndVertex(CqHandle point, CqHandle vertex) {
    return Atomically(*this, [&] {
        if (!GoToEntity(*m_entities, vertex, EntVertex) ||
            !GoToEntity(*m_entities, point, EntSiPnt) || m_links->FindByVertex(vertex)) {
            return 0;
        }
        m_links->AppendLink(point, vertex);
        return 1;
    });
}

int CqSurveyDB::UnlinkSiPntAndVertex(CqHandle point, CqHandle vertex) {
    if (vertex <= CqEntityTable::kHeader) {
        return 0;
    }
    return Atomically(*this, [&] { return m_links->Unlink(point, vertex); });
}

CqHandle CqSurveyDB::GetCadEntityHandleByPtName(const CString& name) const {
    return GetCadEntityHandleByCoordRecHandle(name.empty() ? 0 : m_points->FindByName(name));
}

CqHandle CqSurveyDB::GetCadEntityHandleByCoordRecHandle(CqHandle handle) const {
    if (handle == 0) {
        return 0;
    }
    m_points->GoTo(handle);
    return m_points->Get<"EntityIndex">();
}

}  // namespace cqsurvey
