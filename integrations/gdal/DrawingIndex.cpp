#include "gdal/DrawingIndex.h"

namespace cqsurvey::gdal {

void DrawingIndex::Make(const CqSurveyDB& db) {
    for (std::vector<CqHandle>& handles : m_handles) {
        handles.clear();
    }
    for (const CqCadEntityPtr& entity : Entities(db)) {
        m_handles.at(static_cast<std::size_t>(entity->GetType())).push_back(entity->GetHandle());
    }
}

CqCadEntityPtr ReadEntity(const CqSurveyDB& db, CqHandle handle, EntType type) {
    CqCadEntity* read = nullptr;
    try {
        if (db.GetNextCadEntity(handle, read) == 0) {
            return nullptr;
        }
    } catch (const CqSurveyException& failure) {
        // The record was deleted.
        if (failure.m_code == error::kNoRecord) {
            return nullptr;
        }
        throw;
    }
    CqCadEntityPtr entity(read);
    return entity->GetType() == type ? std::move(entity) : nullptr;
}

}  // namespace cqsurvey::gdal
