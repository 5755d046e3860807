#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

namespace cqsurvey {

/// The 32 bits of `code` as eight lower-case hexadecimal digits.
[[nodiscard]] inline std::string HexCode(std::int32_t code) {
    constexpr std::array<char, 16> kDigits{'0', '1', '2', '3', '4', '5', '6', '7',
                                           '8', '9', 'a', 'b', 'c', 'd', 'e', 'f'};
    auto bits = static_cast<std::uint32_t>(code);
    std::string text(8, '0');
    for (std::size_t place = text.size(); place-- > 0; bits >>= 4) {
        text[place] = kDigits[bits & 0xF];
    }
    return text;
}

}  // namespace cqsurvey
