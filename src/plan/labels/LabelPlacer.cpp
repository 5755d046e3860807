#include "plan/labels/LabelPlacer.h"

#include <algorithm>
#include <cmath>

namespace cqsurvey::plan {

namespace {

constexpr std::int64_t kMostCells = 4096;

// A cell with so many boxes counts as full, so that searching one is never slow.
constexpr std::size_t kCrowd = 32;

std::uint64_t KeyOf(std::int32_t x, std::int32_t y) {
    return (static_cast<std::uint64_t>(static_cast<std::uint32_t>(x)) << 32U) |
           static_cast<std::uint32_t>(y);
}

}  // namespace

LabelPlacer::Cells LabelPlacer::FindCells(const Box& box) const {
    const auto cell = [this](double value) {
        constexpr double kLimit = 1e9;
        return static_cast<std::int32_t>(std::clamp(std::floor(value / m_cell), -kLimit, kLimit));
    };
    return {cell(box.minX), cell(box.minY), cell(box.maxX), cell(box.maxY)};
}

bool LabelPlacer::IsLarge(const Cells& cells) {
    const std::int64_t wide = std::int64_t{cells.right} - cells.left + 1;
    const std::int64_t high = std::int64_t{cells.bottom} - cells.top + 1;
    return wide > kMostCells || high > kMostCells || wide * high > kMostCells;
}

void LabelPlacer::Take(const Box& box) {
    if (box.IsEmpty()) {
        return;
    }
    const Cells cells = FindCells(box);
    if (IsLarge(cells)) {
        return;
    }
    for (std::int32_t x = cells.left; x <= cells.right; ++x) {
        for (std::int32_t y = cells.top; y <= cells.bottom; ++y) {
            std::vector<Box>& taken = m_taken[KeyOf(x, y)];
            if (taken.size() < kCrowd) {
                taken.push_back(box);
            }
        }
    }
}

bool LabelPlacer::IsCrowded(const Box& box) const {
    const Cells cells = FindCells(box);
    if (IsLarge(cells)) {
        return false;
    }
    for (std::int32_t x = cells.left; x <= cells.right; ++x) {
        for (std::int32_t y = cells.top; y <= cells.bottom; ++y) {
            const auto found = m_taken.find(KeyOf(x, y));
            if (found == m_taken.end() || found->second.size() < kCrowd) {
                return false;
            }
        }
    }
    return true;
}

bool LabelPlacer::IsFree(const Box& box) const {
    const Cells cells = FindCells(box);
    if (IsLarge(cells)) {
        return false;
    }
    for (std::int32_t x = cells.left; x <= cells.right; ++x) {
        for (std::int32_t y = cells.top; y <= cells.bottom; ++y) {
            const auto found = m_taken.find(KeyOf(x, y));
            if (found == m_taken.end()) {
                continue;
            }
            if (found->second.size() == kCrowd ||
                std::any_of(found->second.begin(), found->second.end(),
                            [&](const Box& taken) { return taken.Meets(box); })) {
                return false;
            }
        }
    }
    return true;
}

}  // namespace cqsurvey::plan
