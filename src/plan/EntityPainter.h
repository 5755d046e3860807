#pragma once

#include <cstddef>

#include "plan/LabelRoom.h"
#include "plan/Page.h"
#include "plan/Pen.h"
#include "plan/Plan.h"

namespace cqsurvey::plan {

/// Draws the items of a plan, each kind in a Draw of its own, and tells the label room where labels
/// may not stand.
class EntityPainter {
 public:
    /// `symbolSize` is the size of a point's symbol in points of 1/72 inch, `textHeight` the height
    /// of texts that have none of their own, in millimetres. Page and room must outlive the
    /// painter.
    EntityPainter(Page& page, LabelRoom& room, double symbolSize, double textHeight);

    /// Draws an item. A point may be drawn only by the next Flush.
    void Draw(const PlanItem& item);

    /// Draws the points that are still to be drawn.
    void Flush();

 private:
    void Draw(const PlanPoint& point);
    void Draw(const PlanLine& line);
    void Draw(const PlanCircle& circle);
    void Draw(const PlanText& text);
    void Draw(const PlanFrame& frame);

    Page& m_page;
    LabelRoom& m_room;
    Pen m_pen;
    double m_symbolSize;
    double m_textHeight;
    std::size_t m_symbols = 0;  ///< in the path
    int m_symbolColor = 0;
};

}  // namespace cqsurvey::plan
