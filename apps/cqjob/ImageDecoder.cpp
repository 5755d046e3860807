#include "cqjob/ImageDecoder.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <span>

namespace cqsurvey::cqjob {

namespace {

constexpr std::array<std::uint8_t, 8> kPngSignature{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
/// Behind the signature: the length and the word of the first chunk, then width and height.
constexpr std::size_t kWidthAt = 16;
constexpr std::size_t kHeightAt = 20;
constexpr std::size_t kHeaderEnd = 24;
constexpr std::uint64_t kMostPixels = 100'000'000;

cairo_status_t ReadBytes(void* closure, unsigned char* data, unsigned int length) {
    auto& left = *static_cast<std::span<const std::uint8_t>*>(closure);
    if (length > left.size()) {
        return CAIRO_STATUS_READ_ERROR;
    }
    std::memcpy(data, left.data(), length);
    left = left.subspan(length);
    return CAIRO_STATUS_SUCCESS;
}

std::uint32_t BigEndian(const std::vector<std::uint8_t>& bytes, std::size_t at) {
    return (std::uint32_t{bytes[at]} << 24U) | (std::uint32_t{bytes[at + 1]} << 16U) |
           (std::uint32_t{bytes[at + 2]} << 8U) | bytes[at + 3];
}

/// Brightness and contrast, applied to the parts of a colour from 0 to 255.
class Look {
 public:
    explicit Look(const PlanImage& image) : m_grey(image.grey) {
        for (std::size_t i = 0; i < m_levels.size(); ++i) {
            const double level = (static_cast<double>(i) - 127.5) * image.contrast / 100.0 + 127.5 +
                                 image.brightness;
            m_levels[i] = static_cast<std::uint8_t>(std::clamp(level, 0.0, 255.0));
        }
    }

    [[nodiscard]] std::uint32_t Apply(std::uint32_t pixel) const {
        const std::uint32_t alpha = pixel >> 24U;
        if (alpha == 0) {
            return pixel;
        }
        // The parts are stored multiplied by the opacity.
        const auto part = [&](unsigned shift) {
            return std::min<std::uint32_t>(255, ((pixel >> shift) & 0xFFU) * 255 / alpha);
        };
        std::uint32_t red = part(16);
        std::uint32_t green = part(8);
        std::uint32_t blue = part(0);
        if (m_grey) {
            red = green = blue = (299 * red + 587 * green + 114 * blue) / 1000;
        }
        const auto packed = [&](std::uint32_t level, unsigned shift) {
            return (m_levels[level] * alpha / 255) << shift;
        };
        return (alpha << 24U) | packed(red, 16) | packed(green, 8) | packed(blue, 0);
    }

 private:
    std::array<std::uint8_t, 256> m_levels{};
    bool m_grey;
};

}  // namespace

CairoSurfacePtr DecodeImage(const PlanImage& image, std::string& fault) {
    const std::vector<std::uint8_t>& bytes = image.bytes;
    if (bytes.size() < kHeaderEnd ||
        !std::equal(kPngSignature.begin(), kPngSignature.end(), bytes.begin())) {
        fault = "the background image is no PNG; its frame is drawn";
        return nullptr;
    }
    if (std::uint64_t{BigEndian(bytes, kWidthAt)} * BigEndian(bytes, kHeightAt) > kMostPixels) {
        fault = "the background image has too many pixels; its frame is drawn";
        return nullptr;
    }
    std::span<const std::uint8_t> left(bytes);
    CairoSurfacePtr decoded(cairo_image_surface_create_from_png_stream(&ReadBytes, &left));
    // An image without opacity is asked for in the format with it, so that there is one to deal
    // with.
    CairoSurfacePtr surface(cairo_image_surface_create(
        CAIRO_FORMAT_ARGB32, cairo_image_surface_get_width(decoded.get()),
        cairo_image_surface_get_height(decoded.get())));
    if (cairo_surface_status(decoded.get()) != CAIRO_STATUS_SUCCESS ||
        cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS) {
        fault = "the background image is damaged; its frame is drawn";
        return nullptr;
    }
    {
        const CairoPtr context(cairo_create(surface.get()));
        cairo_set_source_surface(context.get(), decoded.get(), 0.0, 0.0);
        cairo_paint(context.get());
    }
    if (image.brightness == 0 && image.contrast == 100 && !image.grey) {
        return surface;
    }
    cairo_surface_flush(surface.get());
    const Look look(image);
    const int width = cairo_image_surface_get_width(surface.get());
    const int height = cairo_image_surface_get_height(surface.get());
    const int stride = cairo_image_surface_get_stride(surface.get());
    unsigned char* data = cairo_image_surface_get_data(surface.get());
    for (int y = 0; y < height; ++y) {
        unsigned char* row = data + static_cast<std::ptrdiff_t>(y) * stride;
        for (int x = 0; x < width; ++x, row += sizeof(std::uint32_t)) {
            std::uint32_t pixel = 0;
            std::memcpy(&pixel, row, sizeof(pixel));
            pixel = look.Apply(pixel);
            std::memcpy(row, &pixel, sizeof(pixel));
        }
    }
    cairo_surface_mark_dirty(surface.get());
    return surface;
}

}  // namespace cqsurvey::cqjob
