#include "exchange/inspect/SamePlaces.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numeric>
#include <tuple>
#include <utility>

#include "text/NumberText.h"

namespace cqsurvey::exchange {

/// The points by cells. A cell is the square with these numbers of its column and row, which are
/// doubles, since no whole number is large enough for all of them.
struct SamePlaces::Cells {
    struct Point {
        double column;
        double row;
        std::uint32_t point;

        [[nodiscard]] bool IsInCellOf(const Point& other) const {
            return column == other.column && row == other.row;
        }
    };

    Cells(const Survey& survey, double tolerance);

    [[nodiscard]] std::size_t Count() const { return starts.size() - 1; }
    [[nodiscard]] const Point& First(std::size_t cell) const { return points[starts[cell]]; }

    /// Sorted by column, row and point.
    std::vector<Point> points;
    /// Where each cell begins among the points, and their end.
    std::vector<std::size_t> starts;
};

SamePlaces::Cells::Cells(const Survey& survey, double tolerance) {
    const double side = tolerance / std::sqrt(2.0);
    points.reserve(survey.points.size());
    for (std::uint32_t i = 0; i < survey.points.size(); ++i) {
        const SurveyedPoint& point = survey.points[i];
        if (Survey::HasPlace(point)) {
            points.push_back(tolerance > 0.0 ? Point{std::floor(point.easting / side),
                                                     std::floor(point.northing / side), i}
                                             : Point{point.easting, point.northing, i});
        }
    }
    std::sort(points.begin(), points.end(), [](const Point& a, const Point& b) {
        return std::tie(a.column, a.row, a.point) < std::tie(b.column, b.row, b.point);
    });
    for (std::size_t i = 0; i < points.size(); ++i) {
        if (i == 0 || !points[i].IsInCellOf(points[i - 1])) {
            starts.push_back(i);
        }
    }
    starts.push_back(points.size());
}

SamePlaces::SamePlaces(const Survey& survey, double tolerance)
    : m_tolerance(tolerance), m_place(survey.points.size()) {
    std::iota(m_place.begin(), m_place.end(), 0U);
    const Cells cells(survey, tolerance);
    for (std::size_t cell = 0; cell < cells.Count(); ++cell) {
        m_firsts.push_back(cells.First(cell).point);
        for (std::size_t i = cells.starts[cell] + 1; i < cells.starts[cell + 1]; ++i) {
            Join(cells.points[i - 1].point, cells.points[i].point);
        }
    }
    if (tolerance > 0.0) {
        JoinNeighbours(survey, cells);
    }
    for (std::uint32_t i = 0; i < m_place.size(); ++i) {
        m_place[i] = Root(i);
    }
}

void SamePlaces::JoinNeighbours(const Survey& survey, const Cells& cells) {
    // Cells that are more than two columns or rows apart are too far apart. Of each column, `next`
    // is the first cell that is not; it only moves forward as the cells go by.
    std::array<std::size_t, 3> next{};
    for (std::size_t a = 0; a < cells.Count(); ++a) {
        const Cells::Point& here = cells.First(a);
        for (std::size_t i = 0; i < next.size(); ++i) {
            const double column = here.column + static_cast<double>(i);
            const double lowest = here.row - 2.0;
            std::size_t& b = next[i];
            while (b < cells.Count() &&
                   (cells.First(b).column < column ||
                    (cells.First(b).column == column && cells.First(b).row < lowest))) {
                ++b;
            }
            for (std::size_t near = b; near < cells.Count() && cells.First(near).column == column &&
                                       cells.First(near).row <= here.row + 2.0;
                 ++near) {
                if (near > a) {
                    JoinCells(survey, cells, a, near);
                }
            }
        }
    }
}

void SamePlaces::JoinCells(const Survey& survey, const Cells& cells, std::size_t a, std::size_t b) {
    // Only so many points of each cell, so that crowded cells do not take the square of their
    // number.
    constexpr std::size_t kCompared = 16;
    const std::size_t endA = std::min(cells.starts[a + 1], cells.starts[a] + kCompared);
    const std::size_t endB = std::min(cells.starts[b + 1], cells.starts[b] + kCompared);
    for (std::size_t i = cells.starts[a]; i < endA; ++i) {
        const SurveyedPoint& p = survey.points[cells.points[i].point];
        for (std::size_t j = cells.starts[b]; j < endB; ++j) {
            const SurveyedPoint& q = survey.points[cells.points[j].point];
            if (std::hypot(p.easting - q.easting, p.northing - q.northing) <= m_tolerance) {
                Join(cells.points[i].point, cells.points[j].point);
                return;
            }
        }
    }
}

std::uint32_t SamePlaces::Root(std::uint32_t point) {
    while (m_place[point] != point) {
        m_place[point] = m_place[m_place[point]];
        point = m_place[point];
    }
    return point;
}

void SamePlaces::Join(std::uint32_t a, std::uint32_t b) {
    a = Root(a);
    b = Root(b);
    m_place[std::max(a, b)] = std::min(a, b);
}

std::vector<std::vector<std::uint32_t>> SamePlaces::GetShared() const {
    std::vector<std::uint32_t> order(m_place.size());
    std::iota(order.begin(), order.end(), 0U);
    std::stable_sort(order.begin(), order.end(),
                     [this](std::uint32_t a, std::uint32_t b) { return m_place[a] < m_place[b]; });
    std::vector<std::vector<std::uint32_t>> shared;
    for (std::size_t i = 0; i < order.size();) {
        std::size_t end = i + 1;
        while (end < order.size() && m_place[order[end]] == m_place[order[i]]) {
            ++end;
        }
        if (end - i > 1) {
            shared.emplace_back(order.begin() + static_cast<std::ptrdiff_t>(i),
                                order.begin() + static_cast<std::ptrdiff_t>(end));
        }
        i = end;
    }
    return shared;
}

void SamePlaces::Report(const Survey& survey, std::vector<InspectionFinding>& findings) const {
    struct Shared {
        double differs;
        std::vector<std::uint32_t> points;
    };
    std::vector<Shared> order;
    for (std::vector<std::uint32_t>& points : GetShared()) {
        double lowest = std::numeric_limits<double>::infinity();
        double highest = -lowest;
        for (const std::uint32_t point : points) {
            if (std::isfinite(survey.points[point].height)) {
                lowest = std::min(lowest, survey.points[point].height);
                highest = std::max(highest, survey.points[point].height);
            }
        }
        order.push_back(
            {highest - lowest > m_tolerance ? highest - lowest : 0.0, std::move(points)});
    }
    std::stable_sort(order.begin(), order.end(),
                     [](const Shared& a, const Shared& b) { return a.differs > b.differs; });
    for (const Shared& shared : order) {
        std::string text = survey.List(shared.points) + " are in the same place";
        if (shared.differs > 0.0) {
            text += fmt::format("; their heights differ by {}", FormatNumber(shared.differs, 3));
        }
        findings.push_back(survey.Find(Oddity::Coincident, std::move(text), shared.points));
    }
}

}  // namespace cqsurvey::exchange
