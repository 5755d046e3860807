#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstring>

namespace cqsurvey {

// Records and files keep their numbers little-endian, whatever the host does.

/// Reads a number from its little-endian bytes, on any host.
template <class T>
[[nodiscard]] T LoadLittle(const std::byte* bytes) noexcept {
    std::array<std::byte, sizeof(T)> raw;
    std::memcpy(raw.data(), bytes, sizeof(T));
    if constexpr (std::endian::native == std::endian::big) {
        std::reverse(raw.begin(), raw.end());
    }
    return std::bit_cast<T>(raw);
}

/// Writes the sizeof(T) little-endian bytes of a number.
template <class T>
void StoreLittle(std::byte* bytes, T value) noexcept {
    auto raw = std::bit_cast<std::array<std::byte, sizeof(T)>>(value);
    if constexpr (std::endian::native == std::endian::big) {
        std::reverse(raw.begin(), raw.end());
    }
    std::memcpy(bytes, raw.data(), sizeof(T));
}

}  // namespace cqsurvey
