#include "cqjob/Printable.h"

#include <fmt/format.h>

namespace cqsurvey::cqjob {

namespace {

/// The length of the well-formed UTF-8 character at the front of `text`, 0 when there is none.
std::size_t CharacterLength(std::string_view text) {
    const auto byte = [&](std::size_t i) {
        return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
    };
    const auto follows = [&](std::size_t i, unsigned low = 0x80, unsigned high = 0xBF) {
        return byte(i) >= low && byte(i) <= high;
    };
    const unsigned first = byte(0);
    if (first < 0x80) {
        return text.empty() ? 0 : 1;
    }
    if (first >= 0xC2 && first <= 0xDF) {
        return follows(1) ? 2 : 0;
    }
    if (first >= 0xE0 && first <= 0xEF) {
        const unsigned low = first == 0xE0 ? 0xA0 : 0x80;
        const unsigned high = first == 0xED ? 0x9F : 0xBF;
        return follows(1, low, high) && follows(2) ? 3 : 0;
    }
    if (first >= 0xF0 && first <= 0xF4) {
        const unsigned low = first == 0xF0 ? 0x90 : 0x80;
        const unsigned high = first == 0xF4 ? 0x8F : 0xBF;
        return follows(1, low, high) && follows(2) && follows(3) ? 4 : 0;
    }
    return 0;
}

}  // namespace

bool IsUtf8(std::string_view text) {
    while (!text.empty()) {
        const std::size_t length = CharacterLength(text);
        if (length == 0) {
            return false;
        }
        text.remove_prefix(length);
    }
    return true;
}

std::string Printable(std::string_view text) {
    std::string printable;
    printable.reserve(text.size());
    while (!text.empty()) {
        const std::size_t length = CharacterLength(text);
        const auto first = static_cast<unsigned char>(text[0]);
        if (first == '\n') {
            printable += "\\n";
        } else if (first == '\r') {
            printable += "\\r";
        } else if (first == '\t') {
            printable += "\\t";
        } else if (length == 0 || first < 0x20 || first == 0x7F) {
            printable += fmt::format("\\x{:02x}", first);
        } else if (first == 0xC2 && static_cast<unsigned char>(text[1]) < 0xA0) {
            printable += fmt::format("\\x{:02x}", static_cast<unsigned char>(text[1]));
        } else {
            printable.append(text.substr(0, length));
        }
        text.remove_prefix(length == 0 ? 1 : length);
    }
    return printable;
}

std::string Count(std::size_t number, std::string_view noun) {
    return fmt::format("{} {}{}", number, noun, number == 1 ? "" : "s");
}

std::string Quoted(std::string_view text) {
    constexpr std::size_t kMost = 60;
    if (text.size() <= kMost) {
        return '"' + Printable(text) + '"';
    }
    std::size_t end = kMost;
    while (end > kMost - 4 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) {
        --end;
    }
    return '"' + Printable(text.substr(0, end)) + "...\"";
}

}  // namespace cqsurvey::cqjob
