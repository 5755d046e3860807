#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstring>

namespace cqsurvey {

// Numbers in records and files are little-endian on every host, so that a job can be read on any of
// them. The bytes need no alignment: records are packed.

/// Reads a number from its little-endian bytes.
template <class T>
[[nodiscard]] T LoadLittle(const std::byte* bytes) noexcept {
    std::array<std::byte, sizeof(T)> raw;
    std::memcpy(raw.data(), bytes, sizeof(T));
    if constexpr (std::endian::native == std::endian::big) {
        std::reverse(raw.begin(), raw.end());
    }
    return std::bit_cast<T>(raw);
}

/// Writes a number as little-endian bytes.
template <class T>
void StoreLittle(std::byte* bytes, T value) noexcept {
    auto raw = std::bit_cast<std::array<std::byte, sizeof(T)>>(value);
    if constexpr (std::endian::native == std::endian::big) {
        std::reverse(raw.begin(), raw.end());
    }
    std::memcpy(bytes, raw.data(), sizeof(T));
}

}  // namespace cqsurvey
