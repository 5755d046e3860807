#include "plan/EntityPainter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <string>
#include <variant>

#include "plan/Geometry.h"
#include "plan/Wording.h"

namespace cqsurvey::plan {

namespace {

/// How far to the left of its position a text begins.
double LeftOf(HorizontalAlign align, double width) {
    return align == HorizontalAlign::Left     ? 0.0
           : align == HorizontalAlign::Centre ? -width / 2
                                              : -width;
}

/// How far below its position the first baseline of a text is. Its capitals are `height` high, all
/// its rows together `block`.
double FirstBaseline(VerticalAlign align, double height, double block) {
    // The part of letters such as g that is below the baseline.
    constexpr double kBelow = 0.3;
    switch (align) {
        case VerticalAlign::Bottom:
            return height - block - kBelow * height;
        case VerticalAlign::Middle:
            return height - block / 2;
        case VerticalAlign::Top:
            return height;
        case VerticalAlign::Baseline:
            break;
    }
    return 0.0;
}

}  // namespace

EntityPainter::EntityPainter(Page& page, LabelRoom& room, double symbolSize, double textHeight)
    : m_page(page),
      m_room(room),
      m_pen(page, room),
      m_symbolSize(symbolSize),
      m_textHeight(textHeight) {}

void EntityPainter::Draw(const PlanItem& item) {
    if (!std::holds_alternative<PlanPoint>(item)) {
        Flush();
    }
    std::visit([this](const auto& alternative) { Draw(alternative); }, item);
}

void EntityPainter::Draw(const PlanPoint& point) {
    const CVector at = m_page.ToPage(point.at);
    const double half = m_symbolSize / 2;
    // There are many points, so neighbours in the drawing that have the same colour are drawn as
    // one path.
    constexpr std::size_t kMostSymbols = 256;
    if (m_symbols > 0 && (m_symbolColor != point.color || m_symbols == kMostSymbols)) {
        Flush();
    }
    m_symbolColor = point.color;
    ++m_symbols;
    cairo_t* context = m_page.GetContext();
    cairo_move_to(context, at.GetX() - half, at.GetY());
    cairo_line_to(context, at.GetX() + half, at.GetY());
    cairo_move_to(context, at.GetX(), at.GetY() - half);
    cairo_line_to(context, at.GetX(), at.GetY() + half);
    // A label may touch the ends of the arms, so only the middle of the cross is taken.
    Box box;
    box.Add(at);
    m_room.Take(box.Grow(half * 0.6));
}

void EntityPainter::Flush() {
    if (m_symbols == 0) {
        return;
    }
    m_symbols = 0;
    m_page.SetColor(m_symbolColor);
    m_page.SetLine(0, kThinWidth);
    cairo_stroke(m_page.GetContext());
}

void EntityPainter::Draw(const PlanLine& line) {
    // An arc that is closer than this to a straight line is drawn as one.
    constexpr double kFlat = 0.02;
    m_page.SetColor(line.color);
    m_page.SetLine(line.line, kLineWidth);
    m_pen.Lift();
    CVector from = m_page.ToPage(line.vertices.front().at);
    for (std::size_t i = 1; i < line.vertices.size(); ++i) {
        const CVector to = m_page.ToPage(line.vertices[i].at);
        // On the page y goes down, which mirrors the arc.
        if (const auto arc = FindArc(from, to, -line.vertices[i - 1].bulge, kFlat)) {
            m_pen.DrawArc(*arc);
        } else {
            m_pen.DrawSegment(from, to);
        }
        from = to;
    }
    cairo_stroke(m_page.GetContext());
}

void EntityPainter::Draw(const PlanCircle& circle) {
    m_page.SetColor(circle.color);
    m_page.SetLine(circle.line, kLineWidth);
    m_pen.DrawCircle(m_page.ToPage(circle.at), m_page.ToPage(circle.radius));
    cairo_stroke(m_page.GetContext());
}

void EntityPainter::Draw(const PlanText& text) {
    constexpr double kLargest = 10000.0;
    constexpr double kSmallest = 0.05;
    const double height =
        text.height > 0.0 ? m_page.ToPage(text.height) : m_textHeight * kMillimetre;
    if (height > kLargest || height < kSmallest) {
        m_page.AddNote("the text " + Quoted(text.lines.front()) + " is too " +
                       (height > kLargest ? "large" : "small") + " to be drawn at this scale");
        return;
    }
    const auto rows = static_cast<double>(text.lines.size());
    const double block = height * (1.0 + kLeading * (rows - 1.0));
    double y = FirstBaseline(text.vertical, height, block);
    m_page.SetColor(text.color);
    m_page.GetText().SetFont(height);
    const CVector at = m_page.ToPage(text.at);
    const double angle = -text.rotation * std::numbers::pi / 180.0;
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    cairo_t* context = m_page.GetContext();
    cairo_save(context);
    cairo_translate(context, at.GetX(), at.GetY());
    cairo_rotate(context, angle);
    Box taken;
    for (const std::string& line : text.lines) {
        const double width = m_page.GetText().GetWidth(line);
        const double x = LeftOf(text.horizontal, width);
        m_page.GetText().Write(line, {x, y});
        for (const CVector& corner : {CVector(x, y), CVector(x + width, y), CVector(x, y - height),
                                      CVector(x + width, y - height)}) {
            taken.Add(at + CVector(corner.GetX() * c - corner.GetY() * s,
                                   corner.GetX() * s + corner.GetY() * c));
        }
        y += height * kLeading;
    }
    cairo_restore(context);
    m_room.Take(taken);
}

void EntityPainter::Draw(const PlanFrame& frame) {
    const CVector corner = m_page.ToPage(frame.at);
    const double width = m_page.ToPage(frame.width);
    const std::array<CVector, 4> corners{corner, corner + CVector(width, 0.0),
                                         corner + CVector(width, -width),
                                         corner + CVector(0.0, -width)};
    m_page.SetColor(frame.color);
    m_page.SetLine(0, kThinWidth);
    m_pen.DrawOutline(corners);
    cairo_stroke(m_page.GetContext());
    constexpr double kLargest = 2.0 * kMillimetre;
    constexpr double kReadable = 0.3 * kMillimetre;
    const double height = std::min(kLargest, width / 6);
    if (height > kReadable && !frame.name.empty()) {
        const double room = width - 2 * height;
        m_page.WriteFitting(frame.name, corner + CVector(height, -height), height, room);
    }
}

}  // namespace cqsurvey::plan
