#include "plan/labels/PointFinder.h"

#include <cmath>
#include <variant>

namespace cqsurvey::plan {

namespace {

/// Cells far apart may share a key; then a few more points are compared.
std::uint64_t KeyOf(std::int64_t x, std::int64_t y) {
    constexpr std::uint64_t kSpread = 0x9E3779B97F4A7C15U;
    return static_cast<std::uint64_t>(x) * kSpread + static_cast<std::uint64_t>(y);
}

}  // namespace

PointFinder::PointFinder(const Plan& plan, double reach) : m_reach(reach) {
    for (const PlanItem& item : plan.items) {
        if (const auto* point = std::get_if<PlanPoint>(&item)) {
            m_points[KeyOf(CellOf(point->at.GetX()), CellOf(point->at.GetY()))].push_back(point);
        }
    }
}

std::int64_t PointFinder::CellOf(double value) const {
    constexpr double kFar = 1e18;
    const double cell = std::floor(value / m_reach);
    return std::fabs(cell) < kFar ? static_cast<std::int64_t>(cell) : 0;
}

const PlanPoint* PointFinder::Find(const CVector& at) const {
    const PlanPoint* nearest = nullptr;
    double least = m_reach;
    const std::int64_t column = CellOf(at.GetX());
    const std::int64_t row = CellOf(at.GetY());
    for (std::int64_t x = column - 1; x <= column + 1; ++x) {
        for (std::int64_t y = row - 1; y <= row + 1; ++y) {
            const auto found = m_points.find(KeyOf(x, y));
            if (found == m_points.end()) {
                continue;
            }
            for (const PlanPoint* point : found->second) {
                const double away = (point->at - at).UNorm();
                if (away < least || (nearest == nullptr && away == least)) {
                    nearest = point;
                    least = away;
                }
            }
        }
    }
    return nearest;
}

}  // namespace cqsurvey::plan
