#include "plan/LabelRoom.h"

#include <cmath>

namespace cqsurvey::plan {

void LabelRoom::MarkLine(const CVector& from, const CVector& to) {
    constexpr double kStep = 1.5 * kMillimetre;
    constexpr std::size_t kMostMarks = 200'000;
    const CVector d = to - from;
    const double steps = std::ceil(d.UNorm() / kStep);
    if (!(steps >= 1.0) || steps > static_cast<double>(kMostMarks - m_marks)) {
        return;
    }
    for (double i = 0.0; i <= steps; ++i) {
        Box mark;
        mark.Add(from + CVector(d.GetX() * i / steps, d.GetY() * i / steps));
        m_lines.Take(mark);
        ++m_marks;
    }
}

}  // namespace cqsurvey::plan
