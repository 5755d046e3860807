#pragma once

#include <string_view>

namespace cqsurvey {

/// The simple case folding of a code point, the same in every locale.
[[nodiscard]] char32_t FoldCase(char32_t codePoint) noexcept;

/// True when the texts are alike but for letter case. A surrogate without its partner is like
/// itself only.
[[nodiscard]] bool EqualFold(std::u16string_view a, std::u16string_view b) noexcept;

}  // namespace cqsurvey
