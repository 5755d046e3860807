#pragma once

#include <string>
#include <utility>
#include <vector>

#include "cqsurvey/CVector.h"
#include "cqsurvey/plan/Box.h"
#include "plan/canvas/Canvas.h"
#include "plan/canvas/Palette.h"
#include "plan/canvas/PaperColors.h"
#include "plan/canvas/TextPainter.h"
#include "plan/canvas/Units.h"
#include "plan/sheet/Sheet.h"

namespace cqsurvey::plan {

/// Widths of lines and distances of rows of text, everywhere on the page.
inline constexpr double kLineWidth = 0.25 * kMillimetre;
inline constexpr double kThinWidth = 0.13 * kMillimetre;
inline constexpr double kSymbolWidth = 0.18 * kMillimetre;
/// From baseline to baseline, for capitals of height 1.
inline constexpr double kLeading = 1.6;

/// The page that is drawn. Each painter draws one part of the plan, and all of them share the
/// page. It knows where on it a position of the job is, sets colours and line types, writes texts,
/// and collects notes about the picture. Its unit is a point of 1/72 inch; x goes right and y down
/// from the upper left corner.
class Page {
 public:
    /// Draws to `canvas`. It and `sheet` must outlive the page.
    Page(Canvas& canvas, const Sheet& sheet, Rgb background);

    [[nodiscard]] Canvas& GetCanvas() const { return m_canvas; }
    /// Where paths are built; the canvas draws them.
    [[nodiscard]] cairo_t* GetContext() const { return m_canvas.GetContext(); }
    [[nodiscard]] const Sheet& GetSheet() const { return m_sheet; }
    [[nodiscard]] Rgb GetBackground() const { return m_background; }
    /// The colour of everything that is not part of the drawing.
    [[nodiscard]] Rgb GetInk() const { return m_ink; }
    /// The palette's colours, as they are drawn on the background.
    [[nodiscard]] const PaperColors& GetColors() const { return m_colors; }
    /// The map's frame.
    [[nodiscard]] const Box& GetMap() const { return m_map; }
    /// The title block; empty when the sheet has none.
    [[nodiscard]] const Box& GetTitle() const { return m_title; }
    /// The legend; empty when the sheet has none.
    [[nodiscard]] const Box& GetLegend() const { return m_legend; }
    [[nodiscard]] TextPainter& GetText() { return m_text; }

    /// Where a position of the job is on the page.
    [[nodiscard]] CVector ToPage(const CVector& place) const;
    /// The length on the page of a length in the job.
    [[nodiscard]] double ToPage(double length) const;

    void SetColor(Rgb color);
    /// Sets a colour of the palette for lines and symbols.
    void SetColor(int color) { SetColor(m_colors.OfLine(color)); }
    /// Sets the type (LinePattern) and the width of the lines to be drawn.
    void SetLine(int type, double width);
    /// Adds the rectangle to the path.
    void AddRectangle(const Box& box);
    /// Draws the path as a line and ends it.
    void Stroke() { m_canvas.Stroke(); }
    /// Fills the path. It is still there afterwards.
    void Fill() { m_canvas.Fill(); }

    /// Writes a line of text, with capitals of `height` or as much smaller as it takes to be at
    /// most `width` long. `at` is its lower left corner.
    void WriteFitting(const std::string& text, const CVector& at, double height, double width,
                      bool bold = false);

    /// Adds a sentence about something that could not be drawn as it is.
    void AddNote(std::string note) { m_notes.push_back(std::move(note)); }
    [[nodiscard]] const std::vector<std::string>& GetNotes() const { return m_notes; }

 private:
    Canvas& m_canvas;
    const Sheet& m_sheet;
    Rgb m_background;
    Rgb m_ink;
    PaperColors m_colors;
    Box m_map;
    Box m_title;
    Box m_legend;
    TextPainter m_text;
    std::vector<std::string> m_notes;
};

}  // namespace cqsurvey::plan
