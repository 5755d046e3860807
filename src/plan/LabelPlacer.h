#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "cqsurvey/plan/Box.h"

namespace cqsurvey::plan {

/// Knows which room on paper is taken. The boxes are sorted into the cells of a square grid, so
/// that to look for room takes no longer the more boxes there are.
class LabelPlacer {
 public:
    /// `cell` is the side of a cell, about the size of what is taken.
    explicit LabelPlacer(double cell) : m_cell(cell) {}

    /// Takes the room of `box`, free or not. A box of more than some thousand cells is ignored.
    void Take(const Box& box);

    /// True when nothing that was taken meets `box`. Also false in a cell where very much was
    /// taken, and for a box of more than some thousand cells.
    [[nodiscard]] bool IsFree(const Box& box) const;

 private:
    struct Cells {
        std::int32_t left, top, right, bottom;
    };
    [[nodiscard]] Cells FindCells(const Box& box) const;
    [[nodiscard]] static bool IsLarge(const Cells& cells);

    double m_cell;
    std::unordered_map<std::uint64_t, std::vector<Box>> m_taken;
};

}  // namespace cqsurvey::plan
