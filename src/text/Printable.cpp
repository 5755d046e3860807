#include "text/Printable.h"

#include <fmt/format.h>
#include <glib.h>

namespace cqsurvey {

namespace {

/// The length of the UTF-8 character at the front of `text`, which is not empty; 0 when its first
/// bytes are not well-formed.
std::size_t CharacterLength(std::string_view text) {
    constexpr gunichar kMost = 0x10FFFF;
    if (text.front() == '\0') {
        // GLib takes a zero byte for the end of the text.
        return 1;
    }
    const gunichar character =
        g_utf8_get_char_validated(text.data(), static_cast<gssize>(text.size()));
    return character > kMost ? 0 : static_cast<std::size_t>(g_unichar_to_utf8(character, nullptr));
}

}  // namespace

bool IsUtf8(std::string_view text) {
    const gchar* end = nullptr;
    while (!text.empty() && g_utf8_validate_len(text.data(), text.size(), &end) == 0) {
        if (*end != '\0') {
            return false;
        }
        // GLib takes a zero byte for a fault.
        text.remove_prefix(static_cast<std::size_t>(end - text.data()) + 1);
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

std::string NamePrefix(std::string_view name) {
    return name.empty() ? std::string() : Printable(name) + ": ";
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

}  // namespace cqsurvey
