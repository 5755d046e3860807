#pragma once

#include <pango/pangocairo.h>

#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "cqsurvey/CVector.h"

namespace cqsurvey::plan {

/// Writes lines of text into a picture, sans serif. A character that the font lacks is taken from
/// another installed font; if no font has it, it is drawn as a box. Texts may hold anything: bytes
/// that are not UTF-8 become U+FFFD, control characters and line ends become blanks, and only the
/// first 10,000 characters are written.
class TextPainter {
 public:
    /// Draws to `context`, which must outlive the painter.
    explicit TextPainter(cairo_t* context);

    /// Sets the font for the following texts; its capitals are `height` high.
    void SetFont(double height, bool bold = false);

    /// The length of the text along its baseline, proportional to the size of the font.
    [[nodiscard]] double GetWidth(std::string_view text);

    /// Draws the text in the context's colour. `at` is the left end of its baseline, even for a
    /// text that is read from the right. Draws nothing when the height is 0 or less. Afterwards the
    /// context has no current point and no path.
    void Write(std::string_view text, const CVector& at);

    /// How many of the characters drawn are missing in all fonts.
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
    std::string m_text;       ///< the text that is laid out
    bool m_bold = false;      ///< how
    double m_capitals = 1.0;  ///< their height in the layout
    double m_scale = 1.0;     ///< from the layout to the picture
    std::size_t m_unknown = 0;
};

}  // namespace cqsurvey::plan
