#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "cqsurvey/exchange/Export.h"

namespace cqsurvey::exchange {

/// What the first bytes of an image say about it. The image is not decoded.
struct CQSURVEY_EXCHANGE_API ImageHeader {
    const char* format = "";  ///< "PNG", "JPEG", "BMP", "TIFF", "GIF" or "WebP"
    /// In pixels; 0 when this library does not know how to find it in the format.
    std::uint32_t width = 0;
    std::uint32_t height = 0;

    /// Reads the header of an image of one of these formats; nothing for other bytes. Bytes that
    /// end too early have no size.
    [[nodiscard]] static std::optional<ImageHeader> Find(std::string_view bytes);
};

}  // namespace cqsurvey::exchange
