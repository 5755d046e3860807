#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstring>

namespace cqsurvey {

// Numbers in records and files are little-endian on every host, so that a job can be read on any of
// them. The bytes need no alignment: records are packed. The header of a database is big-endian.

/// Reads a number from its bytes in the order `order`.
template <std::endian order, class T>
[[nodiscard]] T LoadOrdered(const std::byte* bytes) noexcept {
    std::array<std::byte, sizeof(T)> raw;
    std::memcpy(raw.data(), bytes, sizeof(T));
    if constexpr (std::endian::native != order) {
        std::reverse(raw.begin(), raw.end());
    }
    return std::bit_cast<T>(raw);
}

/// Writes a number as bytes in the order `order`.
template <std::endian order, class T>
void StoreOrdered(std::byte* bytes, T value) noexcept {
    auto raw = std::bit_cast<std::array<std::byte, sizeof(T)>>(value);
    if constexpr (std::endian::native != order) {
        std::reverse(raw.begin(), raw.end());
    }
    std::memcpy(bytes, raw.data(), sizeof(T));
}

template <class T>
[[nodiscard]] T LoadLittle(const std::byte* bytes) noexcept {
    return LoadOrdered<std::endian::little, T>(bytes);
}

template <class T>
void StoreLittle(std::byte* bytes, T value) noexcept {
    StoreOrdered<std::endian::little>(bytes, value);
}

template <class T>
[[nodiscard]] T LoadBig(const std::byte* bytes) noexcept {
    return LoadOrdered<std::endian::big, T>(bytes);
}

template <class T>
void StoreBig(std::byte* bytes, T value) noexcept {
    StoreOrdered<std::endian::big>(bytes, value);
}

}  // namespace cqsurvey
