#include "cqsurvey/CqBitmapCadEntity.h"

namespace cqsurvey {

CqBitmapCadEntity::~CqBitmapCadEntity() = default;

int CqBitmapCadEntity::SetSize(const CVector& size) {
    m_size = size;
    return 1;
}

int CqBitmapCadEntity::SetResName(const CString& resName) {
    m_resName = resName;
    return 1;
}

}  // namespace cqsurvey
