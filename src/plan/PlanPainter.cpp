#include "plan/PlanPainter.h"

#include <algorithm>

#include "plan/EntityPainter.h"
#include "plan/ImagePainter.h"
#include "plan/Wording.h"
#include "plan/labels/LabelPainter.h"
#include "plan/labels/LineLabelPainter.h"
#include "plan/sheet/GridPainter.h"
#include "plan/sheet/Legend.h"
#include "plan/sheet/TitlePainter.h"

namespace cqsurvey::plan {

PlanPainter::PlanPainter(Canvas& canvas, const Plan& plan, const Sheet& sheet,
                         const PlotOptions& options)
    : m_plan(plan),
      m_options(options),
      m_page(canvas, sheet, plan.background),
      m_part(options.extent     ? plan.FindPart(*options.extent)
             : sheet.HoldsAll() ? plan.FindAll()
                                : plan.FindPart(sheet.GetWindow())),
      m_styles(plan, options, m_page) {}

void PlanPainter::SetSheet(const SheetNumber& number, const std::vector<Sheet>& sheets) {
    m_number = number;
    m_sheets = &sheets;
    if (number.number > 0 && number.count > 1) {
        m_part = m_plan.FindPart(m_page.GetSheet().GetWindow());
    }
}

void PlanPainter::Paint(const std::function<void(std::size_t)>& progress) {
    Canvas& canvas = m_page.GetCanvas();
    const PaperSize& paper = m_page.GetSheet().GetPaper();
    m_page.SetColor(m_plan.background);
    canvas.Cover(paper.width * kMillimetre, paper.height * kMillimetre);
    cairo_set_line_join(m_page.GetContext(), CAIRO_LINE_JOIN_ROUND);

    if (m_plan.image) {
        canvas.BeginGroup("Background image");
        canvas.BeginClip(m_page.GetMap());
        ImagePainter(m_page, m_room).Draw(*m_plan.image);
        canvas.EndClip();
        canvas.EndGroup();
    }
    if (m_options.grid) {
        canvas.BeginGroup("Grid");
        GridPainter(m_page).Draw();
        canvas.EndGroup();
    }

    canvas.BeginClip(m_page.GetMap());
    PaintItems(progress);
    if (m_sheets != nullptr && m_number.number == 0) {
        PaintOutlines();
    } else {
        PaintLabels();
    }
    canvas.EndClip();

    canvas.BeginGroup("Frame");
    m_page.SetColor(m_page.GetInk());
    m_page.SetLine(0, kLineWidth);
    m_page.AddRectangle(m_page.GetMap());
    m_page.Stroke();
    canvas.EndGroup();
    if (!m_page.GetTitle().IsEmpty()) {
        if (m_options.legend) {
            canvas.BeginGroup("Legend");
            Legend(m_plan, m_page.GetSheet().GetWindow(),
                   LabelPainter::WritesOnlyHeights(m_options))
                .Draw(m_page, m_styles);
            canvas.EndGroup();
        }
        canvas.BeginGroup("Title");
        TitlePainter(m_page).Draw(m_plan, m_part,
                                  m_options.title.empty() ? m_plan.title.title : m_options.title,
                                  m_lostLabels, m_number);
        canvas.EndGroup();
    }
    if (const std::size_t unknown = m_page.GetText().GetUnknown(); unknown > 0) {
        m_page.AddNote("drawn as boxes: " + Count(unknown, "character") +
                       " that no installed font has");
    }
}

std::vector<std::vector<std::size_t>> PlanPainter::SortByLayer() const {
    std::vector<std::vector<std::size_t>> layers(m_plan.layers.size());
    for (std::size_t i = 0; i < m_plan.items.size(); ++i) {
        layers[GetLayer(m_plan.items[i])].push_back(i);
    }
    const auto isLine = [&](std::size_t place) {
        return std::holds_alternative<PlanLine>(m_plan.items[place]) ||
               std::holds_alternative<PlanCircle>(m_plan.items[place]);
    };
    for (std::vector<std::size_t>& places : layers) {
        std::stable_partition(places.begin(), places.end(), isLine);
    }
    std::stable_partition(layers.begin(), layers.end(), [&](const auto& places) {
        return !places.empty() && isLine(places.front());
    });
    return layers;
}

void PlanPainter::PaintItems(const std::function<void(std::size_t)>& progress) {
    EntityPainter entities(m_page, m_room, m_styles, m_plan.symbolSize, m_options.labelHeight);
    entities.SetSpots(LabelPainter::WritesOnlyHeights(m_options));
    // Symbols and the like are larger than their box, so they may reach in from outside.
    const Box window = m_page.GetSheet().GetWindow();
    const Box near = window.Grow((window.GetWidth() + window.GetHeight()) / 8);
    Canvas& canvas = m_page.GetCanvas();
    if (!m_options.fills.empty()) {
        canvas.BeginGroup("Fills");
        for (const PlanItem& item : m_plan.items) {
            if (FindBox(item).Meets(near)) {
                entities.Fill(item);
            }
        }
        canvas.EndGroup();
    }
    std::size_t done = 0;
    for (const std::vector<std::size_t>& layer : SortByLayer()) {
        if (layer.empty()) {
            continue;
        }
        canvas.BeginGroup(m_plan.layers[GetLayer(m_plan.items[layer.front()])].name);
        for (const std::size_t place : layer) {
            const PlanItem& item = m_plan.items[place];
            if (FindBox(item).Meets(near)) {
                entities.Draw(item);
            }
            ++done;
            if (progress) {
                progress(done);
            }
        }
        entities.Flush();
        canvas.EndGroup();
    }
    m_part.objects -= std::min(m_part.objects, entities.GetLostTexts());
    entities.AddNotes();
}

void PlanPainter::PaintLabels() {
    m_page.GetCanvas().BeginGroup("Labels");
    LineLabelPainter lines(m_page, m_room, m_plan, m_options);
    lines.Draw();
    LabelPainter labels(m_page, m_room, m_plan, m_options);
    labels.Draw();
    m_lostLabels = labels.GetLost() + lines.GetLost();
    m_page.GetCanvas().EndGroup();
}

void PlanPainter::PaintOutlines() {
    constexpr double kLargest = 6.0 * kMillimetre;
    constexpr int kDashed = 1;
    m_page.GetCanvas().BeginGroup("Sheets");
    m_page.SetColor(m_page.GetInk());
    int number = 0;
    for (const Sheet& sheet : *m_sheets) {
        const Box window = sheet.GetWindow();
        Box box;
        box.Add(m_page.ToPage(CVector(window.minX, window.minY)));
        box.Add(m_page.ToPage(CVector(window.maxX, window.maxY)));
        m_page.SetLine(kDashed, kLineWidth);
        m_page.AddRectangle(box);
        m_page.Stroke();
        TextPainter& text = m_page.GetText();
        const double height = std::min(kLargest, box.GetHeight() / 4);
        text.SetFont(height, true);
        text.SetHalo(m_page.GetBackground());
        const std::string digits = std::to_string(++number);
        text.Write(digits, {(box.minX + box.maxX - text.GetWidth(digits)) / 2,
                            (box.minY + box.maxY + height) / 2});
        text.SetHalo(std::nullopt);
    }
    m_page.GetCanvas().EndGroup();
}

}  // namespace cqsurvey::plan
