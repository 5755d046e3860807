#include <limits>

#include "cqsurvey/CqSurveyDB.h"
#include "drawing/GoToEntity.h"
#include "tables/CqCircleTable.h"
#include "tables/CqEntityTable.h"
#include "tables/CqPlineTable.h"

namespace cqsurvey {

int CqSurveyDB::GetEntityBound(CVector& min, CVector& max) {
    if (GetNumCadEntities() == 0) {
        min = CVector();
        max = CVector();
        return 0;
    }
    min = m_vecBoundMin;
    max = m_vecBoundMax;
    return 1;
}

void CqSurveyDB::InitBoundData() {
    constexpr double kLargest = std::numeric_limits<double>::max();
    m_vecBoundMax = CVector(-kLargest, -kLargest);
    m_vecBoundMin = CVector(kLargest, kLargest);
}

void CqSurveyDB::UpdateBound(const CVector& p) {
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

void CqSurveyDB::UpdateBoundData(double n, double e) {
    UpdateBound(CVector(e, n));
}

void CqSurveyDB::UpdateBoundData(double n, double e, double r) {
    UpdateBoundData(n + r, e + r);
    UpdateBoundData(n - r, e - r);
}

int CqSurveyDB::MakeBoundData() {
    const int count = GetNumCadEntities();
    if (count == 0) {
        return 0;
    }
    InitBoundData();
    CqHandle entity = m_entities->GetHead();
    // A damaged chain may run in a circle.
    for (int step = 0; step < count && GoToEntity(*m_entities, entity); ++step) {
        const double n = m_entities->Get<"N">();
        const double e = m_entities->Get<"E">();
        const CqHandle data = m_entities->Get<"ObjectIndex">();
        switch (m_entities->Get<"ObjectType">()) {
            case EntSiPnt:
            case EntText:
            case EntBitmap:
                UpdateBoundData(n, e);
                break;
            case EntPline:
                m_plines->GoTo(data);
                UpdateBound(CVector(m_plines->Get<"minX">(), m_plines->Get<"minY">()));
                UpdateBound(CVector(m_plines->Get<"maxX">(), m_plines->Get<"maxY">()));
                break;
            case EntCircle:
                m_circles->GoTo(data);
                UpdateBoundData(n, e, m_circles->Get<"Radius">());
                break;
            default:
                break;
        }
        entity = m_entities->Get<"NextEntityIndex">();
    }
    return 1;
}

}  // namespace cqsurvey
