#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "cqsurvey/Text.h"

namespace cqsurvey {

/// The text in the narrow code page. A character that the page lacks becomes "?"; in UTF-8, which
/// lacks none, a surrogate without its partner becomes U+FFFD.
[[nodiscard]] std::string ToAnsi(std::u16string_view text);

/// The text of bytes in the narrow code page. Bytes that are no character become U+FFFD.
[[nodiscard]] CString FromAnsi(std::string_view bytes);

/// The length of the longest prefix that does not end inside a character of the narrow code page:
/// less than the whole only when the rest is the beginning of a character. What is converted in
/// pieces cut by it reads as what is converted at once.
[[nodiscard]] std::size_t WholeAnsiPrefix(std::string_view bytes);

/// The length of the longest prefix of at most `maxUnits` code units (at least 2) that does not
/// end between the two halves of a surrogate pair.
[[nodiscard]] std::size_t WholeUtf16Prefix(std::u16string_view text, std::size_t maxUnits);

/// The text without white space (space, tab, carriage return, line feed, vertical tab, form feed)
/// at its end, or at both ends.
[[nodiscard]] std::u16string_view TrimRight(std::u16string_view text);
[[nodiscard]] std::u16string_view Trim(std::u16string_view text);

/// The code point that begins at text[index], of which `index` is moved past; a surrogate without
/// its partner counts as itself.
[[nodiscard]] char32_t NextCodePoint(std::u16string_view text, std::size_t& index);

/// Appends a code point of at most U+10FFFF.
void AppendCodePoint(CString& text, char32_t codePoint);

}  // namespace cqsurvey
