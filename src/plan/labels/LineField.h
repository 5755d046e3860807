#pragma once

#include <array>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "cqsurvey/CVector.h"
#include "cqsurvey/plan/Box.h"

namespace cqsurvey::plan {

/// Knows where lines pass on the page, exactly. The lines are sorted into the cells of a square
/// grid, so the time to look does not grow with their number.
class LineField {
 public:
    /// `cell` is the side of a cell, about as large as a usual box.
    explicit LineField(double cell) : m_cell(cell) {}

    /// Adds a straight line. One through more than some thousand cells is ignored.
    void Add(const CVector& from, const CVector& to);

    /// True when no line passes through `box`. Also false where very many lines pass, and for a box
    /// of more than some thousand cells.
    [[nodiscard]] bool IsFree(const Box& box) const;

    /// True when the straight line between the two places crosses and touches no line. Also false
    /// where very many lines pass, and for one through more than some thousand cells.
    [[nodiscard]] bool IsFree(const CVector& from, const CVector& to) const;

    /// A cell that so many lines pass counts as full.
    static constexpr std::size_t kCrowd = 48;

 private:
    using Line = std::array<float, 4>;

    [[nodiscard]] std::int32_t CellOf(double value) const;
    void AddToCell(std::int32_t x, std::int32_t y, const Line& line);
    /// Calls `visit` with each cell that the straight line passes, until it returns false. False
    /// when it did, and when there are more than some thousand cells.
    template <class Visit>
    bool VisitCells(const CVector& from, const CVector& to, const Visit& visit) const;

    double m_cell;
    std::unordered_map<std::uint64_t, std::vector<Line>> m_lines;
};

}  // namespace cqsurvey::plan
