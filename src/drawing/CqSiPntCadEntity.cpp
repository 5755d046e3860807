#include "cqsurvey/CqSiPntCadEntity.h"

#include <cstddef>

namespace cqsurvey {

CqSiPntCadEntity::~CqSiPntCadEntity() = default;

int CqSiPntCadEntity::SetName(const CString& name) {
    m_name = name;
    return 1;
}

int CqSiPntCadEntity::SetCode(int code) {
    m_code = code;
    return 1;
}

CqHandle CqSiPntCadEntity::GetMcadVertexHandle(int index) const {
    if (index < 0 || static_cast<std::size_t>(index) >= m_vertexHandles.size()) {
        return 0;
    }
    return m_vertexHandles[static_cast<std::size_t>(index)];
}

}  // namespace cqsurvey
