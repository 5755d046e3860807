#pragma once

#include <cstddef>
#include <cstdint>

#include "index/NameKey.h"

namespace cqsurvey {

/// The beginning of what points are sorted by, as a number of 128 bits: of two points the one with
/// the lower digest stands first. Points with the same digest are equal if it is exact; otherwise
/// only the whole keys tell.
struct SortDigest {
    std::uint64_t high = 0;
    std::uint64_t low = 0;

    [[nodiscard]] bool operator==(const SortDigest&) const noexcept = default;
    [[nodiscard]] bool operator<(const SortDigest& other) const noexcept {
        return high != other.high ? high < other.high : low < other.low;
    }
    [[nodiscard]] bool operator>(const SortDigest& other) const noexcept { return other < *this; }
    [[nodiscard]] bool IsExact() const noexcept { return (low & 1) == 0; }
};

[[nodiscard]] SortDigest DigestOfName(const NameKey& key) noexcept;

/// What the digest of a name leaves out, for names that have the same digest, which is not exact.
[[nodiscard]] NameKey RestOfName(const NameKey& key) noexcept;

[[nodiscard]] SortDigest DigestOfCode(std::int32_t code) noexcept;

}  // namespace cqsurvey
