#pragma once

#include <cstddef>
#include <string_view>

namespace cqsurvey {

/// The field code of a point by its description: the word at its head, such as "EC" in "EC E" and
/// "SW/STEP" in "SW/STEP wet". Blanks and tabs separate words. Empty when there is no word.
template <class Unit>
[[nodiscard]] constexpr std::basic_string_view<Unit> CodeWord(
    std::basic_string_view<Unit> description) noexcept {
    const auto isBlank = [](Unit unit) {
        return unit == ' ' || unit == '\t' || unit == '\r' || unit == '\n';
    };
    while (!description.empty() && isBlank(description.front())) {
        description.remove_prefix(1);
    }
    std::size_t length = 0;
    while (length < description.size() && !isBlank(description[length])) {
        ++length;
    }
    return description.substr(0, length);
}

}  // namespace cqsurvey
