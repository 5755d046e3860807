#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "cqsurvey/CVector.h"
#include "plan/Plan.h"

namespace cqsurvey::plan {

/// Finds the point that a text stands at. The points are sorted into the cells of a square grid, so
/// the time to look does not grow with their number.
class PointFinder {
 public:
    /// Finds points of the plan, which must outlive the finder, up to `reach` away.
    PointFinder(const Plan& plan, double reach);

    /// The nearest point within the reach; null when there is none.
    [[nodiscard]] const PlanPoint* Find(const CVector& at) const;

 private:
    [[nodiscard]] std::int64_t CellOf(double value) const;

    double m_reach;
    std::unordered_map<std::uint64_t, std::vector<const PlanPoint*>> m_points;
};

}  // namespace cqsurvey::plan
