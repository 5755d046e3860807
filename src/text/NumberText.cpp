#include "text/NumberText.h"

#include <array>
#include <charconv>
#include <cmath>
#include <system_error>

namespace cqsurvey {

namespace {

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

constexpr const char* kNoNumber = "is not a number";

}  // namespace

std::string_view Trim(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) {
        text.remove_prefix(1);
    }
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) {
        text.remove_suffix(1);
    }
    return text;
}

ParsedNumber ParseNumber(std::string_view text, bool decimalComma) {
    text = Trim(text);
    if (text.empty()) {
        return {.fault = "is empty"};
    }
    if (!decimalComma && text.find(',') != std::string_view::npos) {
        return {.fault = "is not a number: it holds a comma"};
    }
    std::string pointed;
    if (decimalComma) {
        if (text.find('.') != std::string_view::npos) {
            return {.fault = "is not a number: it holds a point where decimal commas are used"};
        }
        if (const std::size_t comma = text.find(','); comma != std::string_view::npos) {
            pointed = text;
            pointed[comma] = '.';
            text = pointed;
        }
    }
    const bool signedText = text.front() == '+' || text.front() == '-';
    const std::string_view digits = text.substr(signedText ? 1 : 0);
    const bool pointFirst = !digits.empty() && digits.front() == '.';
    if (digits.size() <= (pointFirst ? 1U : 0U) || !IsDigit(digits[pointFirst ? 1 : 0])) {
        return {.fault = kNoNumber};
    }
    // from_chars takes a minus sign but no plus sign.
    const std::string_view accepted = text.front() == '+' ? digits : text;
    ParsedNumber number;
    const auto [end, error] =
        std::from_chars(accepted.data(), accepted.data() + accepted.size(), number.value);
    if (end != accepted.data() + accepted.size()) {
        return {.fault = kNoNumber};
    }
    if (error == std::errc::result_out_of_range) {
        return {.fault = "is too large or too small a number to be kept"};
    }
    if (error != std::errc{}) {
        return {.fault = kNoNumber};
    }
    return number;
}

std::optional<std::int32_t> ParseWholeNumber(std::string_view text) {
    text = Trim(text);
    if (text.size() > 1 && text.front() == '+' && IsDigit(text[1])) {
        text.remove_prefix(1);
    }
    std::int32_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size()) {
        return std::nullopt;
    }
    return value;
}

std::string FormatNumber(double value) {
    if (std::isnan(value)) {
        return {};
    }
    // People read coordinates, so numbers in their range have no exponent.
    const double size = std::fabs(value);
    const bool plain = size == 0.0 || (size >= 1e-7 && size < 1e16);
    std::array<char, 64> buffer{};
    const auto [end, error] =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                      plain ? std::chars_format::fixed : std::chars_format::scientific);
    return {buffer.data(), end};
}

std::string FormatNumber(double value, int decimals) {
    if (std::isnan(value)) {
        return {};
    }
    // The largest double has 309 digits before the point.
    std::array<char, 340> buffer{};
    const auto [end, error] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                                            std::chars_format::fixed, decimals);
    return {buffer.data(), end};
}

}  // namespace cqsurvey
