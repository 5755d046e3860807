#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "plan/LineStyles.h"
#include "plan/Page.h"
#include "plan/Pen.h"
#include "plan/Plan.h"
#include "plan/labels/LabelRoom.h"
#include "plan/symbols/SymbolPainter.h"

namespace cqsurvey::plan {

/// Draws the items of a plan, each kind in a Draw of its own, and tells the label room where labels
/// may not stand.
class EntityPainter {
 public:
    /// `symbolSize` is the size of a plain point's cross in points of 1/72 inch, `textHeight` the
    /// height of texts that have none of their own, in millimetres. Page, room and styles must
    /// outlive the painter.
    EntityPainter(Page& page, LabelRoom& room, LineStyles& styles, double symbolSize,
                  double textHeight);

    /// Draws points as dots that mark the decimals of their heights (PlanPoint::IsSpot), if all
    /// that is written beside points is heights.
    void SetSpots(bool onlyHeights) { m_onlyHeights = onlyHeights; }

    /// Fills a line or a circle, if its style says so.
    void Fill(const PlanItem& item);

    /// Draws an item, unless it is a label (PlanText::isLabel). A point may be drawn only by the
    /// next Flush.
    void Draw(const PlanItem& item);

    /// Draws the points that are still to be drawn.
    void Flush();

    /// How many texts were left out because they are too large or too small for the scale, or
    /// because the frame would have cut them.
    [[nodiscard]] std::size_t GetLostTexts() const { return m_lostTexts; }

    /// Says on the page which texts were left out.
    void AddNotes();

    /// The diameter of a point's symbol in points of 1/72 inch.
    [[nodiscard]] static double GetSize(const PlanPoint& point, double symbolSize);

 private:
    /// Texts of a size that cannot be drawn.
    struct Unfit {
        std::size_t count = 0;
        std::string first;  ///< for a message
    };

    void Draw(const PlanPoint& point);
    void Draw(const PlanLine& line);
    void Draw(const PlanCircle& circle);
    void Draw(const PlanText& text);
    void Draw(const PlanFrame& frame);
    void AddToPath(const PlanLine& line);
    /// How far to move something that has this box so that the frame does not cut it; nothing when
    /// it has to be left out.
    [[nodiscard]] std::optional<CVector> FindShift(const CVector& at, const Box& box) const;

    Page& m_page;
    LabelRoom& m_room;
    LineStyles& m_styles;
    Pen m_pen;
    SymbolPainter m_symbol;
    double m_symbolSize;
    double m_textHeight;
    bool m_onlyHeights = false;
    std::vector<CVector> m_crosses;  ///< that are still to be drawn, all of one colour
    int m_crossColor = 0;
    Unfit m_tooLarge;
    Unfit m_tooSmall;
    std::size_t m_lostTexts = 0;
    std::size_t m_cutTexts = 0;
};

}  // namespace cqsurvey::plan
