#include <cairo.h>
#include <turbojpeg.h>

#include "fuzz/FuzzTarget.h"
#include "plan/canvas/Cairo.h"
#include "plan/images/ImageDecoder.h"

namespace cqsurvey {
namespace {

std::string MakePng() {
    const plan::CairoSurfacePtr surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, 5, 4));
    std::string bytes;
    const auto append = [](void* all, const unsigned char* data, unsigned length) {
        static_cast<std::string*>(all)->append(reinterpret_cast<const char*>(data), length);
        return CAIRO_STATUS_SUCCESS;
    };
    cairo_surface_write_to_png_stream(surface.get(), append, &bytes);
    return bytes;
}

std::string MakeJpeg() {
    const std::vector<unsigned char> pixels(16 * 16 * 3, 99);
    unsigned char* data = nullptr;
    unsigned long size = 0;
    tjhandle compressor = tjInitCompress();
    tjCompress2(compressor, pixels.data(), 16, 0, 16, TJPF_RGB, &data, &size, TJSAMP_420, 80, 0);
    std::string bytes(reinterpret_cast<const char*>(data), size);
    tjFree(data);
    tjDestroy(compressor);
    return bytes;
}

/// A bitmap of 3 by 2 pixels: header, colours where there are few, rows from below.
std::string MakeBmp(unsigned bits, unsigned compression, std::string_view colors,
                    std::string_view rows) {
    std::string bytes = "BM";
    const auto put = [&](std::size_t number, int size) {
        for (int i = 0; i < size; ++i) {
            bytes += static_cast<char>(number >> (8 * i));
        }
    };
    const std::size_t offset = 54 + colors.size();
    put(offset + rows.size(), 4);
    put(0, 4);
    put(offset, 4);
    for (const std::size_t number : {40U, 3U, 2U}) {
        put(number, 4);
    }
    put(1, 2);
    put(bits, 2);
    for (const std::size_t number : {std::size_t{compression}, rows.size(), std::size_t{2835},
                                     std::size_t{2835}, colors.size() / 4, std::size_t{0}}) {
        put(number, 4);
    }
    return bytes.append(colors).append(rows);
}

/// A background image from a stranger.
class ImageFuzz : public FuzzTarget {
 public:
    void Run(std::string_view bytes) override {
        plan::PlanImage image;
        image.bytes.assign(bytes.begin(), bytes.end());
        image.brightness = static_cast<int>(bytes.size() % 511) - 255;
        image.contrast = static_cast<int>(bytes.size() * 37 % 65001);
        image.grey = bytes.size() % 2 == 0;
        std::string fault;
        const plan::CairoSurfacePtr surface = plan::DecodeImage(image, fault);
        RequirePromise((surface == nullptr) != fault.empty(),
                       "an image is drawn, or why it is not");
    }

    std::vector<std::string> MakeSeeds() override {
        using namespace std::string_literals;
        return {MakePng(),
                MakeJpeg(),
                MakeBmp(24, 0, "", std::string(24, 'p')),
                MakeBmp(8, 0, "rgb\0RGB\0"s, "\0\1\0\0\1\0\1\0"s),
                MakeBmp(8, 1, "rgb\0RGB\0"s, "\3\1\0\0\3\0\0\1"s),
                MakeBmp(4, 2, "rgb\0RGB\0"s, "\3\x10\0\0\3\1\0\1"s),
                MakeBmp(1, 0, "rgb\0RGB\0"s, "\xA0\0\0\0\x40\0\0\0"s),
                MakeBmp(32, 3, "\0\0\xFF\0\0\xFF\0\0\xFF\0\0\0"s, std::string(24, 'q'))};
    }

    std::vector<std::string> GetWords() override {
        using namespace std::string_literals;
        return {"\x89PNG\r\n\x1A\n", "IHDR",       "IDAT",     "IEND",     "PLTE",     "tRNS",
                "\xFF\xD8",          "\xFF\xC0",   "\xFF\xC2", "\xFF\xDA", "\xFF\xD9", "BM",
                "\x28\0\0\0"s,       "\x7C\0\0\0"s};
    }
};

}  // namespace

FuzzTarget& GetFuzzTarget() {
    static ImageFuzz target;
    return target;
}

}  // namespace cqsurvey
