#include "plan/images/JpegDecoder.h"

#include <turbojpeg.h>

#include <algorithm>
#include <array>
#include <bit>
#include <memory>
#include <string_view>

#include "plan/images/ImageFault.h"

namespace cqsurvey::plan {

namespace {

constexpr std::array<std::uint8_t, 3> kSignature{0xFF, 0xD8, 0xFF};

struct HandleDeleter {
    void operator()(void* handle) const { tjDestroy(handle); }
};

/// A progressive image goes over its pixels several times, and a few bytes are enough to ask for
/// very many times. True when there are far too many.
bool HasTooManyScans(std::span<const std::uint8_t> bytes, std::uint64_t pixels) {
    // Usual images need about ten.
    constexpr std::uint64_t kMostPasses = 16 * Bitmap::kMostPixels;
    constexpr std::array<std::uint8_t, 2> kStartOfScan{0xFF, 0xDA};
    std::uint64_t scans = 0;
    for (auto at = bytes.begin();; ++at) {
        at = std::search(at, bytes.end(), kStartOfScan.begin(), kStartOfScan.end());
        if (at == bytes.end()) {
            return scans * pixels > kMostPasses;
        }
        ++scans;
    }
}

/// True when everything was decoded, and the only fault is something extra before the end. Some
/// cameras write such files.
bool IsHarmless(void* handle) {
    constexpr std::string_view kBeforeEnd = "extraneous bytes before marker 0xd9";
    return tjGetErrorCode(handle) == TJERR_WARNING &&
           std::string_view(tjGetErrorStr2(handle)).find(kBeforeEnd) != std::string_view::npos;
}

/// Converts four inks, as they are used in print, to red, green and blue. They are stored inverted.
void ConvertCmyk(Bitmap& bitmap) {
    for (int y = 0; y < bitmap.GetHeight(); ++y) {
        for (std::uint32_t& pixel : bitmap.GetRow(y)) {
            const auto inks = std::bit_cast<std::array<std::uint8_t, 4>>(pixel);
            const auto part = [&](std::size_t i) { return std::uint32_t{inks[i]} * inks[3] / 255; };
            pixel = 0xFF000000U | (part(0) << 16U) | (part(1) << 8U) | part(2);
        }
    }
}

}  // namespace

bool IsJpeg(std::span<const std::uint8_t> bytes) {
    return bytes.size() >= kSignature.size() &&
           std::equal(kSignature.begin(), kSignature.end(), bytes.begin());
}

Bitmap DecodeJpeg(std::span<const std::uint8_t> bytes) {
    const std::unique_ptr<void, HandleDeleter> handle(tjInitDecompress());
    if (handle == nullptr) {
        throw ImageFault("needs more memory than there is");
    }
    int width = 0;
    int height = 0;
    int subsampling = 0;
    int colors = 0;
    if (tjDecompressHeader3(handle.get(), bytes.data(), bytes.size(), &width, &height, &subsampling,
                            &colors) != 0 ||
        width < 0 || height < 0) {
        throw ImageFault("is damaged");
    }
    Bitmap::ExpectSize(static_cast<std::uint64_t>(width), static_cast<std::uint64_t>(height));
    if (HasTooManyScans(bytes,
                        static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height))) {
        throw ImageFault("is coded in too many passes");
    }
    Bitmap bitmap(static_cast<std::uint64_t>(width), static_cast<std::uint64_t>(height));
    const bool cmyk = colors == TJCS_CMYK || colors == TJCS_YCCK;
    constexpr int kPixels = std::endian::native == std::endian::little ? TJPF_BGRA : TJPF_ARGB;
    auto* pixels = static_cast<unsigned char*>(static_cast<void*>(bitmap.GetRow(0).data()));
    if (tjDecompress2(handle.get(), bytes.data(), bytes.size(), pixels, width, bitmap.GetStride(),
                      height, cmyk ? TJPF_CMYK : kPixels, TJFLAG_LIMITSCANS) != 0 &&
        !IsHarmless(handle.get())) {
        throw ImageFault("is damaged");
    }
    if (cmyk) {
        ConvertCmyk(bitmap);
    }
    return bitmap;
}

}  // namespace cqsurvey::plan
