#include "cqsurvey/CqVertexCadEntity.h"

#include <array>
#include <cmath>
#include <utility>

#include "cqsurvey/CVector.h"

namespace cqsurvey {

namespace {

/// A flatter arc counts as straight.
constexpr double kFlatBulge = 1e-8;

CVector PlanPoint(const CqCadEntity& entity) {
    std::array<double, 3> point;
    entity.GetPoint(point.data());
    return {point[0], point[1]};
}

/// The quadrant of v, 0 to 3 counter-clockwise. The positive x axis belongs to quadrant 3.
int Quadrant(const CVector& v) {
    if (v.GetX() > 0.0) {
        return v.GetY() > 0.0 ? 0 : 3;
    }
    return v.GetY() > 0.0 ? 1 : 2;
}

}  // namespace

CqVertexCadEntity::~CqVertexCadEntity() = default;

int CqVertexCadEntity::SetBulge(double bulge) {
    m_bulge = bulge;
    return 1;
}

void CqVertexCadEntity::UpdateExtent(CqCadEntity* pline, const CqCadEntity* nextVertex) {
    CVector p = PlanPoint(*this);
    pline->UpdateBound(p);
    if (!(std::fabs(m_bulge) > kFlatBulge) || nextVertex == nullptr) {
        return;
    }
    CVector q = PlanPoint(*nextVertex);
    const CVector c = CVector::CalcArcCenter(p, q, 4.0 * std::atan(m_bulge));
    if (m_bulge < 0.0) {
        std::swap(p, q);
    }
    const CVector a = p - c;
    const CVector b = q - c;
    const double r = a.UNorm();

    // The arc now runs counter-clockwise from a to b. Whenever it enters a quadrant, it passes the
    // extreme point of the circle on the axis between the two.
    const int start = Quadrant(a);
    int end = Quadrant(b);
    if (end < start) {
        end += 4;
    }
    if (std::fabs(m_bulge) > 1.0 && end == start) {
        end += 4;
    }
    const std::array<CVector, 4> extremes{CVector(r, 0.0), CVector(0.0, r), CVector(-r, 0.0),
                                          CVector(0.0, -r)};
    for (int i = start + 1; i <= end; ++i) {
        pline->UpdateBound(c + extremes[static_cast<std::size_t>(i % 4)]);
    }
}

}  // namespace cqsurvey
