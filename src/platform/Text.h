#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "cqsurvey/Text.h"

namespace cqsurvey {

// The narrow code page in force (SetAnsiCodePage), as every thread uses it. The three may be called
// until the process ends, by the destructors of static objects too. They throw CqSurveyException
// error::kOutOfMemory when the page cannot be loaded any more.

/// The text in the narrow code page. A character that the page lacks becomes "?"; in UTF-8, which
/// lacks none, a surrogate without its partner becomes U+FFFD.
[[nodiscard]] std::string ToAnsi(std::u16string_view text);

/// The text of bytes in the narrow code page. Bytes that are no character become U+FFFD.
[[nodiscard]] CString FromAnsi(std::string_view bytes);

/// The length of the longest prefix that does not end inside a character of the narrow code page:
/// less than the whole only when the rest is the beginning of a character. Bytes that are converted
/// in pieces cut by it read as those that are converted at once.
[[nodiscard]] std::size_t WholeAnsiPrefix(std::string_view bytes);

/// The text without white space (space, tab, carriage return, line feed, vertical tab, form feed)
/// at its end, or at both ends.
[[nodiscard]] std::u16string_view TrimRight(std::u16string_view text);
[[nodiscard]] std::u16string_view Trim(std::u16string_view text);

}  // namespace cqsurvey
