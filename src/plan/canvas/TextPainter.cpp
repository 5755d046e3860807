#include "plan/canvas/TextPainter.h"

#include <algorithm>
#include <memory>

namespace cqsurvey::plan {

namespace {

/// Every text is laid out in one size and drawn scaled. So it has the same shape in any size, and
/// any number of sizes needs only one font.
constexpr double kSize = 16.0;

/// A longer text would be metres long on paper. Pango counts in whole numbers of 1/1024; so many
/// characters fit even if each is a dozen times as wide as high.
constexpr std::size_t kMostCharacters = 10'000;

bool IsPlain(std::string_view text) {
    return text.size() <= kMostCharacters &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

bool BreaksLine(gunichar c) {
    switch (g_unichar_type(c)) {
        case G_UNICODE_CONTROL:
        case G_UNICODE_LINE_SEPARATOR:
        case G_UNICODE_PARAGRAPH_SEPARATOR:
            return true;
        default:
            return false;
    }
}

/// The text as one line that Pango accepts.
std::string MakeLine(std::string text) {
    constexpr std::string_view kEllipsis = "\xE2\x80\xA6";
    // GLib takes a zero byte for the end of the text.
    std::replace(text.begin(), text.end(), '\0', ' ');
    const std::unique_ptr<char, decltype(&g_free)> valid(
        g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())), &g_free);
    std::string line;
    std::size_t characters = 0;
    for (const char* c = valid.get(); *c != '\0'; c = g_utf8_next_char(c)) {
        if (characters++ == kMostCharacters) {
            line += kEllipsis;
            break;
        }
        if (BreaksLine(g_utf8_get_char(c))) {
            line += ' ';
        } else {
            line.append(c, static_cast<std::size_t>(g_utf8_next_char(c) - c));
        }
    }
    return line;
}

}  // namespace

std::string TextPainter::FindFamily(PangoContext* pango) const {
    PangoFont* font = pango_context_load_font(pango, m_fonts[0].get());
    if (font == nullptr) {
        return {};
    }
    const FontPtr found(pango_font_describe(font));
    g_object_unref(font);
    const char* family = pango_font_description_get_family(found.get());
    return family == nullptr ? "" : family;
}

TextPainter::FontPtr TextPainter::MakeFont(PangoWeight weight) {
    FontPtr font(pango_font_description_new());
    pango_font_description_set_family_static(font.get(), "sans-serif");
    pango_font_description_set_weight(font.get(), weight);
    pango_font_description_set_absolute_size(font.get(), kSize * PANGO_SCALE);
    return font;
}

TextPainter::TextPainter(Canvas& canvas)
    : m_canvas(canvas), m_fonts{MakeFont(PANGO_WEIGHT_NORMAL), MakeFont(PANGO_WEIGHT_BOLD)} {
    PangoContext* pango = pango_font_map_create_context(pango_cairo_font_map_get_default());
    // The picture must not depend on the settings of the screen.
    cairo_font_options_t* options = cairo_font_options_create();
    cairo_font_options_set_antialias(options, CAIRO_ANTIALIAS_GRAY);
    cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
    cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
    pango_cairo_context_set_font_options(pango, options);
    cairo_font_options_destroy(options);
    pango_context_set_round_glyph_positions(pango, FALSE);
    // Otherwise a number alone would be in the font of the user's language, and one among letters
    // in the font of the letters.
    pango_context_set_language(pango, pango_language_from_string("en"));
    m_layout.reset(pango_layout_new(pango));
    pango_layout_set_font_description(m_layout.get(), m_fonts[0].get());
    pango_layout_set_single_paragraph_mode(m_layout.get(), TRUE);

    m_family = FindFamily(pango);
    g_object_unref(pango);

    PangoRectangle ink{};
    pango_layout_line_get_extents(LayOut("H"), &ink, nullptr);
    if (ink.height > 0) {
        m_capitals = static_cast<double>(ink.height) / PANGO_SCALE;
    }
}

void TextPainter::SetFont(double height, bool bold) {
    m_scale = height / m_capitals;
    if (m_bold != bold) {
        m_bold = bold;
        pango_layout_set_font_description(m_layout.get(), m_fonts[bold ? 1 : 0].get());
    }
}

PangoLayoutLine* TextPainter::LayOut(std::string_view text) {
    // A text that is written has usually been measured just before.
    if (text != m_text) {
        m_line = IsPlain(text) ? std::string(text) : MakeLine(std::string(text));
        pango_layout_set_text(m_layout.get(), m_line.data(), static_cast<int>(m_line.size()));
        m_text = text;
    }
    return pango_layout_get_line_readonly(m_layout.get(), 0);
}

double TextPainter::GetWidth(std::string_view text) {
    PangoRectangle logical{};
    pango_layout_line_get_extents(LayOut(text), nullptr, &logical);
    return m_scale * logical.width / PANGO_SCALE;
}

void TextPainter::Write(std::string_view text, const CVector& at) {
    // There is no room at all, and after a scale of 0 cairo would draw nothing more.
    constexpr double kLeastScale = 1e-6;
    if (!(m_scale >= kLeastScale)) {
        return;
    }
    PangoLayoutLine* line = LayOut(text);
    m_unknown += static_cast<std::size_t>(pango_layout_get_unknown_glyphs_count(m_layout.get()));
    m_canvas.Write({.line = line,
                    .text = m_line,
                    .family = m_family,
                    .at = at,
                    .scale = m_scale,
                    .size = kSize,
                    .width = GetWidth(text),
                    .bold = m_bold,
                    .halo = m_halo});
}

}  // namespace cqsurvey::plan
