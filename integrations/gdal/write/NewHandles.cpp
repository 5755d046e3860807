#include "gdal/write/NewHandles.h"

namespace cqsurvey::gdal {

void NewHandles::Set(GIntBig id, CqHandle handle) {
    if (m_noting) {
        m_before.emplace_back(id, Find(id));
    }
    m_handles[id] = handle;
}

std::optional<CqHandle> NewHandles::Find(GIntBig id) const {
    const auto found = m_handles.find(id);
    return found != m_handles.end() ? std::optional(found->second) : std::nullopt;
}

void NewHandles::BeginTransaction() {
    m_before.clear();
    m_noting = true;
}

void NewHandles::KeepTransaction() {
    m_before.clear();
    m_noting = false;
}

void NewHandles::UndoTransaction() {
    for (auto noted = m_before.rbegin(); noted != m_before.rend(); ++noted) {
        const auto& [id, before] = *noted;
        if (before) {
            m_handles[id] = *before;
        } else {
            m_handles.erase(id);
        }
    }
    KeepTransaction();
}

}  // namespace cqsurvey::gdal
