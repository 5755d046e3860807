#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace cqsurvey {

/// A number read from a text, or why the text is not a number.
struct ParsedNumber {
    double value = 0.0;
    /// Null when the text is a number. Otherwise a text that completes a sentence beginning with
    /// the text that was read, such as "is not a number".
    const char* fault = nullptr;
};

/// Reads a decimal number exactly. It consists of digits with at most one decimal sign; there may
/// be a sign before them, an exponent after them and blanks around them, but nothing else. The
/// decimal sign is the point, or the comma with `decimalComma`.
[[nodiscard]] ParsedNumber ParseNumber(std::string_view text, bool decimalComma = false);

/// Reads a whole number of 32 bits, with or without blanks around it. Returns nothing for any other
/// text.
[[nodiscard]] std::optional<std::int32_t> ParseWholeNumber(std::string_view text);

/// The shortest decimal number that reads back as exactly `value`; empty for not-a-number.
[[nodiscard]] std::string FormatNumber(double value);

/// `value` rounded to `decimals` (0 to 17) places; empty for not-a-number.
[[nodiscard]] std::string FormatNumber(double value, int decimals);

/// `text` without the blanks and tabs around it.
[[nodiscard]] std::string_view Trim(std::string_view text);

}  // namespace cqsurvey
