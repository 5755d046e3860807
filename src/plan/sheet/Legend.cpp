#include "plan/sheet/Legend.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "plan/symbols/SymbolPainter.h"

namespace cqsurvey::plan {

Legend::Legend(const Plan& plan, const Box& part, bool onlyHeights) : m_plan(plan) {
    // The colour of the first sign of a kind is that of its entry.
    std::array<std::optional<int>, kSymbols> symbols{};
    std::vector<std::optional<Entry>> lines(plan.layers.size());
    for (const PlanItem& item : plan.items) {
        const auto* point = std::get_if<PlanPoint>(&item);
        const auto* line = std::get_if<PlanLine>(&item);
        if (point == nullptr && (line == nullptr || lines[line->layer])) {
            continue;
        }
        if (!FindBox(item).Meets(part)) {
            continue;
        }
        if (line != nullptr) {
            lines[line->layer] = Entry{Line{line->layer, line->line, line->code}, line->color,
                                       plan.layers[line->layer].name};
            continue;
        }
        const Symbol symbol = point->IsSpot(onlyHeights) ? Symbol::Spot : point->symbol;
        std::optional<int>& color = symbols.at(static_cast<std::size_t>(symbol));
        color = color.value_or(point->color);
    }
    for (std::size_t i = 0; i < symbols.size(); ++i) {
        if (symbols.at(i)) {
            const auto symbol = static_cast<Symbol>(i);
            m_entries.push_back({symbol, *symbols.at(i), GetMeaning(symbol)});
        }
    }
    for (std::optional<Entry>& entry : lines) {
        // What every job draws on without choosing a layer says nothing.
        if (entry && !entry->text.empty() && entry->text != "0") {
            m_entries.push_back(std::move(*entry));
        }
    }
    // A cross alone needs no explanation.
    if (m_entries.size() == 1 && symbols.front()) {
        m_entries.clear();
    }
}

void Legend::Draw(Page& page, LineStyles& styles) const {
    constexpr double kHeight = 1.75 * kMillimetre;
    constexpr double kSign = 12.0 * kMillimetre;
    constexpr double kPad = 1.5 * kMillimetre;
    const Tiles& tiles = page.GetSheet().GetEntries();
    const Box& box = page.GetLegend();
    if (tiles.rows == 0) {
        return;
    }
    page.SetColor(page.GetInk());
    page.SetLine(0, kLineWidth);
    page.AddRectangle(box);
    page.Stroke();
    for (std::size_t i = 0; i < std::min(m_entries.size(), tiles.rows * tiles.columns); ++i) {
        const std::size_t row = i / tiles.columns;
        const double left =
            box.minX + static_cast<double>(i % tiles.columns) * tiles.width * kMillimetre;
        const double middle =
            box.minY + kPad + (static_cast<double>(row) + 0.5) * tiles.height * kMillimetre;
        DrawSign(page, styles, m_entries[i], {left + kSign / 2 + kPad, middle});
        page.SetColor(page.GetInk());
        page.WriteFitting(m_entries[i].text, {left + kSign + 2 * kPad, middle + kHeight / 2},
                          kHeight, tiles.width * kMillimetre - kSign - 3 * kPad);
    }
}

void Legend::DrawSign(Page& page, LineStyles& styles, const Entry& entry,
                      const CVector& middle) const {
    constexpr double kHalf = 6.0 * kMillimetre;
    constexpr double kLargest = 4.0 * kMillimetre;
    cairo_t* context = page.GetContext();
    const Rgb color = page.GetColors().OfLine(entry.color);
    if (const auto* line = std::get_if<Line>(&entry.sign)) {
        page.SetColor(color);
        page.SetLine(line->line, styles.GetWidth(line->layer, line->code));
        cairo_move_to(context, middle.GetX() - kHalf, middle.GetY());
        cairo_line_to(context, middle.GetX() + kHalf, middle.GetY());
        page.Stroke();
        return;
    }
    const Symbol symbol = std::get<Symbol>(entry.sign);
    if (symbol == Symbol::None) {
        const double half = std::min(kLargest, m_plan.symbolSize) / 2;
        page.SetColor(color);
        page.SetLine(0, kThinWidth);
        cairo_move_to(context, middle.GetX() - half, middle.GetY());
        cairo_line_to(context, middle.GetX() + half, middle.GetY());
        cairo_move_to(context, middle.GetX(), middle.GetY() - half);
        cairo_line_to(context, middle.GetX(), middle.GetY() + half);
        page.Stroke();
        return;
    }
    SymbolPainter(page).Draw(symbol, middle, std::min(kLargest, GetUsualSize(symbol) * kMillimetre),
                             color);
}

}  // namespace cqsurvey::plan
