#include "cqjob/PlanPainter.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <numeric>
#include <span>

#include "cqjob/ImageDecoder.h"
#include "cqjob/LineType.h"
#include "cqjob/NumberText.h"
#include "cqjob/Printable.h"

namespace cqsurvey::cqjob {

namespace {

constexpr double kPi = std::numbers::pi;
constexpr double kMillimetre = 72.0 / 25.4;

constexpr double kLineWidth = 0.25 * kMillimetre;
constexpr double kThinWidth = 0.13 * kMillimetre;
/// An arc that strays less from a straight line is drawn as one.
constexpr double kFlat = 0.02;
/// Far beyond any page, and well inside the numbers cairo reckons in.
constexpr double kReach = 20000.0;
/// Distance of lines of text, of baselines, for capitals of height 1.
constexpr double kLeading = 1.6;

double Middle(double a, double b) {
    return std::midpoint(a, b);
}

/// A job may hold numbers that no millimetre means anything to.
std::string Coordinate(double value) {
    constexpr double kFarthest = 1e12;
    return std::fabs(value) <= kFarthest ? FormatNumber(value, 3) : FormatNumber(value);
}

std::string Scale(double scale) {
    return "1 : " + FormatNumber(scale);
}

}  // namespace

PlanPainter::PlanPainter(cairo_t* context, const Plan& plan, const Sheet& sheet,
                         const PaintChoice& choice)
    : m_context(context),
      m_plan(plan),
      m_sheet(sheet),
      m_choice(choice),
      m_ink(InkOn(plan.background)),
      m_text(context),
      m_taken(5.0 * kMillimetre),
      m_lines(3.0 * kMillimetre) {
    const Box& map = sheet.GetMap();
    m_window = {map.minX * kMillimetre, map.minY * kMillimetre, map.maxX * kMillimetre,
                map.maxY * kMillimetre};
    m_reach = m_window.Grow(kReach);
}

CVector PlanPainter::ToPage(const CVector& place) const {
    const CVector paper = m_sheet.ToPaper(place);
    return {paper.GetX() * kMillimetre, paper.GetY() * kMillimetre};
}

double PlanPainter::ToPage(double length) const {
    return m_sheet.ToPaper(length) * kMillimetre;
}

void PlanPainter::SetColor(Rgb color) {
    constexpr double kFull = 255.0;
    cairo_set_source_rgb(m_context, color.red / kFull, color.green / kFull, color.blue / kFull);
}

void PlanPainter::SetColor(int color) {
    SetColor(PaletteColor(color, m_plan.background));
}

void PlanPainter::SetLine(int line) {
    std::array<double, 8> dashes{};
    const std::span<const double> pattern = LinePattern(line);
    std::transform(pattern.begin(), pattern.end(), dashes.begin(),
                   [](double length) { return length * kMillimetre; });
    cairo_set_dash(m_context, dashes.data(), static_cast<int>(pattern.size()), 0.0);
}

void PlanPainter::WriteFitting(const std::string& text, const CVector& at, double height,
                               double width, bool bold) {
    m_text.SetFont(height, bold);
    const double wanted = m_text.GetWidth(text);
    if (wanted > width) {
        m_text.SetFont(height * width / wanted, bold);
    }
    m_text.Write(text, at);
}

void PlanPainter::Paint(const std::function<void(std::size_t)>& progress) {
    SetColor(m_plan.background);
    cairo_paint(m_context);
    cairo_set_line_join(m_context, CAIRO_LINE_JOIN_ROUND);

    cairo_save(m_context);
    cairo_rectangle(m_context, m_window.minX, m_window.minY, m_window.GetWidth(),
                    m_window.GetHeight());
    cairo_clip(m_context);
    if (m_plan.image) {
        DrawImage();
    }
    cairo_restore(m_context);
    if (m_choice.grid) {
        DrawGrid();
    }

    cairo_save(m_context);
    cairo_rectangle(m_context, m_window.minX, m_window.minY, m_window.GetWidth(),
                    m_window.GetHeight());
    cairo_clip(m_context);
    // What is drawn larger than its box, such as symbols, reaches in from outside.
    const Box window = m_sheet.GetWindow();
    const Box near = window.Grow((window.GetWidth() + window.GetHeight()) / 8);
    std::size_t done = 0;
    for (const PlanItem& item : m_plan.items) {
        if (FindBox(item).Meets(near)) {
            if (!std::holds_alternative<PlanPoint>(item)) {
                EndSymbols();
            }
            std::visit([this](const auto& alternative) { Draw(alternative); }, item);
        }
        ++done;
        if (progress) {
            progress(done);
        }
    }
    EndSymbols();
    if (m_choice.names || m_choice.heights || m_choice.codes) {
        DrawLabels();
    }
    cairo_restore(m_context);

    SetColor(m_ink);
    SetLine(0);
    cairo_set_line_width(m_context, kLineWidth);
    cairo_rectangle(m_context, m_window.minX, m_window.minY, m_window.GetWidth(),
                    m_window.GetHeight());
    cairo_stroke(m_context);
    if (!m_sheet.GetTitle().IsEmpty()) {
        DrawTitle();
    }
    if (m_text.GetUnknown() > 0) {
        m_notes.push_back(fmt::format("drawn as boxes: {} that no installed font has",
                                      Count(m_text.GetUnknown(), "character")));
    }
}

void PlanPainter::Draw(const PlanPoint& point) {
    const CVector at = ToPage(point.at);
    const double half = m_plan.symbolSize / 2;
    // Points come in crowds: those of one colour that follow each other are one path.
    constexpr std::size_t kMostSymbols = 256;
    if (m_symbols > 0 && (m_symbolColor != point.color || m_symbols == kMostSymbols)) {
        EndSymbols();
    }
    m_symbolColor = point.color;
    ++m_symbols;
    cairo_move_to(m_context, at.GetX() - half, at.GetY());
    cairo_line_to(m_context, at.GetX() + half, at.GetY());
    cairo_move_to(m_context, at.GetX(), at.GetY() - half);
    cairo_line_to(m_context, at.GetX(), at.GetY() + half);
    // A label may come as close as the arms of the cross let it.
    Box box;
    box.Add(at);
    m_taken.Take(box.Grow(half * 0.6));
}

void PlanPainter::EndSymbols() {
    if (m_symbols == 0) {
        return;
    }
    m_symbols = 0;
    SetColor(m_symbolColor);
    SetLine(0);
    cairo_set_line_width(m_context, kThinWidth);
    cairo_stroke(m_context);
}

void PlanPainter::MarkLine(const CVector& from, const CVector& to) {
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

void PlanPainter::DrawSegment(const CVector& from, const CVector& to) {
    Box box;
    box.Add(from);
    box.Add(to);
    CVector p = from;
    CVector q = to;
    const bool whole = m_reach.Holds(box);
    if (!whole && !Clip(p, q, m_reach)) {
        m_penIsDown = false;
        return;
    }
    if (!m_penIsDown || !whole) {
        cairo_move_to(m_context, p.GetX(), p.GetY());
    }
    cairo_line_to(m_context, q.GetX(), q.GetY());
    m_penIsDown = whole;
    if (Clip(p, q, m_window)) {
        MarkLine(p, q);
    }
}

void PlanPainter::DrawArc(const Arc& arc) {
    const auto draw = [this](const Arc& part) {
        const double end = part.start + part.sweep;
        if (part.sweep < 0.0) {
            cairo_arc_negative(m_context, part.centre.GetX(), part.centre.GetY(), part.radius,
                               part.start, end);
        } else {
            cairo_arc(m_context, part.centre.GetX(), part.centre.GetY(), part.radius, part.start,
                      end);
        }
    };
    if (m_reach.Holds(arc.GetBox())) {
        if (!m_penIsDown) {
            cairo_new_sub_path(m_context);
        }
        draw(arc);
        m_penIsDown = true;
    } else {
        for (const Arc& part : Clip(arc, m_reach)) {
            cairo_new_sub_path(m_context);
            draw(part);
        }
        m_penIsDown = false;
    }
    constexpr int kChords = 24;
    CVector from = arc.At(arc.start);
    for (int i = 1; i <= kChords; ++i) {
        CVector p = from;
        CVector q = from = arc.At(arc.start + arc.sweep * i / kChords);
        if (Clip(p, q, m_window)) {
            MarkLine(p, q);
        }
    }
}

void PlanPainter::Draw(const PlanLine& line) {
    SetColor(line.color);
    SetLine(line.line);
    cairo_set_line_width(m_context, kLineWidth);
    m_penIsDown = false;
    CVector from = ToPage(line.vertices.front().at);
    for (std::size_t i = 1; i < line.vertices.size(); ++i) {
        const CVector to = ToPage(line.vertices[i].at);
        // On the page y goes down, which mirrors the arc.
        if (const auto arc = FindArc(from, to, -line.vertices[i - 1].bulge, kFlat)) {
            DrawArc(*arc);
        } else {
            DrawSegment(from, to);
        }
        from = to;
    }
    cairo_stroke(m_context);
}

void PlanPainter::Draw(const PlanCircle& circle) {
    SetColor(circle.color);
    SetLine(circle.line);
    cairo_set_line_width(m_context, kLineWidth);
    m_penIsDown = false;
    DrawArc({ToPage(circle.at), ToPage(circle.radius), 0.0, 2 * kPi});
    if (m_penIsDown) {
        cairo_close_path(m_context);
    }
    cairo_stroke(m_context);
}

void PlanPainter::Draw(const PlanText& text) {
    constexpr double kLargest = 10000.0;
    constexpr double kSmallest = 0.05;
    const double height =
        text.height > 0.0 ? ToPage(text.height) : m_choice.labelHeight * kMillimetre;
    if (height > kLargest || height < kSmallest) {
        m_notes.push_back(fmt::format("the text {} is too {} to be drawn at this scale",
                                      Quoted(text.lines.front()),
                                      height > kLargest ? "large" : "small"));
        return;
    }
    const auto rows = static_cast<double>(text.lines.size());
    const double block = height * (1.0 + kLeading * (rows - 1.0));
    constexpr double kBelow = 0.3;
    double y = 0.0;
    switch (text.vertical) {
        case VerticalAlign::Baseline:
            break;
        case VerticalAlign::Bottom:
            y = height - block - kBelow * height;
            break;
        case VerticalAlign::Middle:
            y = height - block / 2;
            break;
        case VerticalAlign::Top:
            y = height;
            break;
    }
    SetColor(text.color);
    m_text.SetFont(height);
    const CVector at = ToPage(text.at);
    const double angle = -text.rotation * kPi / 180.0;
    cairo_save(m_context);
    cairo_translate(m_context, at.GetX(), at.GetY());
    cairo_rotate(m_context, angle);
    Box taken;
    for (const std::string& line : text.lines) {
        const double width = m_text.GetWidth(line);
        const double x = text.horizontal == HorizontalAlign::Left     ? 0.0
                         : text.horizontal == HorizontalAlign::Centre ? -width / 2
                                                                      : -width;
        m_text.Write(line, {x, y});
        for (const CVector& corner : {CVector(x, y), CVector(x + width, y), CVector(x, y - height),
                                      CVector(x + width, y - height)}) {
            const double c = std::cos(angle);
            const double s = std::sin(angle);
            taken.Add(at + CVector(corner.GetX() * c - corner.GetY() * s,
                                   corner.GetX() * s + corner.GetY() * c));
        }
        y += height * kLeading;
    }
    cairo_restore(m_context);
    m_taken.Take(taken);
}

void PlanPainter::Draw(const PlanFrame& frame) {
    const CVector corner = ToPage(frame.at);
    const double width = ToPage(frame.width);
    std::array<CVector, 4> corners{corner, corner + CVector(width, 0.0),
                                   corner + CVector(width, -width), corner + CVector(0.0, -width)};
    SetColor(frame.color);
    SetLine(0);
    cairo_set_line_width(m_context, kThinWidth);
    m_penIsDown = false;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        DrawSegment(corners[i], corners[(i + 1) % corners.size()]);
    }
    cairo_stroke(m_context);
    constexpr double kLargest = 2.0 * kMillimetre;
    constexpr double kReadable = 0.3 * kMillimetre;
    const double height = std::min(kLargest, width / 6);
    if (height > kReadable && !frame.name.empty()) {
        const double room = width - 2 * height;
        WriteFitting(frame.name, corner + CVector(height, -height), height, room);
    }
}

void PlanPainter::DrawImage() {
    const PlanImage& image = *m_plan.image;
    std::string fault;
    const CairoSurfacePtr surface = DecodeImage(image, fault);
    const CVector centre = ToPage(image.centre);
    const double width = ToPage(image.size.GetX());
    double height = ToPage(image.size.GetY());
    if (surface != nullptr && height == 0.0) {
        // An image of which only the width is known keeps its shape.
        height = width * cairo_image_surface_get_height(surface.get()) /
                 cairo_image_surface_get_width(surface.get());
    }
    if (height == 0.0) {
        height = width;
    }
    const bool inReach = std::max(std::fabs(width), std::fabs(height)) < kReach;
    if (!FindBox(image).Meets(m_sheet.GetWindow())) {
        return;
    }
    if (surface != nullptr && inReach) {
        cairo_save(m_context);
        cairo_translate(m_context, centre.GetX(), centre.GetY());
        cairo_rotate(m_context, -image.rotation * kPi / 180.0);
        cairo_scale(m_context, width / cairo_image_surface_get_width(surface.get()),
                    height / cairo_image_surface_get_height(surface.get()));
        cairo_translate(m_context, -0.5 * cairo_image_surface_get_width(surface.get()),
                        -0.5 * cairo_image_surface_get_height(surface.get()));
        cairo_set_source_surface(m_context, surface.get(), 0.0, 0.0);
        if (cairo_surface_get_type(cairo_get_target(m_context)) == CAIRO_SURFACE_TYPE_IMAGE) {
            // Without this the outermost pixels fade into nothing.
            cairo_pattern_set_extend(cairo_get_source(m_context), CAIRO_EXTEND_PAD);
        }
        cairo_rectangle(m_context, 0.0, 0.0, cairo_image_surface_get_width(surface.get()),
                        cairo_image_surface_get_height(surface.get()));
        cairo_fill(m_context);
        cairo_restore(m_context);
        return;
    }
    m_notes.push_back(surface == nullptr
                          ? fault
                          : "the background image is too large at this scale; its frame is drawn");
    const double angle = -image.rotation * kPi / 180.0;
    std::array<CVector, 4> corners{};
    constexpr std::array<std::array<double, 2>, 4> kSides{
        {{-0.5, -0.5}, {0.5, -0.5}, {0.5, 0.5}, {-0.5, 0.5}}};
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const double x = kSides[i][0] * width;
        const double y = kSides[i][1] * height;
        corners[i] = centre + CVector(x * std::cos(angle) - y * std::sin(angle),
                                      x * std::sin(angle) + y * std::cos(angle));
    }
    SetColor(Mix(m_ink, m_plan.background, 0.5));
    SetLine(1);
    cairo_set_line_width(m_context, kThinWidth);
    m_penIsDown = false;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        DrawSegment(corners[i], corners[(i + 1) % corners.size()]);
    }
    cairo_stroke(m_context);
}

void PlanPainter::DrawGrid() {
    constexpr double kDistance = 60.0;
    constexpr double kCross = 1.5 * kMillimetre;
    constexpr double kTick = 1.5 * kMillimetre;
    constexpr double kLabel = 1.5 * kMillimetre;
    constexpr double kOff = 1.2 * kMillimetre;
    constexpr double kMostLines = 200.0;
    const Box window = m_sheet.GetWindow();
    const double step = RoundDistance(kDistance * m_sheet.GetScale() / 1000.0);
    struct Mark {
        double page;
        double value;
    };
    const auto marks = [&](double from, double to, bool east) {
        std::vector<Mark> found;
        const double first = std::ceil(from / step);
        const double last = std::floor(to / step);
        if (!(last - first < kMostLines) || !(first + 1.0 > first)) {
            return found;
        }
        for (double i = first; i <= last; ++i) {
            // The sum makes a zero without a sign of it.
            const double value = i * step + 0.0;
            const CVector at =
                ToPage(east ? CVector(value, window.minY) : CVector(window.minX, value));
            found.push_back({east ? at.GetX() : at.GetY(), value});
        }
        return found;
    };
    const std::vector<Mark> columns = marks(window.minX, window.maxX, true);
    const std::vector<Mark> rows = marks(window.minY, window.maxY, false);
    SetColor(Mix(m_ink, m_plan.background, 0.3));
    SetLine(0);
    cairo_set_line_width(m_context, kThinWidth);
    for (const Mark& column : columns) {
        for (const Mark& row : rows) {
            if (column.page - kCross < m_window.minX || column.page + kCross > m_window.maxX ||
                row.page - kCross < m_window.minY || row.page + kCross > m_window.maxY) {
                continue;
            }
            cairo_move_to(m_context, column.page - kCross, row.page);
            cairo_line_to(m_context, column.page + kCross, row.page);
            cairo_move_to(m_context, column.page, row.page - kCross);
            cairo_line_to(m_context, column.page, row.page + kCross);
        }
    }
    cairo_stroke(m_context);
    if (m_sheet.GetTitle().IsEmpty()) {
        return;
    }
    SetColor(m_ink);
    m_text.SetFont(kLabel);
    const int decimals = std::max(0, static_cast<int>(std::ceil(-std::log10(step) - 1e-9)));
    for (const Mark& column : columns) {
        cairo_move_to(m_context, column.page, m_window.maxY);
        cairo_line_to(m_context, column.page, m_window.maxY - kTick);
        cairo_move_to(m_context, column.page, m_window.minY);
        cairo_line_to(m_context, column.page, m_window.minY + kTick);
    }
    for (const Mark& row : rows) {
        cairo_move_to(m_context, m_window.minX, row.page);
        cairo_line_to(m_context, m_window.minX + kTick, row.page);
        cairo_move_to(m_context, m_window.maxX, row.page);
        cairo_line_to(m_context, m_window.maxX - kTick, row.page);
    }
    cairo_stroke(m_context);
    for (const Mark& column : columns) {
        const std::string text = FormatNumber(column.value, decimals);
        const double x = std::clamp(column.page - m_text.GetWidth(text) / 2, m_window.minX,
                                    std::max(m_window.minX, m_window.maxX - m_text.GetWidth(text)));
        m_text.Write(text, {x, m_window.maxY + kOff + kLabel});
    }
    for (const Mark& row : rows) {
        const std::string text = FormatNumber(row.value, decimals);
        cairo_save(m_context);
        cairo_translate(
            m_context, m_window.minX - kOff,
            std::clamp(row.page + m_text.GetWidth(text) / 2, m_window.minY + m_text.GetWidth(text),
                       std::max(m_window.minY + m_text.GetWidth(text), m_window.maxY)));
        cairo_rotate(m_context, -kPi / 2);
        m_text.Write(text, {0.0, 0.0});
        cairo_restore(m_context);
    }
}

void PlanPainter::DrawLabels() {
    const double height = m_choice.labelHeight * kMillimetre;
    const double half = m_plan.symbolSize / 2;
    m_text.SetFont(height);
    std::vector<std::string> rows;
    for (const PlanItem& item : m_plan.items) {
        const auto* point = std::get_if<PlanPoint>(&item);
        if (point == nullptr) {
            continue;
        }
        const CVector at = ToPage(point->at);
        Box place;
        place.Add(at);
        if (!m_window.Holds(place)) {
            continue;
        }
        rows.clear();
        if (m_choice.names && !point->name.empty()) {
            rows.push_back(point->name);
        }
        if (m_choice.heights && std::isfinite(point->height)) {
            rows.push_back(FormatNumber(point->height, 2));
        }
        if (m_choice.codes && point->code != 0) {
            rows.push_back(fmt::format("{}", point->code));
        }
        if (rows.empty()) {
            continue;
        }
        double width = 0.0;
        for (const std::string& row : rows) {
            width = std::max(width, m_text.GetWidth(row));
        }
        const double block = height * (1.0 + kLeading * static_cast<double>(rows.size() - 1));
        const double gap = half * 0.7 + 0.2 * kMillimetre;
        const std::array<CVector, 8> corners{at + CVector(gap, -gap - block),
                                             at + CVector(gap, gap),
                                             at + CVector(-gap - width, -gap - block),
                                             at + CVector(-gap - width, gap),
                                             at + CVector(half + gap / 2, -block / 2),
                                             at + CVector(-half - gap / 2 - width, -block / 2),
                                             at + CVector(-width / 2, -half - gap / 2 - block),
                                             at + CVector(-width / 2, half + gap / 2)};
        const CVector* chosen = nullptr;
        for (const bool offLines : {true, false}) {
            for (const CVector& corner : corners) {
                const Box box{corner.GetX(), corner.GetY(), corner.GetX() + width,
                              corner.GetY() + block};
                const Box room = box.Grow(0.15 * kMillimetre);
                if (chosen == nullptr && m_window.Holds(room) && m_taken.IsFree(room) &&
                    (!offLines || m_lines.IsFree(box))) {
                    chosen = &corner;
                }
            }
        }
        if (chosen == nullptr) {
            if (!m_choice.allLabels) {
                ++m_lostLabels;
                continue;
            }
            chosen = corners.data();
        }
        m_taken.Take(
            {chosen->GetX(), chosen->GetY(), chosen->GetX() + width, chosen->GetY() + block});
        SetColor(point->color);
        double y = chosen->GetY() + height;
        for (const std::string& row : rows) {
            m_text.Write(row, {chosen->GetX(), y});
            y += height * kLeading;
        }
    }
}

void PlanPainter::DrawTitle() {
    const Box& paper = m_sheet.GetTitle();
    const Box box{paper.minX * kMillimetre, paper.minY * kMillimetre, paper.maxX * kMillimetre,
                  paper.maxY * kMillimetre};
    constexpr double kArrow = 18.0 * kMillimetre;
    constexpr double kPad = 3.0 * kMillimetre;
    const double bar = std::clamp(box.GetWidth() * 0.34, 34.0 * kMillimetre, 68.0 * kMillimetre);
    const double arrowLeft = box.maxX - kArrow;
    const double barLeft = arrowLeft - bar;

    SetColor(m_ink);
    SetLine(0);
    cairo_set_line_width(m_context, kLineWidth);
    cairo_rectangle(m_context, box.minX, box.minY, box.GetWidth(), box.GetHeight());
    for (const double x : {barLeft, arrowLeft}) {
        cairo_move_to(m_context, x, box.minY);
        cairo_line_to(m_context, x, box.maxY);
    }
    cairo_stroke(m_context);

    const double room = barLeft - box.minX - 2 * kPad;
    const Box& extents = m_plan.jobExtents;
    WriteFitting(m_choice.title, {box.minX + kPad, box.minY + 6.2 * kMillimetre}, 3.2 * kMillimetre,
                 room, true);
    constexpr double kSmall = 1.75 * kMillimetre;
    std::array<std::string, 3> rows;
    if (extents.IsEmpty()) {
        rows[0] = "No extents: nothing to draw";
    } else {
        rows[0] = fmt::format("E {} – {}", Coordinate(extents.minX), Coordinate(extents.maxX));
        rows[1] = fmt::format("N {} – {}", Coordinate(extents.minY), Coordinate(extents.maxY));
        rows[2] = Count(m_plan.points, "point");
        if (m_plan.items.size() > m_plan.points) {
            rows[2] += fmt::format(", {} of the drawing",
                                   Count(m_plan.items.size() - m_plan.points, "object"));
        }
    }
    double y = box.minY + 11.2 * kMillimetre;
    for (const std::string& row : rows) {
        WriteFitting(row, {box.minX + kPad, y}, kSmall, room);
        y += 3.8 * kMillimetre;
    }
    DrawScaleBar({barLeft + kPad, box.minY}, bar - 2 * kPad);
    DrawNorthArrow({Middle(arrowLeft, box.maxX), Middle(box.minY, box.maxY)},
                   box.GetHeight() - 2 * kPad);
}

void PlanPainter::DrawScaleBar(const CVector& at, double width) {
    constexpr int kParts = 4;
    constexpr double kThick = 1.6 * kMillimetre;
    constexpr double kSmall = 1.75 * kMillimetre;
    const double scale = m_sheet.GetScale();
    // Room for half a number at either end.
    constexpr double kEnds = 8.0 * kMillimetre;
    const double part = RoundDistance((width - kEnds) / kMillimetre / kParts * scale / 1000.0);
    const double length = ToPage(part);
    WriteFitting(Scale(scale), at + CVector(0.0, 6.2 * kMillimetre), 3.2 * kMillimetre, width);
    const double left = at.GetX() + 1.0 * kMillimetre;
    const double top = at.GetY() + 14.0 * kMillimetre;
    cairo_set_line_width(m_context, kThinWidth);
    for (int i = 0; i < kParts; ++i) {
        cairo_rectangle(m_context, left + i * length, top, length, kThick);
        if (i % 2 == 0) {
            cairo_fill_preserve(m_context);
        }
        cairo_stroke(m_context);
    }
    m_text.SetFont(kSmall);
    for (int i = 0; i <= kParts; i += 2) {
        const std::string number = FormatNumber(part * i);
        const std::string text = i == kParts ? number + " m" : number;
        m_text.Write(text,
                     {left + i * length - m_text.GetWidth(number) / 2, top - 1.0 * kMillimetre});
    }
}

void PlanPainter::DrawNorthArrow(const CVector& middle, double height) {
    constexpr double kLetter = 2.6 * kMillimetre;
    const double top = middle.GetY() - height / 2 + kLetter + 1.0 * kMillimetre;
    const double bottom = middle.GetY() + height / 2;
    const double half = (bottom - top) / 3.4;
    const double notch = bottom - (bottom - top) / 4;
    m_text.SetFont(kLetter, true);
    m_text.Write("N", {middle.GetX() - m_text.GetWidth("N") / 2, top - 1.0 * kMillimetre});
    cairo_set_line_width(m_context, kThinWidth);
    // The right half is dark, the left one is an outline.
    cairo_move_to(m_context, middle.GetX(), top);
    cairo_line_to(m_context, middle.GetX() + half, bottom);
    cairo_line_to(m_context, middle.GetX(), notch);
    cairo_close_path(m_context);
    cairo_fill_preserve(m_context);
    cairo_stroke(m_context);
    cairo_move_to(m_context, middle.GetX(), top);
    cairo_line_to(m_context, middle.GetX() - half, bottom);
    cairo_line_to(m_context, middle.GetX(), notch);
    cairo_close_path(m_context);
    cairo_stroke(m_context);
}

}  // namespace cqsurvey::cqjob
