#pragma once

#include <cstdint>
#include <string_view>

namespace cqsurvey {

/// A point name as it is compared: P2 stands before P10, and P01 is as good as P1.
struct NameKey {
    /// The name without its trailing digits.
    std::u16string_view prefix;
    /// The value of the trailing digits, at most 2147483647; -1 without any.
    std::int32_t number = -1;

    /// True for the key of an empty name only.
    [[nodiscard]] bool IsEmpty() const noexcept { return prefix.empty() && number == -1; }
};

/// The key looks into `name`, which must outlive it. Only "0" to "9" are digits.
[[nodiscard]] NameKey MakeNameKey(std::u16string_view name) noexcept;

/// -1, 0 or 1: the prefixes by their code units, then the numbers. The numbers are compared by
/// their values and never by their difference, which leaves 32 bits between 2147483647 and -1.
[[nodiscard]] int CompareNameKeys(const NameKey& a, const NameKey& b) noexcept;

}  // namespace cqsurvey
