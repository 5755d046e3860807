#include "cqjob/PolylineMeasure.h"

#include <array>
#include <cmath>

namespace cqsurvey::cqjob {

namespace {

CVector PlaceOf(const CqCadEntity& entity) {
    std::array<double, 3> point{};
    entity.GetPoint(point.data());
    return {point[0], point[1]};
}

/// The length of the segment over this chord.
double LengthOf(double chord, double bulge) {
    constexpr double kFlat = 1e-8;
    const double size = std::fabs(bulge);
    // An arc of four times the bulge's angle; its radius follows from the chord.
    return size > kFlat ? chord * (1.0 + size * size) / size * std::atan(size) : chord;
}

}  // namespace

void PolylineMeasure::Add(const CqCadEntity& vertex) {
    if (m_vertices > 0) {
        m_length += LengthOf((PlaceOf(vertex) - PlaceOf(m_last)).UNorm(), m_last.GetBulge());
        m_last.UpdateExtent(&m_line, &vertex);
    }
    m_line.UpdateBound(PlaceOf(vertex));
    ++m_vertices;
    std::array<double, 3> point{};
    vertex.GetPoint(point.data());
    m_last.SetPoint(point.data());
    m_last.SetBulge(vertex.GetBulge());
}

Extents PolylineMeasure::GetExtents() const {
    Extents extents;
    m_line.GetBound(extents.min, extents.max);
    return extents;
}

}  // namespace cqsurvey::cqjob
