#include <cstddef>
#include <cstdint>

#include "cqsurvey/exchange/DxfWriter.h"

namespace cqsurvey::exchange {

namespace {

std::uint32_t Byte(std::string_view bytes, std::size_t at) {
    return static_cast<unsigned char>(bytes[at]);
}

std::uint32_t Big16(std::string_view bytes, std::size_t at) {
    return Byte(bytes, at) << 8U | Byte(bytes, at + 1);
}

std::uint32_t Big32(std::string_view bytes, std::size_t at) {
    return Big16(bytes, at) << 16U | Big16(bytes, at + 2);
}

std::uint32_t Little32(std::string_view bytes, std::size_t at) {
    return Byte(bytes, at) | Byte(bytes, at + 1) << 8U | Byte(bytes, at + 2) << 16U |
           Byte(bytes, at + 3) << 24U;
}

/// A JPEG is a row of segments; one of them, a frame, has the size.
std::optional<DxfImageKind> ReadJpeg(std::string_view bytes) {
    std::size_t at = 2;
    while (at + 9 < bytes.size() && Byte(bytes, at) == 0xFF) {
        const std::uint32_t marker = Byte(bytes, at + 1);
        const bool frame =
            marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
        if (frame) {
            return DxfImageKind{Big16(bytes, at + 7), Big16(bytes, at + 5), ".jpg"};
        }
        at += 2 + Big16(bytes, at + 2);
    }
    return std::nullopt;
}

}  // namespace

std::optional<DxfImageKind> ReadImageKind(std::string_view bytes) {
    constexpr std::size_t kHead = 26;
    if (bytes.size() < kHead) {
        return std::nullopt;
    }
    if (bytes.starts_with("\x89PNG\r\n\x1A\n")) {
        return DxfImageKind{Big32(bytes, 16), Big32(bytes, 20), ".png"};
    }
    if (bytes.starts_with("BM")) {
        // A negative height is that of an image whose first row is at the top.
        const auto height = static_cast<std::int32_t>(Little32(bytes, 22));
        return DxfImageKind{
            Little32(bytes, 18),
            static_cast<std::uint32_t>(height < 0 ? -std::int64_t{height} : std::int64_t{height}),
            ".bmp"};
    }
    if (bytes.starts_with("\xFF\xD8")) {
        return ReadJpeg(bytes);
    }
    return std::nullopt;
}

}  // namespace cqsurvey::exchange
