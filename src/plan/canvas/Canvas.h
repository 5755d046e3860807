#pragma once

#include <cairo.h>
#include <pango/pango.h>

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "cqsurvey/CVector.h"
#include "cqsurvey/plan/Box.h"
#include "plan/canvas/Palette.h"

namespace cqsurvey::plan {

/// A line of text that has been laid out, and how it stands on the page.
struct TextRun {
    PangoLayoutLine* line = nullptr;
    std::string_view text;    ///< UTF-8 without control characters: what was laid out
    std::string_view family;  ///< the name of its font
    CVector at;               ///< the left end of its baseline
    double scale = 1.0;       ///< from the layout to the context's units
    double size = 0.0;        ///< of the font in the layout
    double width = 0.0;       ///< in the context's units
    bool bold = false;
    std::optional<Rgb> halo;  ///< around the letters, so that they can be read on anything
};

/// What the painters draw on. They build paths in a cairo context, which also keeps the colour, the
/// line and the way from their units to the page; the canvas puts the finished path, the texts and
/// the images on the page. This class does it with cairo, for PNG. PdfCanvas differs in what is
/// drawn by the million. SvgCanvas writes elements, because cairo's own SVG has neither texts nor
/// groups.
class Canvas {
 public:
    /// `context` must outlive the canvas.
    explicit Canvas(cairo_t* context) : m_context(context) {}
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;
    virtual ~Canvas() = default;

    [[nodiscard]] cairo_t* GetContext() const { return m_context; }

    /// Draws the path as a line and ends it.
    virtual void Stroke();

    /// Fills the path. It is still there afterwards.
    virtual void Fill();

    /// Covers the whole page with the colour.
    virtual void Cover(double width, double height);

    /// Draws an upright cross at each place, `size` wide and high, in the context's line.
    virtual void DrawCrosses(std::span<const CVector> places, double size);

    virtual void Write(const TextRun& run);

    /// Draws an image, its upper left corner in the origin, a unit for each pixel.
    virtual void ShowImage(cairo_surface_t* image);

    /// Keeps what follows inside of `box`, until EndClip. Not nested.
    virtual void BeginClip(const Box& box);
    virtual void EndClip();

    /// Puts what follows into a group of that name, until EndGroup, where the format has groups.
    virtual void BeginGroup(const std::string& name);
    virtual void EndGroup();

 private:
    cairo_t* m_context;
};

}  // namespace cqsurvey::plan
