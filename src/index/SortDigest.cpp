#include "index/SortDigest.h"

#include <algorithm>

namespace cqsurvey {
namespace {

constexpr std::uint32_t kEndBits = 8;
constexpr std::uint32_t kLowestLong = 0xF0;
constexpr std::uint32_t kShortBits = 8;
constexpr std::uint32_t kLongBits = 20;
constexpr std::uint32_t kNumberBits = 32;

/// Fills a digest from its highest bit on; the lowest is left for the mark of one that is not
/// exact.
class DigestWriter {
 public:
    [[nodiscard]] std::uint32_t Room() const noexcept { return m_room; }

    /// Writes as many of the value's bits, from the highest on, as there is room for.
    void Write(std::uint32_t value, std::uint32_t bits) noexcept {
        if (bits > m_room) {
            value >>= bits - m_room;
            bits = m_room;
        }
        m_room -= bits;
        const std::uint32_t shift = m_room + 1;
        if (shift >= 64) {
            m_digest.high |= std::uint64_t{value} << (shift - 64);
        } else {
            m_digest.low |= std::uint64_t{value} << shift;
            if (shift + bits > 64) {
                m_digest.high |= std::uint64_t{value} >> (64 - shift);
            }
        }
    }

    /// The digest, whose bits that were not written are 0.
    [[nodiscard]] SortDigest Finish(bool exact) noexcept {
        m_digest.low |= exact ? 0 : 1;
        return m_digest;
    }

 private:
    SortDigest m_digest;
    std::uint32_t m_room = 127;
};

/// Units up to U+00EF take a byte of their own value, others 20 bits that begin with 0xF. Returns
/// how many units had room; of the next one there are the highest bits then.
std::size_t WritePrefix(DigestWriter& writer, std::u16string_view prefix) noexcept {
    std::size_t written = 0;
    for (const char16_t unit : prefix) {
        const bool isShort = unit < kLowestLong;
        const std::uint32_t bits = isShort ? kShortBits : kLongBits;
        const bool hasRoom = writer.Room() >= bits;
        writer.Write(isShort ? unit : 0xF0000U | unit, bits);
        if (!hasRoom) {
            break;
        }
        ++written;
    }
    return written;
}

}  // namespace

SortDigest DigestOfName(const NameKey& key) noexcept {
    DigestWriter writer;
    if (WritePrefix(writer, key.prefix) < key.prefix.size() || writer.Room() < kEndBits) {
        return writer.Finish(false);
    }
    // No unit of a name is 0, so the end stands before anything that goes on.
    writer.Write(0, kEndBits);
    const auto number = static_cast<std::uint32_t>(key.number + std::int64_t{1});
    const std::uint32_t bits = std::min(writer.Room(), kNumberBits);
    const auto highest = static_cast<std::uint32_t>((std::uint64_t{1} << bits) - 1);
    writer.Write(std::min(number, highest), bits);
    return writer.Finish(number < highest);
}

NameKey RestOfName(const NameKey& key) noexcept {
    DigestWriter writer;
    return {key.prefix.substr(WritePrefix(writer, key.prefix)), key.number};
}

SortDigest DigestOfCode(std::int32_t code) noexcept {
    return {static_cast<std::uint32_t>(code) ^ 0x80000000U, 0};
}

}  // namespace cqsurvey
