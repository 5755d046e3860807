#include "index/Extents.h"

#include <limits>

namespace cqsurvey {

void Extents::InitBoundData() {
    constexpr double kLargest = std::numeric_limits<double>::max();
    m_vecBoundMax = CVector(-kLargest, -kLargest);
    m_vecBoundMin = CVector(kLargest, kLargest);
}

void Extents::UpdateBound(const CVector& p) {
    if (p.GetX() < m_vecBoundMin.GetX()) {
        m_vecBoundMin.SetX(p.GetX());
    }
    if (p.GetY() < m_vecBoundMin.GetY()) {
        m_vecBoundMin.SetY(p.GetY());
    }
    if (p.GetX() > m_vecBoundMax.GetX()) {
        m_vecBoundMax.SetX(p.GetX());
    }
    if (p.GetY() > m_vecBoundMax.GetY()) {
        m_vecBoundMax.SetY(p.GetY());
    }
}

void Extents::UpdateBoundData(double n, double e) {
    UpdateBound(CVector(e, n));
}

void Extents::UpdateBoundData(double n, double e, double r) {
    UpdateBoundData(n + r, e + r);
    UpdateBoundData(n - r, e - r);
}

bool Extents::Holds(const CVector& p) const {
    return !(p.GetX() < m_vecBoundMin.GetX()) && !(p.GetY() < m_vecBoundMin.GetY()) &&
           !(p.GetX() > m_vecBoundMax.GetX()) && !(p.GetY() > m_vecBoundMax.GetY());
}

void Extents::KeepStep() noexcept {
    m_maxAtStep = m_vecBoundMax;
    m_minAtStep = m_vecBoundMin;
}

void Extents::UndoStep() noexcept {
    m_vecBoundMax = m_maxAtStep;
    m_vecBoundMin = m_minAtStep;
}

}  // namespace cqsurvey
