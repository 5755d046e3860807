#pragma once

#include <cairo.h>

#include <array>
#include <memory>
#include <string>
#include <vector>

namespace cqsurvey {

/// The parts of a colour: red, green and blue from 0 to 255.
using PixelColor = std::array<int, 3>;

/// The pixels of a PNG file.
class PngPicture {
 public:
    explicit PngPicture(const std::string& path)
        : m_surface(cairo_image_surface_create_from_png(path.c_str())) {}

    /// False when there is no PNG at the path.
    [[nodiscard]] bool IsRead() const {
        return cairo_surface_status(m_surface.get()) == CAIRO_STATUS_SUCCESS;
    }
    [[nodiscard]] int GetWidth() const { return cairo_image_surface_get_width(m_surface.get()); }
    [[nodiscard]] int GetHeight() const { return cairo_image_surface_get_height(m_surface.get()); }

    /// The colour of a pixel, 0, 0 is at the upper left corner.
    [[nodiscard]] PixelColor GetPixel(int x, int y) const {
        const unsigned char* at = cairo_image_surface_get_data(m_surface.get()) +
                                  y * cairo_image_surface_get_stride(m_surface.get()) + x * 4;
        return {at[2], at[1], at[0]};
    }

    /// Writes a PNG of one row of pixels; true when that went well.
    static bool WriteRow(const std::string& path, const std::vector<PixelColor>& row) {
        const Surface surface(
            cairo_image_surface_create(CAIRO_FORMAT_RGB24, static_cast<int>(row.size()), 1));
        unsigned char* at = cairo_image_surface_get_data(surface.get());
        for (const PixelColor& color : row) {
            for (const int part : {color[2], color[1], color[0], 0}) {
                *at++ = static_cast<unsigned char>(part);
            }
        }
        cairo_surface_mark_dirty(surface.get());
        return cairo_surface_write_to_png(surface.get(), path.c_str()) == CAIRO_STATUS_SUCCESS;
    }

 private:
    struct Destroy {
        void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
    };
    using Surface = std::unique_ptr<cairo_surface_t, Destroy>;

    Surface m_surface;
};

}  // namespace cqsurvey
