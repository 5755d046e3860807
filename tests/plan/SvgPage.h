#pragma once

#include <string>

#include "plan/Page.h"
#include "plan/canvas/Cairo.h"
#include "plan/canvas/SvgCanvas.h"
#include "support/SvgPicture.h"

namespace cqsurvey::plan {

/// A page of A4 at 1 : 500 that is drawn as an SVG, for the tests of what draws on it. The middle
/// of its map is 50, 50 in the job.
class SvgPage {
 public:
    explicit SvgPage(const SheetRequest& request = {}, Rgb background = kWhite)
        : m_sheet(request, {10, 10, 90, 90}, 500.0), m_page(m_canvas, m_sheet, background) {}

    [[nodiscard]] Page& Get() { return m_page; }

    /// What was drawn. Call it once.
    [[nodiscard]] SvgPicture Finish() {
        m_canvas.Finish();
        return SvgPicture(m_bytes);
    }

 private:
    std::string m_bytes;
    SvgCanvas::Sink m_sink = [this](std::string_view more) { m_bytes += more; };
    CairoSurfacePtr m_surface{cairo_image_surface_create(CAIRO_FORMAT_A8, 1, 1)};
    CairoPtr m_context{cairo_create(m_surface.get())};
    Sheet m_sheet;
    SvgCanvas m_canvas{m_context.get(), m_sheet.GetPaper(), m_sink};
    Page m_page;
};

}  // namespace cqsurvey::plan
