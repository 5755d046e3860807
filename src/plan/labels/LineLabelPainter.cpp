#include "plan/labels/LineLabelPainter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <variant>
#include <vector>

#include "plan/Wording.h"
#include "plan/labels/LineMeasure.h"
#include "text/NumberText.h"

namespace cqsurvey::plan {

namespace {

// Of the height of the points' labels.
constexpr double kSize = 0.75;
/// Between a line and its number.
constexpr double kOff = 0.45 * kMillimetre;

}  // namespace

LineLabelPainter::LineLabelPainter(Page& page, LabelRoom& room, const Plan& plan,
                                   const PlotOptions& options)
    : m_page(page),
      m_room(room),
      m_plan(plan),
      m_options(options),
      m_height(options.labelHeight * kMillimetre * kSize) {}

void LineLabelPainter::Draw() {
    const LineLabels& labels = m_options.lineLabels;
    if (!labels.lengths && !labels.bearings && !labels.areas) {
        return;
    }
    m_page.GetText().SetHalo(m_page.GetBackground());
    m_page.GetText().SetFont(m_height);
    const Box window = m_page.GetSheet().GetWindow();
    for (const PlanItem& item : m_plan.items) {
        const auto* line = std::get_if<PlanLine>(&item);
        if (line == nullptr || !FindBox(item).Meets(window)) {
            continue;
        }
        m_page.SetColor(m_page.GetColors().OfLetter(line->color));
        if (labels.lengths || labels.bearings) {
            DrawSegments(*line);
        }
        if (labels.areas && line->IsClosed()) {
            DrawArea(*line);
        }
    }
    m_page.GetText().SetHalo(std::nullopt);
}

bool LineLabelPainter::IsFree(const TurnedBox& box) const {
    constexpr double kMargin = 0.12 * kMillimetre;
    const TurnedBox wide{box.At(-kMargin, -kMargin), box.width + 2 * kMargin,
                         box.height + 2 * kMargin, box.angle};
    return m_page.GetMap().Holds(wide.GetBox()) && m_room.HasRoom(wide);
}

void LineLabelPainter::DrawSegments(const PlanLine& line) {
    for (std::size_t i = 0; i + 1 < line.vertices.size(); ++i) {
        const PlanVertex& vertex = line.vertices[i];
        const CVector& next = line.vertices[i + 1].at;
        const CVector from = m_page.ToPage(vertex.at);
        const CVector to = m_page.ToPage(next);
        Box middle;
        middle.Add(CVector((from.GetX() + to.GetX()) / 2, (from.GetY() + to.GetY()) / 2));
        if (!m_page.GetMap().Holds(middle)) {
            continue;
        }
        std::string text;
        if (m_options.lineLabels.bearings && vertex.bulge == 0.0) {
            text = FormatBearing(vertex.at, next, m_plan.angles);
        }
        if (m_options.lineLabels.lengths) {
            text += text.empty() ? "" : "  ";
            text +=
                FormatNumber(MeasureLength(vertex.at, next, vertex.bulge), m_options.lineDecimals);
        }
        // How far the middle of an arc is from its chord, to the right of it.
        const double rise = vertex.bulge * (to - from).UNorm() / 2;
        if (!text.empty() && !WriteAlong(text, from, to, rise)) {
            ++m_lost;
        }
    }
}

bool LineLabelPainter::WriteAlong(const std::string& text, const CVector& from, const CVector& to,
                                  double rise) {
    const CVector d = to - from;
    const double length = d.UNorm();
    // Most segments of dense lines are too short for any number.
    if (length < m_height * 2) {
        return false;
    }
    TextPainter& painter = m_page.GetText();
    const double width = painter.GetWidth(text);
    if (width > length) {
        return false;
    }
    double angle = std::atan2(d.GetY(), d.GetX());
    double above = -rise;
    // Read from below, or from the right.
    constexpr double kQuarter = std::numbers::pi / 2;
    if (angle > kQuarter - 1e-6 || angle <= -kQuarter - 1e-6) {
        angle += angle > 0.0 ? -std::numbers::pi : std::numbers::pi;
        above = rise;
    }
    for (const double along : {0.5, 0.3, 0.7}) {
        for (const double side : {kOff, -kOff - m_height}) {
            const double bow = along == 0.5 ? above : 0.0;
            if (along != 0.5 && rise != 0.0) {
                continue;
            }
            const TurnedBox middle{from + CVector(d.GetX() * along, d.GetY() * along), 0.0, 0.0,
                                   angle};
            const TurnedBox box{middle.At(-width / 2, bow + side), width, m_height, angle};
            if (!IsFree(box)) {
                continue;
            }
            cairo_t* context = m_page.GetContext();
            cairo_save(context);
            cairo_translate(context, box.corner.GetX(), box.corner.GetY());
            cairo_rotate(context, angle);
            painter.Write(text, {0.0, 0.0});
            cairo_restore(context);
            m_room.Take(box);
            return true;
        }
    }
    return false;
}

void LineLabelPainter::DrawArea(const PlanLine& line) {
    const std::string mark = m_plan.unit ? UnitMark(m_plan.unit) + "\xC2\xB2" : std::string();
    const std::string text = FormatNumber(MeasureArea(line), m_options.lineDecimals) + mark;
    Box box;
    for (const PlanVertex& vertex : line.vertices) {
        box.Add(vertex.at);
    }
    // The middle first, then around it.
    constexpr int kGrid = 9;
    std::vector<CVector> places;
    for (int i = 1; i <= kGrid; ++i) {
        for (int k = 1; k <= kGrid; ++k) {
            const CVector place(box.minX + box.GetWidth() * i / (kGrid + 1),
                                box.minY + box.GetHeight() * k / (kGrid + 1));
            if (IsInside(line, place)) {
                places.push_back(place);
            }
        }
    }
    const CVector middle((box.minX + box.maxX) / 2, (box.minY + box.maxY) / 2);
    std::stable_sort(places.begin(), places.end(), [&](const CVector& a, const CVector& b) {
        return (a - middle).UNorm() < (b - middle).UNorm();
    });
    const double width = m_page.GetText().GetWidth(text);
    for (const CVector& place : places) {
        const CVector at = m_page.ToPage(place) + CVector(-width / 2, m_height / 2);
        const TurnedBox room{at, width, m_height, 0.0};
        if (IsFree(room)) {
            m_page.GetText().Write(text, at);
            m_room.Take(room);
            return;
        }
    }
    ++m_lost;
}

}  // namespace cqsurvey::plan
