#include "plan/canvas/Canvas.h"

#include <pango/pangocairo.h>

namespace cqsurvey::plan {

void Canvas::Stroke() {
    cairo_stroke(m_context);
}

void Canvas::Fill() {
    cairo_fill_preserve(m_context);
}

void Canvas::Cover(double /*width*/, double /*height*/) {
    cairo_paint(m_context);
}

void Canvas::DrawCrosses(std::span<const CVector> places, double size) {
    const double half = size / 2;
    for (const CVector& place : places) {
        cairo_move_to(m_context, place.GetX() - half, place.GetY());
        cairo_line_to(m_context, place.GetX() + half, place.GetY());
        cairo_move_to(m_context, place.GetX(), place.GetY() - half);
        cairo_line_to(m_context, place.GetX(), place.GetY() + half);
    }
    Stroke();
}

void Canvas::Write(const TextRun& run) {
    // Of the height of the font.
    constexpr double kHalo = 0.17;
    constexpr double kFull = 255.0;
    cairo_save(m_context);
    cairo_translate(m_context, run.at.GetX(), run.at.GetY());
    cairo_scale(m_context, run.scale, run.scale);
    if (run.halo) {
        cairo_save(m_context);
        cairo_set_source_rgb(m_context, run.halo->red / kFull, run.halo->green / kFull,
                             run.halo->blue / kFull);
        cairo_set_dash(m_context, nullptr, 0, 0.0);
        cairo_set_line_width(m_context, kHalo * run.size);
        cairo_move_to(m_context, 0.0, 0.0);
        pango_cairo_layout_line_path(m_context, run.line);
        cairo_stroke(m_context);
        cairo_restore(m_context);
    }
    cairo_move_to(m_context, 0.0, 0.0);
    pango_cairo_show_layout_line(m_context, run.line);
    cairo_restore(m_context);
    cairo_new_path(m_context);
}

void Canvas::ShowImage(cairo_surface_t* image) {
    cairo_set_source_surface(m_context, image, 0.0, 0.0);
    if (cairo_surface_get_type(cairo_get_target(m_context)) == CAIRO_SURFACE_TYPE_IMAGE) {
        // Without this the pixels at the edges fade out.
        cairo_pattern_set_extend(cairo_get_source(m_context), CAIRO_EXTEND_PAD);
    }
    cairo_rectangle(m_context, 0.0, 0.0, cairo_image_surface_get_width(image),
                    cairo_image_surface_get_height(image));
    cairo_fill(m_context);
}

void Canvas::BeginClip(const Box& box) {
    cairo_save(m_context);
    cairo_rectangle(m_context, box.minX, box.minY, box.GetWidth(), box.GetHeight());
    cairo_clip(m_context);
}

void Canvas::EndClip() {
    cairo_restore(m_context);
}

void Canvas::BeginGroup(const std::string& /*name*/) {}

void Canvas::EndGroup() {}

}  // namespace cqsurvey::plan
