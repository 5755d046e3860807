#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "cqsurvey/Text.h"

namespace cqsurvey {

// The next three convert by the narrow code page in force (SetAnsiCodePage), which is the same for
// all threads. They may be called until the process ends, even by the destructors of static
// objects. They throw CqSurveyException with error::kOutOfMemory when the page can no longer be
// loaded.

/// Converts a text to the narrow code page. A character that the page lacks becomes "?". UTF-8
/// lacks none; there a surrogate without its partner becomes U+FFFD.
[[nodiscard]] std::string ToAnsi(std::u16string_view text);

/// Converts bytes in the narrow code page to a text. Bytes that are not a character become U+FFFD.
[[nodiscard]] CString FromAnsi(std::string_view bytes);

/// The length of the longest prefix that does not end inside a character of the narrow code page.
/// It is shorter than the whole only if the rest is the beginning of a character. So a long text
/// can be converted in pieces that are cut by this function, with the same result as at once.
[[nodiscard]] std::size_t WholeAnsiPrefix(std::string_view bytes);

/// Where the first `mark`, an ASCII character, stands among bytes in the narrow code page; npos
/// when there is none. In some pages its byte may also be the second half of a character.
[[nodiscard]] std::size_t FindAnsi(std::string_view bytes, char mark);

/// The text without white space (space, tab, carriage return, line feed, vertical tab, form feed)
/// at its end (TrimRight) or at both ends (Trim).
[[nodiscard]] std::u16string_view TrimRight(std::u16string_view text);
[[nodiscard]] std::u16string_view Trim(std::u16string_view text);
/// The same for bytes in the narrow code page.
[[nodiscard]] std::string_view TrimAnsi(std::string_view bytes);

}  // namespace cqsurvey
