#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace cqsurvey::cqjob {

/// What the first bytes of an image say about it.
struct ImageHeader {
    const char* format = "";  ///< such as "PNG"
    /// In pixels; 0 when this program does not know how to find it in the format.
    std::uint32_t width = 0;
    std::uint32_t height = 0;

    /// Reads the header of a PNG, JPEG, BMP, TIFF, GIF or WebP image. Nothing when the bytes are
    /// none of these. A file that ends too early has no size.
    [[nodiscard]] static std::optional<ImageHeader> Find(std::string_view bytes);
};

}  // namespace cqsurvey::cqjob
