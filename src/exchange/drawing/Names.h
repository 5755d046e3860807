#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace cqsurvey::exchange {

/// For names that are the same in either letter case. Only the letters of ASCII are folded: the
/// others are written alike by every program.
[[nodiscard]] inline std::string Upper(std::string_view name) {
    std::string upper(name);
    std::transform(upper.begin(), upper.end(), upper.begin(), [](char c) {
        return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    });
    return upper;
}

[[nodiscard]] inline std::string Lower(std::string_view name) {
    std::string lower(name);
    std::transform(lower.begin(), lower.end(), lower.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return lower;
}

}  // namespace cqsurvey::exchange
