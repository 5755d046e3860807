#include "plan/Sheet.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace cqsurvey::plan {

namespace {

/// The margin between the extents and the frame, for symbols and labels.
constexpr double kRoom = 6.0;

/// The largest power of ten that is at most `value`. It is exact even when the logarithm is
/// slightly off.
double PowerOfTen(double value) {
    double power = std::pow(10.0, std::floor(std::log10(value)));
    if (power > value) {
        power /= 10.0;
    } else if (power * 10.0 <= value) {
        power *= 10.0;
    }
    return power;
}

}  // namespace

double RoundScale(double scale) {
    const double power = PowerOfTen(scale);
    for (const double step : {1.0, 1.25, 1.5, 2.0, 2.5, 4.0, 5.0, 7.5}) {
        // A scale that rounding made slightly too large is still that scale.
        if (step * power >= scale * (1.0 - 1e-12)) {
            return step * power;
        }
    }
    return 10.0 * power;
}

double RoundDistance(double distance) {
    const double power = PowerOfTen(distance);
    const double times = distance / power;
    return power * (times >= 5.0 ? 5.0 : times >= 2.0 ? 2.0 : 1.0);
}

Sheet::Sheet(const SheetRequest& request, const Box& extents, double jobScale)
    : m_unit(request.unit) {
    if (!extents.IsEmpty()) {
        m_middle = {std::midpoint(extents.minX, extents.maxX),
                    std::midpoint(extents.minY, extents.maxY)};
    }
    Arrange(request.paper);
    double fill = FillScale(extents);
    if (request.turns) {
        Arrange({request.paper.height, request.paper.width});
        const double turned = FillScale(extents);
        if (turned < fill) {
            fill = turned;
        } else {
            Arrange(request.paper);
        }
    }
    if (request.scale) {
        m_scale = *request.scale;
    } else if (fill > 0.0 && (request.fits || fill > jobScale)) {
        m_scale = RoundScale(fill);
    } else {
        m_scale = jobScale;
    }
    m_holdsAll = extents.IsEmpty() || GetWindow().Holds(extents);
}

void Sheet::Arrange(const PaperSize& paper) {
    constexpr double kMargin = 10.0;
    constexpr double kSmallMargin = 3.0;
    constexpr double kTitle = 22.0;
    constexpr double kGap = 5.0;
    constexpr double kLeastWidth = 100.0;
    constexpr double kLeastHeight = 80.0;
    m_paper = paper;
    m_title = Box();
    if (paper.width < kLeastWidth || paper.height < kLeastHeight) {
        const double margin = std::min(kSmallMargin, std::min(paper.width, paper.height) / 10.0);
        m_map = {margin, margin, paper.width - margin, paper.height - margin};
        return;
    }
    const double bottom = paper.height - kMargin;
    m_title = {kMargin, bottom - kTitle, paper.width - kMargin, bottom};
    m_map = {kMargin, kMargin, paper.width - kMargin, bottom - kTitle - kGap};
}

double Sheet::FillScale(const Box& extents) const {
    const auto fill = [this](double length, double room) {
        const double free = std::max(room - 2 * kRoom, room / 2);
        return length * 1000.0 * m_unit / free;
    };
    return std::max(fill(extents.GetWidth(), m_map.GetWidth()),
                    fill(extents.GetHeight(), m_map.GetHeight()));
}

Box Sheet::GetWindow() const {
    const double x = ToJob(m_map.GetWidth()) / 2.0;
    const double y = ToJob(m_map.GetHeight()) / 2.0;
    return {m_middle.GetX() - x, m_middle.GetY() - y, m_middle.GetX() + x, m_middle.GetY() + y};
}

CVector Sheet::ToPaper(const CVector& place) const {
    // Subtract the middle first: the difference is small, however far from the origin the job is.
    const CVector away = place - m_middle;
    return {std::midpoint(m_map.minX, m_map.maxX) + ToPaper(away.GetX()),
            std::midpoint(m_map.minY, m_map.maxY) - ToPaper(away.GetY())};
}

}  // namespace cqsurvey::plan
