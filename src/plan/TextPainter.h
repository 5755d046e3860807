#pragma once

#include <pango/pangocairo.h>

#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "cqsurvey/CVector.h"

namespace cqsurvey::plan {

/// Writes lines of text into a picture, sans serif. A character that the font lacks comes from
/// another font that is installed; one that is in none is drawn as a box. Texts may hold anything:
/// what is not UTF-8 becomes U+FFFD, control characters and ends of lines become blanks, and what
/// is beyond the first 10,000 characters is left out.
class TextPainter {
 public:
    /// Draws to `context`, which must outlive the painter.
    explicit TextPainter(cairo_t* context);

    /// The size from now on: that of a font whose capitals are `height` high.
    void SetFont(double height, bool bold = false);

    /// How far the text reaches along its baseline. It is in proportion to the font's size.
    [[nodiscard]] double GetWidth(std::string_view text);

    /// Draws the text in the context's colour; `at` is the left end of its baseline, whichever way
    /// it is read. Nothing is drawn at a height of 0 or below. The context has no current point and
    /// no path afterwards.
    void Write(std::string_view text, const CVector& at);

    /// How many of the characters drawn are in no font.
    [[nodiscard]] std::size_t GetUnknown() const { return m_unknown; }

 private:
    struct PangoDeleter {
        void operator()(PangoLayout* layout) const { g_object_unref(layout); }
        void operator()(PangoFontDescription* font) const { pango_font_description_free(font); }
    };
    using FontPtr = std::unique_ptr<PangoFontDescription, PangoDeleter>;

    static FontPtr MakeFont(PangoWeight weight);
    PangoLayoutLine* LayOut(std::string_view text);

    cairo_t* m_context;
    std::array<FontPtr, 2> m_fonts;  ///< normal and bold
    std::unique_ptr<PangoLayout, PangoDeleter> m_layout;
    std::string m_text;       ///< what is laid out
    bool m_bold = false;      ///< how
    double m_capitals = 1.0;  ///< their height in the layout
    double m_scale = 1.0;     ///< from the layout to the picture
    std::size_t m_unknown = 0;
};

}  // namespace cqsurvey::plan
