#include "plan/sheet/Division.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string>

#include "cqsurvey/plan/PlanFailure.h"
#include "plan/Geometry.h"
#include "text/NumberText.h"

namespace cqsurvey::plan {

namespace {

/// How many pieces of the length `piece` cover `length`, where neighbours share `overlap`.
double CountPieces(double length, double piece, double overlap) {
    const double step = piece - overlap;
    return std::max(1.0, std::ceil((length - overlap) / step - 1e-9));
}

/// Calls `add` with the boxes in which something of the item lies, each with a test of whether it
/// also lies in a window that meets the box. A line has a box for each of its segments, so that
/// what it goes around, or past, is not counted.
template <class Add>
void VisitBoxes(const PlanItem& item, const Add& add) {
    const auto* line = std::get_if<PlanLine>(&item);
    if (line == nullptr) {
        add(FindBox(item), [](const Box&) { return true; });
        return;
    }
    PlanLine segment;
    for (std::size_t i = 0; i + 1 < line->vertices.size(); ++i) {
        const PlanVertex& from = line->vertices[i];
        const PlanVertex& to = line->vertices[i + 1];
        segment.vertices.assign({from, to});
        add(FindBox(segment), [&](const Box& window) {
            CVector p = from.at;
            CVector q = to.at;
            return from.bulge != 0.0 || Clip(p, q, window);
        });
    }
}

}  // namespace

Division::Division(const Plan& plan, const Box& extents, const Sheet& sheet) {
    constexpr double kOverlap = 15.0;
    constexpr double kRoom = 6.0;
    const Box window = sheet.GetWindow();
    const double overlap = sheet.ToJob(
        std::min({kOverlap, sheet.GetMap().GetWidth() / 4, sheet.GetMap().GetHeight() / 4}));
    const double room = 2 * sheet.ToJob(std::min({kRoom, sheet.GetMap().GetWidth() / 8,
                                                  sheet.GetMap().GetHeight() / 8}));
    const double columns = CountPieces(extents.GetWidth() + room, window.GetWidth(), overlap);
    const double rows = CountPieces(extents.GetHeight() + room, window.GetHeight(), overlap);
    if (!(columns * rows <= kMostSheets)) {
        throw PlanFailure(error::kInvalidArgument,
                          "at 1 : " + FormatNumber(sheet.GetScale()) + " the plan takes " +
                              FormatNumber(columns * rows, 0) + " sheets, more than " +
                              std::to_string(kMostSheets));
    }
    const double stepX = window.GetWidth() - overlap;
    const double stepY = window.GetHeight() - overlap;
    const CVector middle((extents.minX + extents.maxX) / 2, (extents.minY + extents.maxY) / 2);
    const CVector first(middle.GetX() - stepX * (columns - 1) / 2,
                        middle.GetY() + stepY * (rows - 1) / 2);
    const auto at = [&](double row, double column) {
        return sheet.MoveTo(first + CVector(stepX * column, -stepY * row));
    };
    std::vector<bool> used(static_cast<std::size_t>(columns * rows));
    for (const PlanItem& item : plan.items) {
        VisitBoxes(item, [&](const Box& box, const auto& lies) {
            const auto range = [](double from, double to, double step, double half, double count) {
                const double low = std::ceil((from - half) / step);
                const double high = std::floor((to + half) / step);
                return std::pair(std::clamp(low, 0.0, count), std::clamp(high, -1.0, count - 1));
            };
            const auto [left, right] = range(box.minX - first.GetX(), box.maxX - first.GetX(),
                                             stepX, window.GetWidth() / 2, columns);
            const auto [top, bottom] = range(first.GetY() - box.maxY, first.GetY() - box.minY,
                                             stepY, window.GetHeight() / 2, rows);
            for (double row = top; row <= bottom; ++row) {
                for (double column = left; column <= right; ++column) {
                    const auto place = static_cast<std::size_t>(row * columns + column);
                    used[place] = used[place] || lies(at(row, column).GetWindow());
                }
            }
        });
    }
    for (double row = 0; row < rows; ++row) {
        for (double column = 0; column < columns; ++column) {
            if (used[static_cast<std::size_t>(row * columns + column)]) {
                m_sheets.push_back(at(row, column));
            }
        }
    }
    if (m_sheets.empty()) {
        m_sheets.push_back(sheet);
    }
}

}  // namespace cqsurvey::plan
