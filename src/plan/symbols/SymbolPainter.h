#pragma once

#include "cqsurvey/CVector.h"
#include "plan/Page.h"
#include "plan/symbols/Symbol.h"

namespace cqsurvey::plan {

/// Paints the symbols of points. Each fills a circle of the size that it is asked for, with its
/// position in the middle (a sign's is its foot). Inside, a symbol hides what is below it.
class SymbolPainter {
 public:
    /// `page` must outlive the painter.
    explicit SymbolPainter(Page& page) : m_page(page) {}

    /// Draws a symbol other than None at a place of the page. `size` is its diameter in points of
    /// 1/72 inch.
    void Draw(Symbol symbol, const CVector& at, double size, Rgb color);

 private:
    enum class Ink { Hollow, Full };

    // Places and lengths in the symbol: its radius is 1, y goes up.
    void MoveTo(double x, double y);
    void LineTo(double x, double y);
    void AddLine(double x1, double y1, double x2, double y2);
    void AddCircle(double x, double y, double radius);
    void AddRectangle(double x1, double y1, double x2, double y2);
    /// Adds a star of that many points, whose inner corners are on a circle of that radius.
    void AddStar(int points, double inner);
    /// Draws the closed path: its line, and inside the background or the colour.
    void Draw(Ink ink);

    void DrawTree(Symbol symbol);
    void DrawUtility(Symbol symbol);
    void DrawPost(Symbol symbol);
    void DrawMark(Symbol symbol);

    Page& m_page;
    CVector m_at;
    double m_radius = 0.0;
    Rgb m_color;
};

}  // namespace cqsurvey::plan
