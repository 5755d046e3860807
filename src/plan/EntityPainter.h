#pragma once

#include <cstddef>

#include "plan/LabelRoom.h"
#include "plan/Page.h"
#include "plan/Pen.h"
#include "plan/Plan.h"

namespace cqsurvey::plan {

/// Draws the items of a plan, one kind of item by each Draw. What labels must keep clear of is
/// noted in their room.
class EntityPainter {
 public:
    /// `symbolSize` is that of a point's symbol in points of 1/72 inch, `textHeight` that of texts
    /// without a height of their own, in millimetres. Page and room must outlive the painter.
    EntityPainter(Page& page, LabelRoom& room, double symbolSize, double textHeight);

    /// Draws an item. Points may wait for Flush.
    void Draw(const PlanItem& item);

    /// Draws the points that wait.
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
