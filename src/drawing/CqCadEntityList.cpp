#include "cqsurvey/CqCadEntityList.h"

#include <utility>

namespace cqsurvey {

CqCadEntity* CqCadEntityList::GetAt(std::size_t index) const {
    return index < m_entities.size() ? m_entities[index].get() : nullptr;
}

void CqCadEntityList::AddTail(std::unique_ptr<CqCadEntity> entity) {
    if (entity != nullptr) {
        m_entities.push_back(std::move(entity));
    }
}

}  // namespace cqsurvey
