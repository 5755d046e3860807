#include "cqsurvey/CqBitmapCadEntity.h"

namespace cqsurvey {

CqBitmapCadEntity::~CqBitmapCadEntity() = default;

EntType CqBitmapCadEntity::GetType() const {
    return EntBitmap;
}

double CqBitmapCadEntity::GetHeight() const {
    return m_size.GetY();
}

const CVector& CqBitmapCadEntity::GetSize() const {
    return m_size;
}

int CqBitmapCadEntity::SetSize(const CVector& size) {
    m_size = size;
    return 1;
}

const CString& CqBitmapCadEntity::GetResName() const {
    return m_resName;
}

int CqBitmapCadEntity::SetResName(const CString& resName) {
    m_resName = resName;
    return 1;
}

}  // namespace cqsurvey
