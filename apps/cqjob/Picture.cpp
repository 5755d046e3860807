#include "cqjob/Picture.h"

#include <cairo-pdf.h>
#include <cairo-svg.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <string>

#include "cqjob/Failure.h"

namespace cqsurvey::cqjob {

namespace {

constexpr double kPointsInMillimetre = 72.0 / 25.4;

}  // namespace

std::optional<PictureFormat> FindFormat(std::string_view nameOrWord) {
    std::string word(nameOrWord.substr(nameOrWord.rfind('.') + 1));
    std::transform(word.begin(), word.end(), word.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (word == "svg") {
        return PictureFormat::Svg;
    }
    if (word == "pdf") {
        return PictureFormat::Pdf;
    }
    if (word == "png") {
        return PictureFormat::Png;
    }
    return std::nullopt;
}

Picture::Picture(PictureFormat format, const PaperSize& paper, double dots, OutputFile& file)
    : m_format(format), m_file(file) {
    const double width = paper.width * kPointsInMillimetre;
    const double height = paper.height * kPointsInMillimetre;
    switch (format) {
        case PictureFormat::Svg:
            m_surface.reset(
                cairo_svg_surface_create_for_stream(&Picture::WriteBytes, this, width, height));
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
        const double scale = dots / kPointsInMillimetre;
        cairo_scale(m_context.get(), scale, scale);
    }
    Expect(cairo_status(m_context.get()));
}

Picture::~Picture() {
    // What is not finished is not written.
    m_context.reset();
    m_failure = std::make_exception_ptr(Failure("given up"));
    cairo_surface_finish(m_surface.get());
}

cairo_status_t Picture::WriteBytes(void* closure, const unsigned char* data, unsigned int length) {
    auto& picture = *static_cast<Picture*>(closure);
    if (picture.m_failure) {
        return CAIRO_STATUS_WRITE_ERROR;
    }
    try {
        picture.m_file.Write({reinterpret_cast<const char*>(data), length});
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
        throw Failure(std::string("the picture cannot be drawn: ") +
                      cairo_status_to_string(status));
    }
}

void Picture::Finish() {
    Expect(cairo_status(m_context.get()));
    if (m_format == PictureFormat::Png) {
        Expect(cairo_surface_write_to_png_stream(m_surface.get(), &Picture::WriteBytes, this));
        return;
    }
    cairo_show_page(m_context.get());
    cairo_surface_finish(m_surface.get());
    Expect(cairo_surface_status(m_surface.get()));
}

}  // namespace cqsurvey::cqjob
