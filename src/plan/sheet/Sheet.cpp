#include "plan/sheet/Sheet.h"

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

/// The fields of the title block and the entries of the legend, in millimetres.
constexpr double kFieldWidth = 45.0;
constexpr double kFieldHeight = 8.0;
constexpr double kEntryWidth = 46.0;
constexpr double kEntryHeight = 5.0;
constexpr double kLegendPad = 1.5;

/// As many columns as there is room for, and rows of them.
Tiles Tile(std::size_t count, double width, double leastWidth, double height) {
    Tiles tiles;
    if (count == 0) {
        return tiles;
    }
    tiles.columns =
        std::min(count, std::max(std::size_t{1}, static_cast<std::size_t>(width / leastWidth)));
    tiles.rows = (count + tiles.columns - 1) / tiles.columns;
    tiles.width = width / static_cast<double>(tiles.columns);
    tiles.height = height;
    return tiles;
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
    Arrange(request.paper, request);
    double fill = FillScale(extents);
    if (request.turns) {
        Arrange({request.paper.height, request.paper.width}, request);
        const double turned = FillScale(extents);
        if (turned < fill) {
            fill = turned;
        } else {
            Arrange(request.paper, request);
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

void Sheet::Arrange(const PaperSize& paper, const SheetRequest& request) {
    constexpr double kMargin = 10.0;
    constexpr double kSmallMargin = 3.0;
    constexpr double kTitle = 22.0;
    constexpr double kGap = 5.0;
    constexpr double kLeastWidth = 100.0;
    constexpr double kLeastHeight = 80.0;
    constexpr double kMostFoot = 0.4;
    m_paper = paper;
    m_title = Box();
    m_legend = Box();
    m_fields = {};
    m_entries = {};
    if (paper.width < kLeastWidth || paper.height < kLeastHeight) {
        const double margin = std::min(kSmallMargin, std::min(paper.width, paper.height) / 10.0);
        m_map = {margin, margin, paper.width - margin, paper.height - margin};
        return;
    }
    const double width = paper.width - 2 * kMargin;
    double foot = kTitle;
    const auto add = [&](std::size_t count, double leastWidth, double height, double around) {
        Tiles tiles = Tile(count, width, leastWidth, height);
        const double more = static_cast<double>(tiles.rows) * height + around;
        if (tiles.rows == 0 || foot + more > kMostFoot * paper.height) {
            return Tiles{};
        }
        foot += more;
        return tiles;
    };
    m_fields = add(request.fields, kFieldWidth, kFieldHeight, 0.0);
    const double title = foot;
    m_entries = add(request.entries, kEntryWidth, kEntryHeight, 2 * kLegendPad);
    const double bottom = paper.height - kMargin;
    m_title = {kMargin, bottom - title, paper.width - kMargin, bottom};
    if (m_entries.rows > 0) {
        m_legend = {kMargin, bottom - foot, paper.width - kMargin, bottom - title};
    }
    m_map = {kMargin, kMargin, paper.width - kMargin, bottom - foot - kGap};
}

Sheet Sheet::MoveTo(const CVector& middle) const {
    Sheet sheet = *this;
    sheet.m_middle = middle;
    return sheet;
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
