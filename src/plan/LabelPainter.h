#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "cqsurvey/plan/PlotOptions.h"
#include "plan/LabelRoom.h"
#include "plan/Page.h"
#include "plan/Plan.h"

namespace cqsurvey::plan {

/// Draws names, heights and codes beside the points, in the points' colours. A label tries eight
/// places around its point. It takes the first that is free and has no line through it, or else the
/// first that is free. The points come in drawing order, so a job is always labelled the same way.
class LabelPainter {
 public:
    /// All three must outlive the painter. `room` knows what has been drawn.
    LabelPainter(Page& page, LabelRoom& room, const PlotOptions& options);

    /// Draws the labels of the points that lie in the map. `symbolSize` is the size of a point's
    /// symbol in points of 1/72 inch.
    void Draw(const std::vector<PlanItem>& items, double symbolSize);

    /// How many labels found no room.
    [[nodiscard]] std::size_t GetLost() const { return m_lost; }

 private:
    using Corners = std::array<CVector, 8>;

    /// The lines of the point's label, from the top.
    [[nodiscard]] std::vector<std::string> FindRows(const PlanPoint& point) const;
    void DrawLabel(const PlanPoint& point, const CVector& at, double symbolSize);
    /// The first of the corners at which there is room for a label of that size; null when there is
    /// none.
    [[nodiscard]] const CVector* FindRoom(const Corners& corners, const CVector& size) const;

    Page& m_page;
    LabelRoom& m_room;
    const PlotOptions& m_options;
    double m_height;
    std::size_t m_lost = 0;
};

}  // namespace cqsurvey::plan
