#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "cqsurvey/plan/Box.h"

namespace cqsurvey::plan {

/// Knows which parts of the page are taken. The boxes are sorted into the cells of a square grid,
/// so the time to look for room does not grow with the number of boxes.
class LabelPlacer {
 public:
    /// `cell` is the side of a cell, about as large as a usual box.
    explicit LabelPlacer(double cell) : m_cell(cell) {}

    /// Takes the room of `box`, whether it is free or not. A box of more than some thousand cells
    /// is ignored.
    void Take(const Box& box);

    /// True when `box` meets no box that was taken. Also false where very many boxes were taken,
    /// and for a box of more than some thousand cells.
    [[nodiscard]] bool IsFree(const Box& box) const;

    /// True when very many boxes were taken everywhere in `box`, so that nothing in it is free.
    [[nodiscard]] bool IsCrowded(const Box& box) const;

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
