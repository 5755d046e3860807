#include "plan/EntityPainter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <optional>
#include <string>
#include <variant>
#include <vector>

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

EntityPainter::EntityPainter(Page& page, LabelRoom& room, LineStyles& styles, double symbolSize,
                             double textHeight)
    : m_page(page),
      m_room(room),
      m_styles(styles),
      m_pen(page, room),
      m_symbol(page),
      m_symbolSize(symbolSize),
      m_textHeight(textHeight) {}

double EntityPainter::GetSize(const PlanPoint& point, double symbolSize) {
    return point.symbol == Symbol::None ? symbolSize
           : point.symbolSize > 0.0     ? point.symbolSize * kMillimetre
                                        : GetUsualSize(point.symbol) * kMillimetre;
}

void EntityPainter::Draw(const PlanItem& item) {
    if (!std::holds_alternative<PlanPoint>(item)) {
        Flush();
    }
    std::visit([this](const auto& alternative) { Draw(alternative); }, item);
}

void EntityPainter::Fill(const PlanItem& item) {
    constexpr double kLight = 0.14;
    const auto* line = std::get_if<PlanLine>(&item);
    const auto* circle = std::get_if<PlanCircle>(&item);
    if (line != nullptr && line->vertices.size() > 2 &&
        m_styles.IsFilled(line->layer, line->code)) {
        AddToPath(*line);
    } else if (circle != nullptr && m_styles.IsFilled(circle->layer, circle->code)) {
        m_pen.DrawCircle(m_page.ToPage(circle->at), m_page.ToPage(circle->radius));
    } else {
        return;
    }
    const int color = line != nullptr ? line->color : circle->color;
    m_page.SetColor(
        Mix(PaletteColor(color, m_page.GetBackground()), m_page.GetBackground(), kLight));
    m_page.Fill();
    cairo_new_path(m_page.GetContext());
}

void EntityPainter::Draw(const PlanPoint& point) {
    const CVector at = m_page.ToPage(point.at);
    const bool spot = point.IsSpot(m_onlyHeights);
    const Symbol symbol = spot ? Symbol::Spot : point.symbol;
    const double half =
        (spot ? GetUsualSize(symbol) * kMillimetre : GetSize(point, m_symbolSize)) / 2;
    Box box;
    box.Add(at);
    if (symbol != Symbol::None) {
        Flush();
        // What crosses the frame would be cut.
        if (!m_page.GetMap().Meets(box.Grow(half))) {
            return;
        }
        m_symbol.Draw(symbol, at, 2 * half, m_page.GetColors().OfLine(point.color));
        m_room.Take(box.Grow(half * kSymbolCore));
        return;
    }
    // There are many points, so neighbours in the drawing that have the same colour are drawn
    // together.
    constexpr std::size_t kMostCrosses = 256;
    if (m_crossColor != point.color || m_crosses.size() == kMostCrosses) {
        Flush();
    }
    m_crossColor = point.color;
    m_crosses.push_back(at);
    // A label may touch the ends of the arms, so only the middle of the cross is taken.
    m_room.Take(box.Grow(half * kCrossCore));
}

void EntityPainter::Flush() {
    if (m_crosses.empty()) {
        return;
    }
    m_page.SetColor(m_crossColor);
    m_page.SetLine(0, kThinWidth);
    m_page.GetCanvas().DrawCrosses(m_crosses, m_symbolSize);
    m_crosses.clear();
}

void EntityPainter::AddToPath(const PlanLine& line) {
    // An arc that is closer than this to a straight line is drawn as one.
    constexpr double kFlat = 0.02;
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
    if (line.vertices.size() > 2 && m_styles.IsFilled(line.layer, line.code)) {
        m_pen.DrawSegment(from, m_page.ToPage(line.vertices.front().at));
    }
}

void EntityPainter::Draw(const PlanLine& line) {
    m_page.SetColor(line.color);
    m_page.SetLine(line.line, m_styles.GetWidth(line.layer, line.code));
    AddToPath(line);
    m_page.Stroke();
}

void EntityPainter::Draw(const PlanCircle& circle) {
    m_page.SetColor(circle.color);
    m_page.SetLine(circle.line, m_styles.GetWidth(circle.layer, circle.code));
    m_pen.DrawCircle(m_page.ToPage(circle.at), m_page.ToPage(circle.radius));
    m_page.Stroke();
}

std::optional<CVector> EntityPainter::FindShift(const CVector& at, const Box& box) const {
    const Box& map = m_page.GetMap();
    if (map.Holds(box)) {
        return CVector();
    }
    Box place;
    place.Add(at);
    if (!map.Holds(place) || box.GetWidth() > map.GetWidth() || box.GetHeight() > map.GetHeight()) {
        return std::nullopt;
    }
    return CVector(std::max(0.0, map.minX - box.minX) - std::max(0.0, box.maxX - map.maxX),
                   std::max(0.0, map.minY - box.minY) - std::max(0.0, box.maxY - map.maxY));
}

void EntityPainter::Draw(const PlanText& text) {
    if (text.isLabel) {
        return;
    }
    constexpr double kLargest = 10000.0;
    constexpr double kSmallest = 0.05;
    const double height =
        text.height > 0.0 ? m_page.ToPage(text.height) : m_textHeight * kMillimetre;
    if (height > kLargest || height < kSmallest) {
        Unfit& unfit = height > kLargest ? m_tooLarge : m_tooSmall;
        if (unfit.count++ == 0) {
            unfit.first = Quoted(text.lines.front());
        }
        ++m_lostTexts;
        return;
    }
    const auto rows = static_cast<double>(text.lines.size());
    const double block = height * (1.0 + kLeading * (rows - 1.0));
    TextPainter& painter = m_page.GetText();
    painter.SetFont(height);
    const CVector at = m_page.ToPage(text.at);
    const double angle = -text.rotation * std::numbers::pi / 180.0;
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    struct Row {
        CVector start;  // in the turned text
        TurnedBox box;
    };
    std::vector<Row> placed;
    Box all;
    double y = FirstBaseline(text.vertical, height, block);
    for (const std::string& line : text.lines) {
        const double width = painter.GetWidth(line);
        const double x = LeftOf(text.horizontal, width);
        const TurnedBox box{at + CVector(x * c - y * s, x * s + y * c), width, height, angle};
        all.Add(box.GetBox());
        placed.push_back({{x, y}, box});
        y += height * kLeading;
    }
    const std::optional<CVector> shift = FindShift(at, all);
    if (!shift) {
        // What is wholly outside is not missed.
        if (all.Meets(m_page.GetMap())) {
            ++m_lostTexts;
            ++m_cutTexts;
        }
        return;
    }
    m_page.SetColor(m_page.GetColors().OfLetter(text.color));
    painter.SetHalo(m_page.GetBackground());
    cairo_t* context = m_page.GetContext();
    cairo_save(context);
    cairo_translate(context, at.GetX() + shift->GetX(), at.GetY() + shift->GetY());
    cairo_rotate(context, angle);
    for (std::size_t i = 0; i < placed.size(); ++i) {
        painter.Write(text.lines[i], placed[i].start);
        placed[i].box.corner = placed[i].box.corner + *shift;
        m_room.Take(placed[i].box);
    }
    cairo_restore(context);
    painter.SetHalo(std::nullopt);
}

void EntityPainter::AddNotes() {
    const auto add = [this](const Unfit& unfit, const char* size) {
        if (unfit.count == 1) {
            m_page.AddNote("the text " + unfit.first + " is too " + size +
                           " to be drawn at this scale");
        } else if (unfit.count > 1) {
            m_page.AddNote(Count(unfit.count, "text") + " are too " + size +
                           " to be drawn at this scale; the first is " + unfit.first);
        }
    };
    add(m_tooLarge, "large");
    add(m_tooSmall, "small");
    if (m_cutTexts > 0) {
        m_page.AddNote("left out because the frame would cut " +
                       std::string(m_cutTexts == 1 ? "it" : "them") + ": " +
                       Count(m_cutTexts, "text"));
    }
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
    m_page.Stroke();
    constexpr double kLargest = 2.0 * kMillimetre;
    constexpr double kReadable = 0.3 * kMillimetre;
    const double height = std::min(kLargest, width / 6);
    Box box;
    box.Add(corners[0]);
    box.Add(corners[2]);
    if (height > kReadable && !frame.name.empty() && m_page.GetMap().Holds(box)) {
        const double room = width - 2 * height;
        m_page.WriteFitting(frame.name, corner + CVector(height, -height), height, room);
    }
}

}  // namespace cqsurvey::plan
