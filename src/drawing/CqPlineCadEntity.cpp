#include "cqsurvey/CqPlineCadEntity.h"

#include <limits>

namespace cqsurvey {

namespace {

constexpr double kLargest = std::numeric_limits<double>::max();

}  // namespace

CqPlineCadEntity::CqPlineCadEntity()
    : m_boundMin(kLargest, kLargest), m_boundMax(-kLargest, -kLargest) {}

CqPlineCadEntity::~CqPlineCadEntity() = default;

int CqPlineCadEntity::SetCode(int code) {
    m_code = code;
    return 1;
}

void CqPlineCadEntity::GetBound(CVector& min, CVector& max) const {
    min = m_boundMin;
    max = m_boundMax;
}

void CqPlineCadEntity::UpdateBound(const CVector& v) {
    if (v.GetX() < m_boundMin.GetX()) {
        m_boundMin.SetX(v.GetX());
    }
    if (v.GetY() < m_boundMin.GetY()) {
        m_boundMin.SetY(v.GetY());
    }
    if (v.GetX() > m_boundMax.GetX()) {
        m_boundMax.SetX(v.GetX());
    }
    if (v.GetY() > m_boundMax.GetY()) {
        m_boundMax.SetY(v.GetY());
    }
}

}  // namespace cqsurvey
