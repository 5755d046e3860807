#pragma once

#include <vector>

#include "plan/Plan.h"
#include "plan/sheet/Sheet.h"

namespace cqsurvey::plan {

/// Divides a plan that does not fit on one sheet at its scale over several, row by row from the
/// north-west. Neighbours overlap by 15 mm on paper, so that a text or a label at the edge of one
/// is whole on the other. A sheet on which nothing would be drawn is left out.
class Division {
 public:
    /// `sheet` is the one in the middle of the extents. Throws PlanFailure with
    /// error::kInvalidArgument when there would be more than kMostSheets, empty ones included.
    Division(const Plan& plan, const Box& extents, const Sheet& sheet);

    static constexpr int kMostSheets = 1000;

    [[nodiscard]] const std::vector<Sheet>& GetSheets() const { return m_sheets; }

 private:
    std::vector<Sheet> m_sheets;
};

}  // namespace cqsurvey::plan
