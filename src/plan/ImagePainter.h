#pragma once

#include "plan/Page.h"
#include "plan/Plan.h"
#include "plan/canvas/Cairo.h"
#include "plan/labels/LabelRoom.h"

namespace cqsurvey::plan {

/// Draws the background image where the job places it: moved, scaled and rotated. For an image that
/// cannot be drawn there is a dashed frame instead, and a note says why.
class ImagePainter {
 public:
    /// Both must outlive the painter.
    ImagePainter(Page& page, LabelRoom& room) : m_page(page), m_room(room) {}

    void Draw(const PlanImage& image);

 private:
    void DrawPixels(cairo_surface_t* surface, const CVector& centre, const CVector& size,
                    double angle);
    void DrawFrame(const CVector& centre, const CVector& size, double angle);

    Page& m_page;
    LabelRoom& m_room;
};

}  // namespace cqsurvey::plan
