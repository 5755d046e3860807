#include "plan/Page.h"

#include <algorithm>
#include <array>
#include <span>

#include "plan/LineType.h"

namespace cqsurvey::plan {

namespace {

/// Converts a box on paper, in millimetres, to the page. An empty one stays empty.
Box FromPaper(const Box& paper) {
    return {paper.minX * kMillimetre, paper.minY * kMillimetre, paper.maxX * kMillimetre,
            paper.maxY * kMillimetre};
}

}  // namespace

Page::Page(Canvas& canvas, const Sheet& sheet, Rgb background)
    : m_canvas(canvas),
      m_sheet(sheet),
      m_background(background),
      m_ink(InkOn(background)),
      m_colors(background),
      m_map(FromPaper(sheet.GetMap())),
      m_title(FromPaper(sheet.GetTitle())),
      m_legend(FromPaper(sheet.GetLegend())),
      m_text(canvas) {}

CVector Page::ToPage(const CVector& place) const {
    const CVector paper = m_sheet.ToPaper(place);
    return {paper.GetX() * kMillimetre, paper.GetY() * kMillimetre};
}

double Page::ToPage(double length) const {
    return m_sheet.ToPaper(length) * kMillimetre;
}

void Page::SetColor(Rgb color) {
    constexpr double kFull = 255.0;
    cairo_set_source_rgb(GetContext(), color.red / kFull, color.green / kFull, color.blue / kFull);
}

void Page::SetLine(int type, double width) {
    std::array<double, 8> dashes{};
    const std::span<const double> pattern = LinePattern(type);
    std::transform(pattern.begin(), pattern.end(), dashes.begin(),
                   [](double length) { return length * kMillimetre; });
    cairo_set_dash(GetContext(), dashes.data(), static_cast<int>(pattern.size()), 0.0);
    cairo_set_line_width(GetContext(), width);
}

void Page::AddRectangle(const Box& box) {
    cairo_rectangle(GetContext(), box.minX, box.minY, box.GetWidth(), box.GetHeight());
}

void Page::WriteFitting(const std::string& text, const CVector& at, double height, double width,
                        bool bold) {
    m_text.SetFont(height, bold);
    const double wanted = m_text.GetWidth(text);
    if (wanted > width) {
        m_text.SetFont(height * width / wanted, bold);
    }
    m_text.Write(text, at);
}

}  // namespace cqsurvey::plan
