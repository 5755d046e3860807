#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "cqsurvey/plan/PlotOptions.h"
#include "plan/Page.h"
#include "plan/Plan.h"
#include "plan/labels/LabelRoom.h"
#include "plan/labels/LabelSearch.h"

namespace cqsurvey::plan {

/// Draws names, heights and codes beside the points, so that they can be told apart: names in the
/// point's colour, heights smaller and brown, codes smaller still and grey.
///
/// A spot height has its usual form: the point is the decimal mark, with the metres to its left and
/// the decimals to its right. A point is a spot height when its symbol is the spot, and also, as a
/// dot instead of its cross, when nothing but its height is to be written.
///
/// The texts that were drawn from field codes come first (PlanText::isLabel), then the points, all
/// in drawing order, so a job is always labelled the same way.
class LabelPainter {
 public:
    /// All four must outlive the painter. `room` knows what has been drawn.
    LabelPainter(Page& page, LabelRoom& room, const Plan& plan, const PlotOptions& options);

    /// Draws the labels of the points that lie in the map.
    void Draw();

    /// How many labels found no room.
    [[nodiscard]] std::size_t GetLost() const { return m_lost; }

    /// True when the options ask for nothing but heights, so that points without a symbol are spot
    /// heights.
    [[nodiscard]] static bool WritesOnlyHeights(const PlotOptions& options);

 private:
    struct Row {
        std::string text;
        double height;  ///< of capitals
        Rgb color;
    };
    struct Point {
        CVector at;
        double half;  ///< radius of the symbol
        double core;  ///< what of it is taken
    };

    /// Writes the texts that are labels, each in the group of its layer.
    void DrawTexts();
    [[nodiscard]] bool IsInMap(const CVector& at) const;
    /// How the point is drawn.
    [[nodiscard]] Point FindPlace(const PlanPoint& point) const;
    /// The rows of the point's label, from the top.
    [[nodiscard]] std::vector<Row> FindRows(const PlanPoint& point, bool spot) const;
    /// The height's row is written around the point; false when there is no room for it.
    bool DrawSpot(const PlanPoint& point, const Point& place);
    void DrawRows(const std::vector<Row>& rows, const Point& place);
    [[nodiscard]] std::string FormatHeight(const PlanPoint& point) const;
    [[nodiscard]] Rgb GetHeightColor(const PlanPoint& point) const;
    [[nodiscard]] Rgb GetCodeColor(const PlanPoint& point) const;

    Page& m_page;
    LabelRoom& m_room;
    const Plan& m_plan;
    const PlotOptions& m_options;
    LabelSearch m_search;
    double m_height;
    std::size_t m_lost = 0;
};

}  // namespace cqsurvey::plan
