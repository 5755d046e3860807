#include "plan/images/BmpDecoder.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <initializer_list>

#include "plan/images/ImageFault.h"

namespace cqsurvey::plan {

namespace {

constexpr std::uint32_t kOpaque = 0xFF000000U;
/// The file's header is the same for all kinds. The image's header follows and begins with its
/// length.
constexpr std::size_t kFileHeader = 14;
constexpr std::size_t kPixelsAt = 10;
constexpr std::uint32_t kCoreHeader = 12;
constexpr std::uint32_t kInfoHeader = 40;
constexpr std::uint32_t kLongestHeader = 124;
constexpr std::size_t kMasksAt = kFileHeader + kInfoHeader;

enum class Packing : std::uint32_t {
    None = 0,
    Runs8 = 1,
    Runs4 = 2,
    Masks = 3,
    MasksWithAlpha = 6
};

/// The bytes of an image. Reading beyond their end throws ImageFault: the image is damaged.
class Bytes {
 public:
    explicit Bytes(std::span<const std::uint8_t> bytes) : m_bytes(bytes) {}

    [[nodiscard]] std::span<const std::uint8_t> Get(std::uint64_t at, std::uint64_t length) const {
        if (at > m_bytes.size() || length > m_bytes.size() - at) {
            throw ImageFault("is damaged");
        }
        return m_bytes.subspan(at, length);
    }
    /// A number of `length` bytes, the lowest first.
    [[nodiscard]] std::uint32_t GetNumber(std::uint64_t at, std::size_t length) const {
        std::uint32_t number = 0;
        for (const std::span<const std::uint8_t> bytes = Get(at, length); length > 0; --length) {
            number = (number << 8U) | bytes[length - 1];
        }
        return number;
    }
    [[nodiscard]] std::uint64_t GetSize() const { return m_bytes.size(); }

 private:
    std::span<const std::uint8_t> m_bytes;
};

/// The bits of red, green or blue within a pixel.
class Channel {
 public:
    explicit Channel(std::uint32_t mask)
        : m_mask(mask), m_shift(mask == 0 ? 0U : static_cast<unsigned>(std::countr_zero(mask))) {}

    /// 0 to 255.
    [[nodiscard]] std::uint32_t Find(std::uint32_t pixel) const {
        const std::uint64_t largest = m_mask >> m_shift;
        return largest == 0
                   ? 0U
                   : static_cast<std::uint32_t>(((pixel & m_mask) >> m_shift) * 255ULL / largest);
    }

 private:
    std::uint32_t m_mask;
    unsigned m_shift;
};

class BmpReader {
 public:
    explicit BmpReader(std::span<const std::uint8_t> bytes) : m_bytes(bytes) { ReadHeader(); }

    Bitmap Decode() {
        if (m_packing == Packing::Runs8 || m_packing == Packing::Runs4) {
            Bitmap bitmap(m_width, m_height);
            DecodeRuns(bitmap);
            return bitmap;
        }
        // No memory is allocated for pixels that the file does not have.
        const std::uint64_t stride = (m_width * m_bits + 31) / 32 * 4;
        static_cast<void>(m_bytes.Get(m_pixels, stride * m_height));
        Bitmap bitmap(m_width, m_height);
        for (std::uint64_t y = 0; y < m_height; ++y) {
            DecodeRow(m_bytes.Get(m_pixels + y * stride, stride), RowFromFile(bitmap, y));
        }
        return bitmap;
    }

 private:
    void ReadHeader() {
        m_pixels = m_bytes.GetNumber(kPixelsAt, 4);
        const std::uint32_t header = m_bytes.GetNumber(kFileHeader, 4);
        const bool core = header == kCoreHeader;
        if (!core && (header < kInfoHeader || header > kLongestHeader)) {
            throw ImageFault("is damaged");
        }
        const std::size_t side = core ? 2 : 4;
        m_width = m_bytes.GetNumber(kFileHeader + 4, side);
        m_height = m_bytes.GetNumber(kFileHeader + 4 + side, side);
        constexpr std::uint32_t kNegative = 0x80000000U;
        if (!core && (m_height & kNegative) != 0) {
            m_height = kNegative - (m_height & ~kNegative);
            m_fromTop = true;
        }
        Bitmap::ExpectSize(m_width, m_height);
        m_bits = m_bytes.GetNumber(kFileHeader + 6 + 2 * side, 2);
        if (!core) {
            m_packing = static_cast<Packing>(m_bytes.GetNumber(kFileHeader + 16, 4));
        }
        ExpectKind();
        const bool masks = m_packing == Packing::Masks || m_packing == Packing::MasksWithAlpha;
        if (masks) {
            for (std::size_t i = 0; i < m_channels.size(); ++i) {
                m_channels[i] = Channel(m_bytes.GetNumber(kMasksAt + 4 * i, 4));
            }
        } else if (m_bits == 16) {
            m_channels = {Channel(0x7C00), Channel(0x03E0), Channel(0x001F)};
        }
        if (m_bits <= 8) {
            ReadPalette(kFileHeader + header, core ? 3 : 4);
        }
    }

    void ExpectKind() const {
        const auto among = [this](std::initializer_list<std::uint32_t> bits) {
            return std::find(bits.begin(), bits.end(), m_bits) != bits.end();
        };
        const bool known = m_packing == Packing::None    ? among({1, 4, 8, 16, 24, 32})
                           : m_packing == Packing::Runs8 ? among({8}) && !m_fromTop
                           : m_packing == Packing::Runs4 ? among({4}) && !m_fromTop
                           : m_packing == Packing::Masks || m_packing == Packing::MasksWithAlpha
                               ? among({16, 32})
                               : false;
        if (!known) {
            throw ImageFault("is a BMP of an unknown kind");
        }
    }

    /// The palette ends where the pixels begin, and has at most as many colours as a pixel has
    /// values.
    void ReadPalette(std::uint64_t at, std::uint64_t length) {
        const std::uint64_t end = std::min(m_pixels, m_bytes.GetSize());
        const std::uint64_t room = end > at ? (end - at) / length : 0;
        m_palette.fill(kOpaque);
        for (std::uint64_t i = 0; i < std::min(room, std::uint64_t{1} << m_bits); ++i) {
            m_palette[i] = kOpaque | m_bytes.GetNumber(at + i * length, 3);
        }
    }

    std::span<std::uint32_t> RowFromFile(Bitmap& bitmap, std::uint64_t y) const {
        return bitmap.GetRow(static_cast<int>(m_fromTop ? y : m_height - 1 - y));
    }

    void DecodeRow(std::span<const std::uint8_t> bytes, std::span<std::uint32_t> row) const {
        const std::size_t length = m_bits / 8;
        for (std::size_t x = 0; x < row.size(); ++x) {
            if (length <= 1) {
                const std::size_t bit = x * m_bits;
                const std::size_t shift = 8 - m_bits - bit % 8;
                const std::size_t mask = (std::size_t{1} << m_bits) - 1;
                row[x] = m_palette[(bytes[bit / 8] >> shift) & mask];
                continue;
            }
            std::uint32_t pixel = 0;
            for (std::size_t i = length; i > 0; --i) {
                pixel = (pixel << 8U) | bytes[x * length + i - 1];
            }
            row[x] = kOpaque | (m_channels[0].Find(pixel) << 16U) |
                     (m_channels[1].Find(pixel) << 8U) | m_channels[2].Find(pixel);
        }
    }

    /// The runs are pairs of bytes: how many pixels, and of which colours. A zero begins something
    /// else.
    void DecodeRuns(Bitmap& bitmap) const {
        for (int y = 0; y < bitmap.GetHeight(); ++y) {
            const std::span<std::uint32_t> row = bitmap.GetRow(y);
            std::fill(row.begin(), row.end(), m_palette[0]);
        }
        constexpr std::uint32_t kEndOfLine = 0;
        constexpr std::uint32_t kEnd = 1;
        constexpr std::uint32_t kMove = 2;
        std::uint64_t at = m_pixels;
        std::uint64_t x = 0;
        std::uint64_t y = 0;
        const auto put = [&](std::size_t color) {
            if (y >= m_height) {
                throw ImageFault("is damaged");
            }
            // Runs that fill a whole number of bytes go past the end of an odd row.
            if (x < m_width) {
                RowFromFile(bitmap, y)[x] = m_palette[color];
            }
            ++x;
        };
        const bool half = m_packing == Packing::Runs4;
        // The colour of pixel `i` of those that begin at byte `from`.
        const auto color = [&](std::uint64_t from, std::uint32_t i) -> std::size_t {
            const std::uint32_t byte = m_bytes.GetNumber(from + (half ? i / 2 : i), 1);
            return !half ? byte : i % 2 == 0 ? byte >> 4U : byte & 0x0FU;
        };
        while (true) {
            const std::uint32_t count = m_bytes.GetNumber(at, 1);
            const std::uint32_t what = m_bytes.GetNumber(at + 1, 1);
            at += 2;
            if (count > 0) {
                for (std::uint32_t i = 0; i < count; ++i) {
                    put(color(at - 1, half ? i % 2 : 0));
                }
            } else if (what == kEnd) {
                return;
            } else if (what == kEndOfLine) {
                x = 0;
                ++y;
            } else if (what == kMove) {
                x += m_bytes.GetNumber(at, 1);
                y += m_bytes.GetNumber(at + 1, 1);
                at += 2;
            } else {
                for (std::uint32_t i = 0; i < what; ++i) {
                    put(color(at, i));
                }
                // Literal pixels take a whole number of 16-bit words.
                const std::uint64_t length = half ? (what + 1) / 2 : what;
                at += length + length % 2;
            }
        }
    }

    Bytes m_bytes;
    std::uint64_t m_pixels = 0;
    std::uint64_t m_width = 0;
    std::uint64_t m_height = 0;
    bool m_fromTop = false;
    std::uint32_t m_bits = 0;
    Packing m_packing = Packing::None;
    /// Red, green and blue, as in all images of 24 bits and most of 32.
    std::array<Channel, 3> m_channels{Channel(0xFF0000), Channel(0x00FF00), Channel(0x0000FF)};
    std::array<std::uint32_t, 256> m_palette{};
};

}  // namespace

bool IsBmp(std::span<const std::uint8_t> bytes) {
    return bytes.size() >= 2 && bytes[0] == 'B' && bytes[1] == 'M';
}

Bitmap DecodeBmp(std::span<const std::uint8_t> bytes) {
    return BmpReader(bytes).Decode();
}

}  // namespace cqsurvey::plan
