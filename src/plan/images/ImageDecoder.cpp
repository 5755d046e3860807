#include "plan/images/ImageDecoder.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <span>
#include <utility>

#include "plan/images/Bitmap.h"
#include "plan/images/BmpDecoder.h"
#include "plan/images/ImageFault.h"
#include "plan/images/JpegDecoder.h"

namespace cqsurvey::plan {

namespace {

constexpr std::array<std::uint8_t, 8> kPngSignature{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
/// After the signature come the length and the name of the first chunk, then width and height.
constexpr std::size_t kWidthAt = 16;
constexpr std::size_t kHeightAt = 20;
constexpr std::size_t kHeaderEnd = 24;

cairo_status_t ReadBytes(void* closure, unsigned char* data, unsigned int length) {
    auto& left = *static_cast<std::span<const std::uint8_t>*>(closure);
    if (length > left.size()) {
        return CAIRO_STATUS_READ_ERROR;
    }
    std::memcpy(data, left.data(), length);
    left = left.subspan(length);
    return CAIRO_STATUS_SUCCESS;
}

std::uint32_t BigEndian(std::span<const std::uint8_t> bytes, std::size_t at) {
    return (std::uint32_t{bytes[at]} << 24U) | (std::uint32_t{bytes[at + 1]} << 16U) |
           (std::uint32_t{bytes[at + 2]} << 8U) | bytes[at + 3];
}

/// Applies brightness and contrast to a part of a colour, 0 to 255.
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

bool IsPng(std::span<const std::uint8_t> bytes) {
    return bytes.size() >= kPngSignature.size() &&
           std::equal(kPngSignature.begin(), kPngSignature.end(), bytes.begin());
}

Bitmap DecodePng(std::span<const std::uint8_t> bytes) {
    if (bytes.size() < kHeaderEnd) {
        throw ImageFault("is damaged");
    }
    Bitmap::ExpectSize(BigEndian(bytes, kWidthAt), BigEndian(bytes, kHeightAt));
    CairoSurfacePtr decoded(cairo_image_surface_create_from_png_stream(&ReadBytes, &bytes));
    if (cairo_surface_status(decoded.get()) != CAIRO_STATUS_SUCCESS) {
        throw ImageFault("is damaged");
    }
    if (cairo_image_surface_get_format(decoded.get()) == CAIRO_FORMAT_ARGB32) {
        return Bitmap(std::move(decoded));
    }
    // An image without opacity is converted to the format with it, so that only one need be
    // handled.
    Bitmap bitmap(static_cast<std::uint64_t>(cairo_image_surface_get_width(decoded.get())),
                  static_cast<std::uint64_t>(cairo_image_surface_get_height(decoded.get())));
    CairoSurfacePtr surface = bitmap.Finish();
    {
        const CairoPtr context(cairo_create(surface.get()));
        cairo_set_source_surface(context.get(), decoded.get(), 0.0, 0.0);
        cairo_paint(context.get());
    }
    return Bitmap(std::move(surface));
}

Bitmap Decode(std::span<const std::uint8_t> bytes) {
    if (IsPng(bytes)) {
        return DecodePng(bytes);
    }
    if (IsJpeg(bytes)) {
        return DecodeJpeg(bytes);
    }
    if (IsBmp(bytes)) {
        return DecodeBmp(bytes);
    }
    throw ImageFault("is neither PNG nor JPEG nor BMP");
}

}  // namespace

CairoSurfacePtr DecodeImage(const PlanImage& image, std::string& fault) {
    try {
        Bitmap bitmap = Decode(image.bytes);
        if (image.brightness != 0 || image.contrast != 100 || image.grey) {
            const Look look(image);
            for (int y = 0; y < bitmap.GetHeight(); ++y) {
                for (std::uint32_t& pixel : bitmap.GetRow(y)) {
                    pixel = look.Apply(pixel);
                }
            }
        }
        return bitmap.Finish();
    } catch (const ImageFault& reason) {
        fault = std::string("the background image ") + reason.what() + "; its frame is drawn";
        return nullptr;
    }
}

}  // namespace cqsurvey::plan
