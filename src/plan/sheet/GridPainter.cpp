#include "plan/sheet/GridPainter.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <string>

#include "text/NumberText.h"

namespace cqsurvey::plan {

void GridPainter::Draw() {
    // The approximate distance of the lines on paper, in millimetres.
    constexpr double kDistance = 60.0;
    const double step = RoundDistance(m_page.GetSheet().ToJob(kDistance));
    m_columns = FindLines(Axis::East, step);
    m_rows = FindLines(Axis::North, step);
    DrawCrosses();
    if (m_page.GetTitle().IsEmpty()) {
        return;
    }
    m_page.SetColor(m_page.GetInk());
    DrawTicks();
    DrawNumbers(Axis::East, step);
    DrawNumbers(Axis::North, step);
}

std::vector<GridPainter::Line> GridPainter::FindLines(Axis axis, double step) const {
    constexpr double kMostLines = 200.0;
    const Box window = m_page.GetSheet().GetWindow();
    const bool east = axis == Axis::East;
    const double first = std::ceil((east ? window.minX : window.minY) / step);
    const double last = std::floor((east ? window.maxX : window.maxY) / step);
    std::vector<Line> lines;
    // Very far from the origin, adding a step does not change the number.
    if (!(last - first < kMostLines) || !(first + 1.0 > first)) {
        return lines;
    }
    for (double i = first; i <= last; ++i) {
        // Adding 0 removes the sign of a negative zero.
        const double value = i * step + 0.0;
        const CVector at =
            m_page.ToPage(east ? CVector(value, window.minY) : CVector(window.minX, value));
        lines.push_back({east ? at.GetX() : at.GetY(), value});
    }
    return lines;
}

void GridPainter::DrawCrosses() {
    constexpr double kArm = 1.5 * kMillimetre;
    constexpr double kPale = 0.3;
    const Box& map = m_page.GetMap();
    cairo_t* context = m_page.GetContext();
    m_page.SetColor(Mix(m_page.GetInk(), m_page.GetBackground(), kPale));
    m_page.SetLine(0, kThinWidth);
    for (const Line& column : m_columns) {
        for (const Line& row : m_rows) {
            if (column.page - kArm < map.minX || column.page + kArm > map.maxX ||
                row.page - kArm < map.minY || row.page + kArm > map.maxY) {
                continue;
            }
            cairo_move_to(context, column.page - kArm, row.page);
            cairo_line_to(context, column.page + kArm, row.page);
            cairo_move_to(context, column.page, row.page - kArm);
            cairo_line_to(context, column.page, row.page + kArm);
        }
    }
    m_page.Stroke();
}

void GridPainter::DrawTicks() {
    constexpr double kTick = 1.5 * kMillimetre;
    const Box& map = m_page.GetMap();
    cairo_t* context = m_page.GetContext();
    for (const Line& column : m_columns) {
        cairo_move_to(context, column.page, map.maxY);
        cairo_line_to(context, column.page, map.maxY - kTick);
        cairo_move_to(context, column.page, map.minY);
        cairo_line_to(context, column.page, map.minY + kTick);
    }
    for (const Line& row : m_rows) {
        cairo_move_to(context, map.minX, row.page);
        cairo_line_to(context, map.minX + kTick, row.page);
        cairo_move_to(context, map.maxX, row.page);
        cairo_line_to(context, map.maxX - kTick, row.page);
    }
    m_page.Stroke();
}

void GridPainter::DrawNumbers(Axis axis, double step) {
    constexpr double kHeight = 1.5 * kMillimetre;
    constexpr double kOff = 1.2 * kMillimetre;
    constexpr double kApart = 2.0 * kMillimetre;
    const bool east = axis == Axis::East;
    const Box& map = m_page.GetMap();
    cairo_t* context = m_page.GetContext();
    TextPainter& text = m_page.GetText();
    text.SetFont(kHeight);
    const int decimals = std::max(0, static_cast<int>(std::ceil(-std::log10(step) - 1e-9)));
    // Along the side, from its beginning; northings begin at the bottom.
    const double side = east ? map.GetWidth() : map.GetHeight();
    double end = -kApart;
    for (const Line& line : east ? m_columns : m_rows) {
        const std::string number = (east ? "E " : "N ") + FormatNumber(line.value, decimals);
        const double width = text.GetWidth(number);
        const double begin = (east ? line.page - map.minX : map.maxY - line.page) - width / 2;
        if (begin < 0.0 || begin + width > side || begin < end + kApart) {
            continue;
        }
        end = begin + width;
        if (east) {
            text.Write(number, {map.minX + begin, map.maxY + kOff + kHeight});
            text.Write(number, {map.minX + begin, map.minY - kOff});
            continue;
        }
        for (const double x : {map.minX - kOff, map.maxX + kOff + kHeight}) {
            cairo_save(context);
            cairo_translate(context, x, map.maxY - begin);
            cairo_rotate(context, -std::numbers::pi / 2);
            text.Write(number, {0.0, 0.0});
            cairo_restore(context);
        }
    }
}

}  // namespace cqsurvey::plan
