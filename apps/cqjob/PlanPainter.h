#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "cqjob/Cairo.h"
#include "cqjob/LabelPlacer.h"
#include "cqjob/Plan.h"
#include "cqjob/Sheet.h"
#include "cqjob/TextPainter.h"

namespace cqsurvey::cqjob {

/// What the user may choose about a picture.
struct PaintChoice {
    std::string title;  ///< UTF-8
    bool names = true;
    bool heights = false;
    bool codes = false;
    double labelHeight = 1.6;  ///< of capitals, in millimetres
    bool allLabels = false;    ///< also those that cover another
    bool grid = true;
};

/// Draws a plan on a sheet: north up, the map in its frame with a grid, and the title block with
/// name, extents, scale bar and north arrow.
class PlanPainter {
 public:
    /// Draws to `context`, whose unit is a point of 1/72 inch. All four must outlive the painter.
    PlanPainter(cairo_t* context, const Plan& plan, const Sheet& sheet, const PaintChoice& choice);

    /// `progress` is told how many items of the plan have been drawn.
    void Paint(const std::function<void(std::size_t)>& progress = {});

    /// How many labels found no room.
    [[nodiscard]] std::size_t GetLostLabels() const { return m_lostLabels; }

    /// What could not be drawn as it is, a sentence each.
    [[nodiscard]] const std::vector<std::string>& GetNotes() const { return m_notes; }

 private:
    [[nodiscard]] CVector ToPage(const CVector& place) const;
    [[nodiscard]] double ToPage(double length) const;

    void SetColor(Rgb color);
    void SetColor(int color);
    void SetLine(int line);
    /// A line of text of at most `width`: smaller where it must be. `at` is its lower left corner.
    void WriteFitting(const std::string& text, const CVector& at, double height, double width,
                      bool bold = false);

    /// Adds the symbol to the path; EndSymbols draws it.
    void Draw(const PlanPoint& point);
    void EndSymbols();
    void Draw(const PlanLine& line);
    void Draw(const PlanCircle& circle);
    void Draw(const PlanText& text);
    void Draw(const PlanFrame& frame);
    void DrawSegment(const CVector& from, const CVector& to);
    void DrawArc(const Arc& arc);
    void DrawImage();
    void DrawGrid();
    void DrawLabels();
    void DrawTitle();
    void DrawScaleBar(const CVector& at, double width);
    void DrawNorthArrow(const CVector& middle, double height);

    /// Labels keep off the line where there is room elsewhere.
    void MarkLine(const CVector& from, const CVector& to);

    cairo_t* m_context;
    const Plan& m_plan;
    const Sheet& m_sheet;
    const PaintChoice& m_choice;
    Rgb m_ink;
    TextPainter m_text;
    Box m_window;  ///< the map's frame on the page
    Box m_reach;   ///< what may be handed to cairo, far beyond the page
    LabelPlacer m_taken;
    LabelPlacer m_lines;
    std::size_t m_marks = 0;
    std::size_t m_symbols = 0;  ///< in the path
    int m_symbolColor = 0;
    bool m_penIsDown = false;
    std::size_t m_lostLabels = 0;
    std::vector<std::string> m_notes;
};

}  // namespace cqsurvey::cqjob
