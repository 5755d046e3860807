#pragma once

#include <cairo.h>

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "cqsurvey/plan/PlotOptions.h"
#include "plan/LabelRoom.h"
#include "plan/Page.h"
#include "plan/Plan.h"
#include "plan/Sheet.h"

namespace cqsurvey::plan {

/// Draws a plan on a sheet. Each part has a painter of its own. This class calls them in order: the
/// image, the grid, the drawing, the labels, the map's frame and the title block.
class PlanPainter {
 public:
    /// Draws to `context`, whose unit is a point of 1/72 inch. All four must outlive the painter.
    PlanPainter(cairo_t* context, const Plan& plan, const Sheet& sheet, const PlotOptions& options);

    /// Calls `progress` with the number of items that have been drawn.
    void Paint(const std::function<void(std::size_t)>& progress = {});

    /// How many labels found no room.
    [[nodiscard]] std::size_t GetLostLabels() const { return m_lostLabels; }

    /// What the picture shows: the part that the options ask for, or what fits into the frame.
    [[nodiscard]] const PlanPart& GetPart() const { return m_part; }

    /// Sentences, one for each thing that could not be drawn as it is.
    [[nodiscard]] const std::vector<std::string>& GetNotes() const { return m_page.GetNotes(); }

 private:
    /// Prevents drawing outside the map's frame until cairo_restore.
    void SaveAndClip();
    void PaintItems(const std::function<void(std::size_t)>& progress);

    const Plan& m_plan;
    const PlotOptions& m_options;
    Page m_page;
    PlanPart m_part;
    LabelRoom m_room;
    std::size_t m_lostLabels = 0;
};

}  // namespace cqsurvey::plan
