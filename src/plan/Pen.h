#pragma once

#include <span>

#include "cqsurvey/CVector.h"
#include "cqsurvey/plan/Box.h"
#include "plan/Geometry.h"
#include "plan/Page.h"
#include "plan/labels/LabelRoom.h"

namespace cqsurvey::plan {

/// Adds straight lines and arcs to the page's path. First it cuts off what is too far away for
/// cairo's numbers. Where a line passes through the map, it tells the label room, so that labels
/// avoid the line.
class Pen {
 public:
    /// How far outside the map something that is handed to cairo may be: far beyond any page, and
    /// well within cairo's numbers.
    static constexpr double kReach = 20'000.0;

    /// Both must outlive the pen.
    Pen(Page& page, LabelRoom& room);

    /// Begins a new line, so the next piece does not continue the last one.
    void Lift() { m_isDown = false; }

    /// Adds a piece that begins where the last one ended.
    void DrawSegment(const CVector& from, const CVector& to);
    void DrawArc(const Arc& arc);

    /// Adds a circle. It is a closed path when all of it can be drawn.
    void DrawCircle(const CVector& centre, double radius);

    /// Adds the sides of a polygon.
    void DrawOutline(std::span<const CVector> corners);

 private:
    void MarkLine(CVector from, CVector to);

    Page& m_page;
    LabelRoom& m_room;
    Box m_reach;  ///< what may be handed to cairo
    bool m_isDown = false;
};

}  // namespace cqsurvey::plan
