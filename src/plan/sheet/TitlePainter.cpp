#include "plan/sheet/TitlePainter.h"

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

/// The lines below the heading about what is shown.
std::array<std::string, 3> Describe(const PlanPart& part, std::size_t lost) {
    const Box& extents = part.extents;
    if (extents.IsEmpty() || part.objects == 0) {
        return {"Nothing is drawn"};
    }
    std::string counts = Count(part.points, "point");
    if (part.objects > part.points) {
        counts += ", " + Count(part.objects - part.points, "object") + " of the drawing";
    }
    if (lost > 0) {
        counts += "; no room for " + Count(lost, "label");
    }
    return {Range("E", extents.minX, extents.maxX), Range("N", extents.minY, extents.maxY), counts};
}

}  // namespace

void TitlePainter::Draw(const Plan& plan, const PlanPart& part, const std::string& heading,
                        std::size_t lost, const SheetNumber& sheet) {
    constexpr double kArrow = 18.0 * kMillimetre;
    const Box& box = m_page.GetTitle();
    const Tiles& tiles = m_page.GetSheet().GetFields();
    const double bottom = box.maxY - static_cast<double>(tiles.rows) * tiles.height * kMillimetre;
    const double bar = std::clamp(box.GetWidth() * 0.34, 34.0 * kMillimetre, 68.0 * kMillimetre);
    const double arrowLeft = box.maxX - kArrow;
    const double barLeft = arrowLeft - bar;

    cairo_t* context = m_page.GetContext();
    m_page.SetColor(m_page.GetInk());
    m_page.SetLine(0, kLineWidth);
    m_page.AddRectangle(box);
    for (const double x : {barLeft, arrowLeft}) {
        cairo_move_to(context, x, box.minY);
        cairo_line_to(context, x, bottom);
    }
    m_page.Stroke();

    DrawHeading(heading, Describe(part, lost), {box.minX + kPad, box.minY},
                barLeft - box.minX - 2 * kPad);
    DrawScale(plan, {barLeft + kPad, box.minY}, bar - 2 * kPad);
    DrawNorthArrow({std::midpoint(arrowLeft, box.maxX), std::midpoint(box.minY, bottom)},
                   bottom - box.minY - 2 * kPad, !plan.system.empty());
    if (tiles.rows > 0) {
        DrawFields(MakeTitleFields(plan, sheet), {box.minX, bottom, box.maxX, box.maxY});
    }
}

void TitlePainter::DrawHeading(const std::string& heading, const std::array<std::string, 3>& rows,
                               const CVector& at, double width) {
    m_page.WriteFitting(heading, at + CVector(0.0, kFirstRow), kLarge, width, true);
    double y = at.GetY() + 11.2 * kMillimetre;
    for (const std::string& row : rows) {
        m_page.WriteFitting(row, {at.GetX(), y}, kSmall, width);
        y += 3.8 * kMillimetre;
    }
}

void TitlePainter::DrawFields(const std::vector<TitleField>& fields, const Box& box) {
    constexpr double kCaption = 1.2 * kMillimetre;
    constexpr double kInset = 1.2 * kMillimetre;
    constexpr double kPale = 0.65;
    const Tiles& tiles = m_page.GetSheet().GetFields();
    const double width = tiles.width * kMillimetre;
    const double height = tiles.height * kMillimetre;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const std::size_t row = i / tiles.columns;
        const double left = box.minX + static_cast<double>(i % tiles.columns) * width;
        const double top = box.minY + static_cast<double>(row) * height;
        m_page.SetColor(m_page.GetInk());
        m_page.SetLine(0, kThinWidth);
        m_page.AddRectangle({left, top, left + width, top + height});
        m_page.Stroke();
        m_page.SetColor(Mix(m_page.GetInk(), m_page.GetBackground(), kPale));
        m_page.WriteFitting(fields[i].caption, {left + kInset, top + kInset + kCaption}, kCaption,
                            width - 2 * kInset);
        m_page.SetColor(m_page.GetInk());
        m_page.WriteFitting(fields[i].text, {left + kInset, top + height - 1.7 * kInset}, kSmall,
                            width - 2 * kInset);
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
    m_page.WriteFitting(
        "1 : " + FormatNumber(sheet.GetScale()) + "  (" + DescribePaper(sheet.GetPaper()) + ")",
        at + CVector(0.0, kFirstRow), kLarge, width);
    const double left = at.GetX() + 1.0 * kMillimetre;
    const double top = at.GetY() + 14.0 * kMillimetre;
    cairo_t* context = m_page.GetContext();
    cairo_set_line_width(context, kThinWidth);
    for (int i = 0; i < kParts; ++i) {
        cairo_rectangle(context, left + i * length, top, length, kThick);
        if (i % 2 == 0) {
            m_page.Fill();
        }
        m_page.Stroke();
    }
    TextPainter& text = m_page.GetText();
    text.SetFont(kSmall);
    for (int i = 0; i <= kParts; i += 2) {
        const std::string number = FormatNumber(part * i);
        text.Write(i == kParts ? number + UnitMark(plan.unit) : number,
                   {left + i * length - text.GetWidth(number) / 2, top - 1.0 * kMillimetre});
    }
}

void TitlePainter::DrawNorthArrow(const CVector& middle, double height, bool isGrid) {
    constexpr double kLetter = 2.6 * kMillimetre;
    constexpr double kCaption = 1.2 * kMillimetre;
    const double top = middle.GetY() - height / 2 + kLetter + 1.0 * kMillimetre;
    const double bottom = middle.GetY() + height / 2 - (isGrid ? 2 * kCaption : 0.0);
    const double half = (bottom - top) / 3.4;
    const double notch = bottom - (bottom - top) / 4;
    TextPainter& text = m_page.GetText();
    text.SetFont(kLetter, true);
    text.Write("N", {middle.GetX() - text.GetWidth("N") / 2, top - 1.0 * kMillimetre});
    if (isGrid) {
        text.SetFont(kCaption);
        text.Write("grid north", {middle.GetX() - text.GetWidth("grid north") / 2,
                                  middle.GetY() + height / 2 + kCaption / 2});
    }
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
    m_page.Fill();
    m_page.Stroke();
    addHalf(-half);
    m_page.Stroke();
}

}  // namespace cqsurvey::plan
