#include "plan/images/Bitmap.h"

#include <utility>

#include "plan/images/ImageFault.h"

namespace cqsurvey::plan {

void Bitmap::ExpectSize(std::uint64_t width, std::uint64_t height) {
    // The limit of cairo. It is small enough that the product below cannot overflow.
    constexpr std::uint64_t kLongestSide = 32767;
    if (width == 0 || height == 0) {
        throw ImageFault("is damaged");
    }
    if (width > kLongestSide || height > kLongestSide || width * height > kMostPixels) {
        throw ImageFault("has too many pixels");
    }
}

Bitmap::Bitmap(std::uint64_t width, std::uint64_t height) {
    ExpectSize(width, height);
    m_surface.reset(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, static_cast<int>(width),
                                               static_cast<int>(height)));
    if (cairo_surface_status(m_surface.get()) != CAIRO_STATUS_SUCCESS) {
        throw ImageFault("needs more memory than there is");
    }
}

Bitmap::Bitmap(CairoSurfacePtr surface) : m_surface(std::move(surface)) {
    cairo_surface_flush(m_surface.get());
}

int Bitmap::GetWidth() const {
    return cairo_image_surface_get_width(m_surface.get());
}

int Bitmap::GetHeight() const {
    return cairo_image_surface_get_height(m_surface.get());
}

int Bitmap::GetStride() const {
    return cairo_image_surface_get_stride(m_surface.get());
}

std::span<std::uint32_t> Bitmap::GetRow(int y) {
    // In cairo, a row begins at a multiple of four bytes.
    unsigned char* row = cairo_image_surface_get_data(m_surface.get()) +
                         static_cast<std::ptrdiff_t>(y) * GetStride();
    return {static_cast<std::uint32_t*>(static_cast<void*>(row)),
            static_cast<std::size_t>(GetWidth())};
}

CairoSurfacePtr Bitmap::Finish() {
    cairo_surface_mark_dirty(m_surface.get());
    return std::move(m_surface);
}

}  // namespace cqsurvey::plan
