#include "plan/TitlePainter.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "cqsurvey/plan/PlotOptions.h"
#include "plan/Wording.h"
#include "text/NumberText.h"

namespace cqsurvey::plan {

namespace {

/// Heights of capitals.
constexpr double kLarge = 3.2 * kMillimetre;
constexpr double kSmall = 1.75 * kMillimetre;
/// The baseline of the first row, below the block's upper side.
constexpr double kFirstRow = 6.2 * kMillimetre;
/// The margin beside the lines of the block.
constexpr double kPad = 3.0 * kMillimetre;

/// A job may hold numbers so large that millimetres mean nothing.
std::string Coordinate(double value) {
    return std::fabs(value) <= kFarthest ? FormatNumber(value, 3) : FormatNumber(value);
}

/// "E 2000.000 – 2221.500", with a dash between the numbers.
std::string Range(const char* axis, double from, double to) {
    return std::string(axis) + " " + Coordinate(from) + " \xE2\x80\x93 " + Coordinate(to);
}

/// What stands behind a length: the mark of the unit after a blank, nothing without a unit.
std::string UnitMark(std::optional<CqLengthUnit> unit) {
    if (!unit) {
        return {};
    }
    return *unit == CqLengthUnit::Metre               ? " m"
           : *unit == CqLengthUnit::InternationalFoot ? " ft"
                                                      : " US ft";
}

/// The lines below the heading about what is shown.
std::array<std::string, 3> Describe(const Plan& plan, const PlanPart& part) {
    const Box& extents = part.extents;
    if (extents.IsEmpty()) {
        return {"No extents: nothing to draw"};
    }
    std::string counts = Count(part.points, "point");
    if (part.objects > part.points) {
        counts += ", " + Count(part.objects - part.points, "object") + " of the drawing";
    }
    if (!plan.system.empty()) {
        counts += "; " + plan.system;
    }
    return {Range("E", extents.minX, extents.maxX), Range("N", extents.minY, extents.maxY), counts};
}

}  // namespace

void TitlePainter::Draw(const Plan& plan, const PlanPart& part, const std::string& heading) {
    constexpr double kArrow = 18.0 * kMillimetre;
    const Box& box = m_page.GetTitle();
    const double bar = std::clamp(box.GetWidth() * 0.34, 34.0 * kMillimetre, 68.0 * kMillimetre);
    const double arrowLeft = box.maxX - kArrow;
    const double barLeft = arrowLeft - bar;

    cairo_t* context = m_page.GetContext();
    m_page.SetColor(m_page.GetInk());
    m_page.SetLine(0, kLineWidth);
    m_page.AddRectangle(box);
    for (const double x : {barLeft, arrowLeft}) {
        cairo_move_to(context, x, box.minY);
        cairo_line_to(context, x, box.maxY);
    }
    cairo_stroke(context);

    DrawHeading(plan, part, heading, {box.minX + kPad, box.minY}, barLeft - box.minX - 2 * kPad);
    DrawScale(plan, {barLeft + kPad, box.minY}, bar - 2 * kPad);
    DrawNorthArrow({std::midpoint(arrowLeft, box.maxX), std::midpoint(box.minY, box.maxY)},
                   box.GetHeight() - 2 * kPad);
}

void TitlePainter::DrawHeading(const Plan& plan, const PlanPart& part, const std::string& heading,
                               const CVector& at, double width) {
    m_page.WriteFitting(heading, at + CVector(0.0, kFirstRow), kLarge, width, true);
    double y = at.GetY() + 11.2 * kMillimetre;
    for (const std::string& row : Describe(plan, part)) {
        m_page.WriteFitting(row, {at.GetX(), y}, kSmall, width);
        y += 3.8 * kMillimetre;
    }
}

void TitlePainter::DrawScale(const Plan& plan, const CVector& at, double width) {
    constexpr int kParts = 4;
    constexpr double kThick = 1.6 * kMillimetre;
    // Leaves room for half a number at either end.
    constexpr double kEnds = 8.0 * kMillimetre;
    const Sheet& sheet = m_page.GetSheet();
    const double part = RoundDistance(sheet.ToJob((width - kEnds) / kMillimetre / kParts));
    const double length = m_page.ToPage(part);
    m_page.WriteFitting("1 : " + FormatNumber(sheet.GetScale()), at + CVector(0.0, kFirstRow),
                        kLarge, width);
    const double left = at.GetX() + 1.0 * kMillimetre;
    const double top = at.GetY() + 14.0 * kMillimetre;
    cairo_t* context = m_page.GetContext();
    cairo_set_line_width(context, kThinWidth);
    for (int i = 0; i < kParts; ++i) {
        cairo_rectangle(context, left + i * length, top, length, kThick);
        if (i % 2 == 0) {
            cairo_fill_preserve(context);
        }
        cairo_stroke(context);
    }
    TextPainter& text = m_page.GetText();
    text.SetFont(kSmall);
    for (int i = 0; i <= kParts; i += 2) {
        const std::string number = FormatNumber(part * i);
        text.Write(i == kParts ? number + UnitMark(plan.unit) : number,
                   {left + i * length - text.GetWidth(number) / 2, top - 1.0 * kMillimetre});
    }
}

void TitlePainter::DrawNorthArrow(const CVector& middle, double height) {
    constexpr double kLetter = 2.6 * kMillimetre;
    const double top = middle.GetY() - height / 2 + kLetter + 1.0 * kMillimetre;
    const double bottom = middle.GetY() + height / 2;
    const double half = (bottom - top) / 3.4;
    const double notch = bottom - (bottom - top) / 4;
    TextPainter& text = m_page.GetText();
    text.SetFont(kLetter, true);
    text.Write("N", {middle.GetX() - text.GetWidth("N") / 2, top - 1.0 * kMillimetre});
    cairo_t* context = m_page.GetContext();
    cairo_set_line_width(context, kThinWidth);
    const auto addHalf = [&](double side) {
        cairo_move_to(context, middle.GetX(), top);
        cairo_line_to(context, middle.GetX() + side, bottom);
        cairo_line_to(context, middle.GetX(), notch);
        cairo_close_path(context);
    };
    // The right half is dark, the left one is an outline.
    addHalf(half);
    cairo_fill_preserve(context);
    cairo_stroke(context);
    addHalf(-half);
    cairo_stroke(context);
}

}  // namespace cqsurvey::plan
