#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "plan/Page.h"
#include "plan/Plan.h"
#include "plan/sheet/TitleFields.h"

namespace cqsurvey::plan {

/// Draws the title block below the map. From the left it has the heading with the extents and the
/// counts of what is shown, the scale with its bar, and the north arrow; below them its fields.
class TitlePainter {
 public:
    /// `page` must outlive the painter; its sheet has a title block.
    explicit TitlePainter(Page& page) : m_page(page) {}

    /// `lost` is the number of labels that found no room.
    void Draw(const Plan& plan, const PlanPart& part, const std::string& heading, std::size_t lost,
              const SheetNumber& sheet);

 private:
    void DrawHeading(const std::string& heading, const std::array<std::string, 3>& rows,
                     const CVector& at, double width);
    /// Draws the scale and its bar into a space of that width, whose upper left corner is `at`.
    void DrawScale(const Plan& plan, const CVector& at, double width);
    /// `isGrid`: the direction is that of a known system's grid.
    void DrawNorthArrow(const CVector& middle, double height, bool isGrid);
    void DrawFields(const std::vector<TitleField>& fields, const Box& box);

    Page& m_page;
};

}  // namespace cqsurvey::plan
