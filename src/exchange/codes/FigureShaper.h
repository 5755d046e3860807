#pragma once

#include <cqsurvey/CVector.h>

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cqsurvey/exchange/CodeReport.h"
#include "exchange/codes/FieldPoint.h"
#include "exchange/codes/FigureBuilder.h"
#include "exchange/codes/FigurePath.h"

namespace cqsurvey::exchange {

/// Something to tell about a row of the report.
struct Finding {
    std::size_t row = 0;
    CodeFate fate = CodeFate::Suspicious;
    std::string reason;
};

/// A figure as it is drawn.
struct ShapedFigure {
    struct Circle {
        CVector centre;
        double height = 0.0;
        double radius = 0.0;
    };

    std::vector<FigurePath> paths;  ///< the figure itself first, then joins and parallels
    std::optional<Circle> circle;
    std::string_view what;  ///< "line", "circle" ...; empty when nothing could be drawn
    std::vector<Finding> findings;
};

/// Makes the geometry of figures: curves, closing, turns, rectangles, circles, joins and parallels.
/// What cannot be made is left out or drawn straight, with a finding.
class FigureShaper {
 public:
    /// Returns the index of the point of a name; nothing when there is none.
    using NameSearch = std::function<std::optional<std::size_t>(const std::string& name)>;

    /// `points` must outlive the object; `tolerance` is that of arcs.
    FigureShaper(const std::vector<FieldPoint>& points, double tolerance, NameSearch search)
        : m_points(points), m_tolerance(tolerance), m_search(std::move(search)) {}

    [[nodiscard]] ShapedFigure Shape(const Figure& figure) const;

 private:
    class Work;

    const std::vector<FieldPoint>& m_points;
    double m_tolerance;
    NameSearch m_search;
};

}  // namespace cqsurvey::exchange
