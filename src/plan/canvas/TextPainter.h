#pragma once

#include <pango/pangocairo.h>

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "cqsurvey/CVector.h"
#include "plan/canvas/Canvas.h"

namespace cqsurvey::plan {

/// Writes lines of text into a picture, sans serif. A character that the font lacks is taken from
/// another installed font; if no font has it, it is drawn as a box. Texts may hold anything: bytes
/// that are not UTF-8 become U+FFFD, control characters and line ends become blanks, and only the
/// first 10,000 characters are written.
class TextPainter {
 public:
    /// Draws to `canvas`, which must outlive the painter.
    explicit TextPainter(Canvas& canvas);

    /// Sets the font for the following texts; its capitals are `height` high.
    void SetFont(double height, bool bold = false);

    /// The length of the text along its baseline, proportional to the size of the font.
    [[nodiscard]] double GetWidth(std::string_view text);

    /// Draws the text in the context's colour. `at` is the left end of its baseline, even for a
    /// text that is read from the right. Draws nothing when the height is 0 or less. Afterwards the
    /// context has no current point and no path.
    void Write(std::string_view text, const CVector& at);

    /// Sets the colour around the letters of the following texts, or that there is none.
    void SetHalo(std::optional<Rgb> halo) { m_halo = halo; }

    /// How many of the characters drawn are missing in all fonts.
    [[nodiscard]] std::size_t GetUnknown() const { return m_unknown; }

 private:
    struct PangoDeleter {
        void operator()(PangoLayout* layout) const { g_object_unref(layout); }
        void operator()(PangoFontDescription* font) const { pango_font_description_free(font); }
    };
    using FontPtr = std::unique_ptr<PangoFontDescription, PangoDeleter>;

    static FontPtr MakeFont(PangoWeight weight);
    /// The name of the font that is installed for the first one.
    std::string FindFamily(PangoContext* pango) const;
    PangoLayoutLine* LayOut(std::string_view text);

    Canvas& m_canvas;
    std::array<FontPtr, 2> m_fonts;  ///< normal and bold
    std::unique_ptr<PangoLayout, PangoDeleter> m_layout;
    std::string m_family;  ///< the name of the font
    std::string m_text;    ///< the text that is laid out
    std::string m_line;    ///< as it is laid out
    std::optional<Rgb> m_halo;
    bool m_bold = false;      ///< how
    double m_capitals = 1.0;  ///< their height in the layout
    double m_scale = 1.0;     ///< from the layout to the picture
    std::size_t m_unknown = 0;
};

}  // namespace cqsurvey::plan
