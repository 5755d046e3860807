#pragma once

#include <array>
#include <string>

#include "plan/Page.h"
#include "plan/Plan.h"

namespace cqsurvey::plan {

/// Draws the title block below the map. From the left it has the heading with the extents and the
/// counts of what is shown, the scale with its bar, and the north arrow.
class TitlePainter {
 public:
    /// `page` must outlive the painter; its sheet has a title block.
    explicit TitlePainter(Page& page) : m_page(page) {}

    void Draw(const Plan& plan, const PlanPart& part, const std::string& heading);

 private:
    void DrawHeading(const Plan& plan, const PlanPart& part, const std::string& heading,
                     const CVector& at, double width);
    /// Draws the scale and its bar into a space of that width, whose upper left corner is `at`.
    void DrawScale(const Plan& plan, const CVector& at, double width);
    void DrawNorthArrow(const CVector& middle, double height);

    Page& m_page;
};

}  // namespace cqsurvey::plan
