#include "cqsurvey/exchange/ImageHeader.h"

#include <cstddef>

namespace cqsurvey::exchange {

namespace {

/// The bytes of a file, with numbers of either byte order. What lies behind the end is 0.
class Bytes {
 public:
    Bytes(std::string_view bytes, bool bigEndian) : m_bytes(bytes), m_bigEndian(bigEndian) {}

    [[nodiscard]] std::uint32_t Number(std::size_t at, std::size_t length) const {
        std::uint32_t number = 0;
        for (std::size_t i = 0; i < length; ++i) {
            const std::size_t place = m_bigEndian ? at + i : at + length - 1 - i;
            const auto byte =
                place < m_bytes.size() ? static_cast<unsigned char>(m_bytes[place]) : 0U;
            number = number << 8U | byte;
        }
        return number;
    }
    [[nodiscard]] bool Holds(std::size_t at) const { return at < m_bytes.size(); }

 private:
    std::string_view m_bytes;
    bool m_bigEndian;
};

ImageHeader ReadPng(std::string_view file) {
    const Bytes bytes(file, true);
    return {"PNG", bytes.Number(16, 4), bytes.Number(20, 4)};
}

ImageHeader ReadBmp(std::string_view file) {
    constexpr std::uint32_t kOldHeader = 12;
    const Bytes bytes(file, false);
    if (bytes.Number(14, 4) == kOldHeader) {
        return {"BMP", bytes.Number(18, 2), bytes.Number(20, 2)};
    }
    const std::uint32_t height = bytes.Number(22, 4);
    // A negative height says that the rows run from the top.
    return {"BMP", bytes.Number(18, 4), height >> 31U == 0 ? height : 0U - height};
}

ImageHeader ReadGif(std::string_view file) {
    const Bytes bytes(file, false);
    return {"GIF", bytes.Number(6, 2), bytes.Number(8, 2)};
}

/// The size is in the segment that begins the frame, behind others of any length.
ImageHeader ReadJpeg(std::string_view file) {
    const Bytes bytes(file, true);
    for (std::size_t at = 2; bytes.Holds(at + 8);) {
        const std::uint32_t marker = bytes.Number(at, 2);
        if (marker >> 8U != 0xFF) {
            break;
        }
        const std::uint32_t kind = marker & 0xFFU;
        if (kind == 0xFF) {
            ++at;
            continue;
        }
        const bool frame =
            kind >= 0xC0 && kind <= 0xCF && kind != 0xC4 && kind != 0xC8 && kind != 0xCC;
        if (frame) {
            return {"JPEG", bytes.Number(at + 7, 2), bytes.Number(at + 5, 2)};
        }
        at += 2 + bytes.Number(at + 2, 2);
    }
    return {"JPEG", 0, 0};
}

/// The size is among the entries of the first directory.
ImageHeader ReadTiff(std::string_view file, bool bigEndian) {
    constexpr std::uint32_t kWidth = 256;
    constexpr std::uint32_t kHeight = 257;
    constexpr std::uint32_t kShort = 3;
    const Bytes bytes(file, bigEndian);
    ImageHeader header{"TIFF", 0, 0};
    const std::size_t directory = bytes.Number(4, 4);
    const std::uint32_t entries = bytes.Number(directory, 2);
    for (std::uint32_t i = 0; i < entries; ++i) {
        const std::size_t entry = directory + 2 + std::size_t{12} * i;
        const std::uint32_t tag = bytes.Number(entry, 2);
        const std::uint32_t value =
            bytes.Number(entry + 8, bytes.Number(entry + 2, 2) == kShort ? 2 : 4);
        header.width = tag == kWidth ? value : header.width;
        header.height = tag == kHeight ? value : header.height;
    }
    return header;
}

}  // namespace

std::optional<ImageHeader> ImageHeader::Find(std::string_view bytes) {
    using namespace std::literals;
    if (bytes.starts_with("\x89PNG\r\n\x1A\n"sv)) {
        return ReadPng(bytes);
    }
    if (bytes.starts_with("\xFF\xD8\xFF"sv)) {
        return ReadJpeg(bytes);
    }
    // Two letters alone might begin a text, so the reserved bytes are looked at as well.
    if (bytes.starts_with("BM"sv) && bytes.substr(0, 10).ends_with("\0\0\0\0"sv)) {
        return ReadBmp(bytes);
    }
    if (bytes.starts_with("GIF87a"sv) || bytes.starts_with("GIF89a"sv)) {
        return ReadGif(bytes);
    }
    if (bytes.starts_with("II*\0"sv) || bytes.starts_with("MM\0*"sv)) {
        return ReadTiff(bytes, bytes.front() == 'M');
    }
    if (bytes.starts_with("RIFF"sv) && bytes.substr(0, 12).ends_with("WEBP"sv)) {
        return ImageHeader{"WebP", 0, 0};
    }
    return std::nullopt;
}

}  // namespace cqsurvey::exchange
