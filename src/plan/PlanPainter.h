#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "cqsurvey/plan/PlotOptions.h"
#include "plan/LineStyles.h"
#include "plan/Page.h"
#include "plan/Plan.h"
#include "plan/labels/LabelRoom.h"
#include "plan/sheet/Sheet.h"
#include "plan/sheet/TitleFields.h"

namespace cqsurvey::plan {

/// Draws a plan on a sheet. Each part has a painter of its own. This class calls them in order: the
/// image, the grid, what is filled, the drawing, the labels, the map's frame, the legend and the
/// title block. The drawing is drawn layer by layer, first the layers with lines, so that symbols
/// and texts lie above the lines of others.
class PlanPainter {
 public:
    /// Draws to `canvas`, whose unit is a point of 1/72 inch. They all must outlive the painter.
    PlanPainter(Canvas& canvas, const Plan& plan, const Sheet& sheet, const PlotOptions& options);

    /// Says which of several sheets this is. The key plan, of number 0, has no labels, but the
    /// outlines of the `sheets` and their numbers.
    void SetSheet(const SheetNumber& number, const std::vector<Sheet>& sheets);

    /// Calls `progress` with the number of items that have been drawn.
    void Paint(const std::function<void(std::size_t)>& progress = {});

    /// How many labels found no room.
    [[nodiscard]] std::size_t GetLostLabels() const { return m_lostLabels; }

    /// What the picture shows: the part that the options ask for, or what fits into the frame.
    [[nodiscard]] const PlanPart& GetPart() const { return m_part; }

    /// Sentences, one for each thing that could not be drawn as it is.
    [[nodiscard]] const std::vector<std::string>& GetNotes() const { return m_page.GetNotes(); }

 private:
    void PaintItems(const std::function<void(std::size_t)>& progress);
    void PaintLabels();
    void PaintOutlines();
    /// The places of the items of each layer, in drawing order.
    [[nodiscard]] std::vector<std::vector<std::size_t>> SortByLayer() const;

    const Plan& m_plan;
    const PlotOptions& m_options;
    Page m_page;
    PlanPart m_part;
    LabelRoom m_room;
    LineStyles m_styles;
    SheetNumber m_number;
    const std::vector<Sheet>* m_sheets = nullptr;
    std::size_t m_lostLabels = 0;
};

}  // namespace cqsurvey::plan
