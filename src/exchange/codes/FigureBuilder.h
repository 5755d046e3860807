#pragma once

#include <cqsurvey/CqCode.h>

#include <cstddef>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "exchange/codes/FieldCodes.h"

namespace cqsurvey::exchange {

enum class FigureShape { Line, Circle, Rectangle };

/// A point of a figure.
struct FigurePoint {
    std::size_t point = 0;  ///< its index among the points
    std::size_t row = 0;    ///< the row of its code in the report
    FieldControls controls;
};

/// The points of one line, circle or rectangle, in their order.
struct Figure {
    const CqCode* row = nullptr;
    std::string word;
    FigureShape shape = FigureShape::Line;
    bool closed = false;
    std::optional<double> radius;
    std::optional<double> width;
    std::vector<FigurePoint> points;
};

/// Sorts the points of lines into figures. A figure is open from its first point until it is ended,
/// closed or begun anew, or until it is full: a circle by its radius or its third point, a
/// rectangle by its second point and a width, or by its third. At the end all others are finished.
class FigureBuilder {
 public:
    /// Adds a point to the figure of its code, which must be a line's. `row` is kept for the
    /// caller. False when the code says that a figure goes on which was not open.
    bool Add(std::size_t point, std::size_t row, const FieldCode& code);

    /// The last point of the open figure; nothing when none is open.
    [[nodiscard]] std::optional<std::size_t> FindLast(const std::string& figure) const;

    /// The figures in the order of their first points. Call it once, when all points were added.
    [[nodiscard]] std::vector<Figure> Finish();

 private:
    struct Open {
        std::size_t figure = 0;
        bool isOpen = false;
        bool marked = false;  // the last point had the word of the figure's shape
    };

    [[nodiscard]] static bool MayBecome(const Figure& figure, const FieldControls& controls);
    [[nodiscard]] static bool IsFull(const Figure& figure);

    std::vector<Figure> m_figures;
    std::unordered_map<std::string, Open> m_open;
};

}  // namespace cqsurvey::exchange
