#include "plan/canvas/PdfCanvas.h"

#include <cmath>
#include <string>
#include <vector>

namespace cqsurvey::plan {

namespace {

/// The only letter of the font is the blank.
constexpr unsigned long kCross = 1;

const cairo_user_data_key_t kLineWidth{};

/// Draws the cross in a square of 1 by 1, its middle in the origin.
cairo_status_t DrawCross(cairo_scaled_font_t* font, unsigned long /*glyph*/, cairo_t* context,
                         cairo_text_extents_t* extents) {
    const auto* width = static_cast<const double*>(
        cairo_font_face_get_user_data(cairo_scaled_font_get_font_face(font), &kLineWidth));
    if (width == nullptr) {
        return CAIRO_STATUS_NO_MEMORY;
    }
    cairo_set_line_width(context, *width);
    cairo_move_to(context, -0.5, 0.0);
    cairo_line_to(context, 0.5, 0.0);
    cairo_move_to(context, 0.0, -0.5);
    cairo_line_to(context, 0.0, 0.5);
    cairo_stroke(context);
    extents->x_advance = 0.0;
    return CAIRO_STATUS_SUCCESS;
}

cairo_font_face_t* MakeFont(double lineWidth) {
    cairo_font_face_t* font = cairo_user_font_face_create();
    cairo_user_font_face_set_render_glyph_func(font, &DrawCross);
    // Cairo draws the letter when it writes the file, so the width belongs to the font.
    auto width = std::make_unique<double>(lineWidth);
    if (cairo_font_face_set_user_data(font, &kLineWidth, width.get(), [](void* data) {
            delete static_cast<double*>(data);
        }) == CAIRO_STATUS_SUCCESS) {
        static_cast<void>(width.release());
    }
    return font;
}

}  // namespace

void PdfCanvas::DrawCrosses(std::span<const CVector> places, double size) {
    // The places are written in parts of the size; more than three decimals are not seen.
    constexpr double kSteps = 1000.0;
    cairo_t* context = GetContext();
    const double lineWidth = cairo_get_line_width(context) / size;
    if (!m_font || m_lineWidth != lineWidth) {
        m_font.reset(MakeFont(lineWidth));
        m_lineWidth = lineWidth;
    }
    const auto round = [&](double place) {
        return std::round(place / size * kSteps) / kSteps * size;
    };
    std::vector<cairo_glyph_t> glyphs;
    glyphs.reserve(places.size());
    for (const CVector& place : places) {
        glyphs.push_back({kCross, round(place.GetX()), round(place.GetY())});
    }
    const int count = static_cast<int>(glyphs.size());
    const std::string text(glyphs.size(), ' ');
    const std::vector<cairo_text_cluster_t> clusters(glyphs.size(), {1, 1});
    cairo_set_font_face(context, m_font.get());
    cairo_set_font_size(context, size);
    cairo_show_text_glyphs(context, text.data(), count, glyphs.data(), count, clusters.data(),
                           count, cairo_text_cluster_flags_t{});
}

}  // namespace cqsurvey::plan
