#pragma once

#include <cstddef>
#include <string>

#include "cqsurvey/plan/PlotOptions.h"
#include "plan/Page.h"
#include "plan/Plan.h"
#include "plan/labels/LabelRoom.h"

namespace cqsurvey::plan {

/// Writes the bearing and the length of each segment along it, and the area of each closed line
/// inside it. They are computed from the job's coordinates, not from the page. What finds no room
/// is left out, as is the number of a segment that is shorter than its number.
class LineLabelPainter {
 public:
    /// All four must outlive the painter.
    LineLabelPainter(Page& page, LabelRoom& room, const Plan& plan, const PlotOptions& options);

    void Draw();

    /// How many numbers found no room.
    [[nodiscard]] std::size_t GetLost() const { return m_lost; }

 private:
    void DrawSegments(const PlanLine& line);
    void DrawArea(const PlanLine& line);
    /// Writes the text above or below the middle of the chord; false when there is no room.
    bool WriteAlong(const std::string& text, const CVector& from, const CVector& to, double rise);
    [[nodiscard]] bool IsFree(const TurnedBox& box) const;

    Page& m_page;
    LabelRoom& m_room;
    const Plan& m_plan;
    const PlotOptions& m_options;
    double m_height;
    std::size_t m_lost = 0;
};

}  // namespace cqsurvey::plan
