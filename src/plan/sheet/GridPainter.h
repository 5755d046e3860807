#pragma once

#include <vector>

#include "plan/Page.h"

namespace cqsurvey::plan {

/// Draws the grid of round coordinates over the map: pale crosses where its lines meet. A sheet
/// with a title block also has ticks and numbers at the frame: the eastings above and below the
/// map, the northings at its sides, to be read from the right. A number that would reach beyond the
/// map or into its neighbour is left out.
class GridPainter {
 public:
    /// `page` must outlive the painter.
    explicit GridPainter(Page& page) : m_page(page) {}

    void Draw();

 private:
    /// A line of the grid: where it is on the page, and its coordinate.
    struct Line {
        double page;
        double value;
    };

    enum class Axis { East, North };

    [[nodiscard]] std::vector<Line> FindLines(Axis axis, double step) const;
    void DrawCrosses();
    void DrawTicks();
    void DrawNumbers(Axis axis, double step);

    Page& m_page;
    std::vector<Line> m_columns;
    std::vector<Line> m_rows;
};

}  // namespace cqsurvey::plan
