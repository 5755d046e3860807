#pragma once

#include <string_view>

#include "cqsurvey/Types.h"

namespace cqsurvey {

/// The simple case folding of a code point as Unicode defines it: one code point for one, and the
/// same in every locale. What has no folding is returned unchanged.
[[nodiscard]] char32_t FoldCase(char32_t codePoint) noexcept;

/// Whether the texts are equal without regard to letter case. A surrogate without its partner
/// equals only itself.
[[nodiscard]] bool EqualFold(std::u16string_view a, std::u16string_view b) noexcept;

/// The text with each code point folded: texts that EqualFold calls equal are folded to one text.
[[nodiscard]] CString Folded(std::u16string_view text);

}  // namespace cqsurvey
