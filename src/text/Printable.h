#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace cqsurvey {

/// True when `text` is well-formed UTF-8.
[[nodiscard]] bool IsUtf8(std::string_view text);

/// `text` made fit for one line on a terminal: control characters and bytes that are not UTF-8
/// become \n, \t, \x1b and the like.
[[nodiscard]] std::string Printable(std::string_view text);

/// Printable text in quotation marks for a message, shortened to about 60 bytes.
[[nodiscard]] std::string Quoted(std::string_view text);

/// The beginning of a message about something: its name and ": ". Empty for an empty name.
[[nodiscard]] std::string NamePrefix(std::string_view name);

/// "1 point", "2 points".
[[nodiscard]] std::string Count(std::size_t number, std::string_view noun);

}  // namespace cqsurvey
