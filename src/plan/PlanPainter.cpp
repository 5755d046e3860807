#include "plan/PlanPainter.h"

#include "plan/EntityPainter.h"
#include "plan/GridPainter.h"
#include "plan/ImagePainter.h"
#include "plan/LabelPainter.h"
#include "plan/TitlePainter.h"
#include "plan/Wording.h"

namespace cqsurvey::plan {

PlanPainter::PlanPainter(cairo_t* context, const Plan& plan, const Sheet& sheet,
                         const PlotOptions& options)
    : m_plan(plan),
      m_options(options),
      m_page(context, sheet, plan.background),
      m_part(options.extent     ? plan.FindPart(*options.extent)
             : sheet.HoldsAll() ? plan.FindAll()
                                : plan.FindPart(sheet.GetWindow())) {}

void PlanPainter::SaveAndClip() {
    cairo_save(m_page.GetContext());
    m_page.AddRectangle(m_page.GetMap());
    cairo_clip(m_page.GetContext());
}

void PlanPainter::Paint(const std::function<void(std::size_t)>& progress) {
    cairo_t* context = m_page.GetContext();
    m_page.SetColor(m_plan.background);
    cairo_paint(context);
    cairo_set_line_join(context, CAIRO_LINE_JOIN_ROUND);

    SaveAndClip();
    if (m_plan.image) {
        ImagePainter(m_page, m_room).Draw(*m_plan.image);
    }
    cairo_restore(context);
    if (m_options.grid) {
        GridPainter(m_page).Draw();
    }

    SaveAndClip();
    PaintItems(progress);
    LabelPainter labels(m_page, m_room, m_options);
    labels.Draw(m_plan.items, m_plan.symbolSize);
    m_lostLabels = labels.GetLost();
    cairo_restore(context);

    m_page.SetColor(m_page.GetInk());
    m_page.SetLine(0, kLineWidth);
    m_page.AddRectangle(m_page.GetMap());
    cairo_stroke(context);
    if (!m_page.GetTitle().IsEmpty()) {
        TitlePainter(m_page).Draw(m_plan, m_part, m_options.title);
    }
    if (const std::size_t unknown = m_page.GetText().GetUnknown(); unknown > 0) {
        m_page.AddNote("drawn as boxes: " + Count(unknown, "character") +
                       " that no installed font has");
    }
}

void PlanPainter::PaintItems(const std::function<void(std::size_t)>& progress) {
    EntityPainter entities(m_page, m_room, m_plan.symbolSize, m_options.labelHeight);
    // Symbols and the like are larger than their box, so they may reach in from outside.
    const Box window = m_page.GetSheet().GetWindow();
    const Box near = window.Grow((window.GetWidth() + window.GetHeight()) / 8);
    std::size_t done = 0;
    for (const PlanItem& item : m_plan.items) {
        if (FindBox(item).Meets(near)) {
            entities.Draw(item);
        }
        ++done;
        if (progress) {
            progress(done);
        }
    }
    entities.Flush();
}

}  // namespace cqsurvey::plan
