#include "cqsurvey/CqCadEntity.h"

#include <algorithm>

namespace cqsurvey {

const CString CqCadEntity::m_sEmpty;
const CVector CqCadEntity::m_vecZero;

CqCadEntity::~CqCadEntity() = default;

void CqCadEntity::GetPoint(double* out) const {
    std::copy(m_point.begin(), m_point.end(), out);
}

int CqCadEntity::SetPoint(const double* in) {
    std::copy_n(in, m_point.size(), m_point.begin());
    return 1;
}

int CqCadEntity::SetLayer(const CString& layer) {
    if (layer.empty()) {
        return 0;
    }
    m_layer = layer;
    return 1;
}

int CqCadEntity::SetColor(int color) {
    m_color = color;
    return 1;
}

}  // namespace cqsurvey
