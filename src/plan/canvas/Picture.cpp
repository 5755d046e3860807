#include "plan/canvas/Picture.h"

#include <cairo-pdf.h>

#include <cmath>
#include <string>
#include <utility>

#include "cqsurvey/plan/PlanFailure.h"
#include "plan/canvas/PdfCanvas.h"
#include "plan/canvas/Units.h"

namespace cqsurvey::plan {

Picture::Picture(PictureFormat format, const PaperSize& paper, double dots, const Sink& sink)
    : m_format(format), m_sink(sink) {
    const double width = paper.width * kMillimetre;
    const double height = paper.height * kMillimetre;
    switch (format) {
        case PictureFormat::Svg:
            // Only paths are built here, nothing is drawn.
            m_surface.reset(cairo_image_surface_create(CAIRO_FORMAT_A8, 1, 1));
            break;
        case PictureFormat::Pdf:
            m_surface.reset(
                cairo_pdf_surface_create_for_stream(&Picture::WriteBytes, this, width, height));
            break;
        case PictureFormat::Png:
            m_surface.reset(cairo_image_surface_create(
                CAIRO_FORMAT_RGB24, static_cast<int>(std::lround(paper.width * dots)),
                static_cast<int>(std::lround(paper.height * dots))));
            break;
    }
    m_context.reset(cairo_create(m_surface.get()));
    if (format == PictureFormat::Png) {
        const double scale = dots / kMillimetre;
        cairo_scale(m_context.get(), scale, scale);
    }
    Expect(cairo_status(m_context.get()));
    if (format == PictureFormat::Svg) {
        auto svg = std::make_unique<SvgCanvas>(m_context.get(), paper, sink);
        m_svg = svg.get();
        m_canvas = std::move(svg);
    } else if (format == PictureFormat::Pdf) {
        m_canvas = std::make_unique<PdfCanvas>(m_context.get());
    } else {
        m_canvas = std::make_unique<Canvas>(m_context.get());
    }
}

Picture::~Picture() {
    // A picture that was not finished is not written.
    m_context.reset();
    m_givenUp = true;
    cairo_surface_finish(m_surface.get());
}

cairo_status_t Picture::WriteBytes(void* closure, const unsigned char* data, unsigned int length) {
    auto& picture = *static_cast<Picture*>(closure);
    if (picture.m_givenUp || picture.m_failure) {
        return CAIRO_STATUS_WRITE_ERROR;
    }
    try {
        picture.m_sink(std::string_view(reinterpret_cast<const char*>(data), length));
        return CAIRO_STATUS_SUCCESS;
    } catch (...) {
        // No exception may pass through cairo.
        picture.m_failure = std::current_exception();
        return CAIRO_STATUS_WRITE_ERROR;
    }
}

void Picture::Expect(cairo_status_t status) const {
    if (m_failure) {
        std::rethrow_exception(m_failure);
    }
    if (status != CAIRO_STATUS_SUCCESS) {
        throw PlanFailure(error::kGeneralFailure, std::string("the picture cannot be drawn: ") +
                                                      cairo_status_to_string(status));
    }
}

void Picture::BeginPage(const PaperSize& paper) {
    cairo_show_page(m_context.get());
    cairo_pdf_surface_set_size(m_surface.get(), paper.width * kMillimetre,
                               paper.height * kMillimetre);
    Expect(cairo_status(m_context.get()));
}

void Picture::Finish() {
    Expect(cairo_status(m_context.get()));
    if (m_svg != nullptr) {
        m_svg->Finish();
        return;
    }
    if (m_format == PictureFormat::Png) {
        Expect(cairo_surface_write_to_png_stream(m_surface.get(), &Picture::WriteBytes, this));
        return;
    }
    cairo_show_page(m_context.get());
    cairo_surface_finish(m_surface.get());
    Expect(cairo_surface_status(m_surface.get()));
}

}  // namespace cqsurvey::plan
