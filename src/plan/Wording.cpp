#include "plan/Wording.h"

#include <glib.h>

namespace cqsurvey::plan {

namespace {

/// A control character as it is written in source code.
std::string Escape(gunichar c) {
    switch (c) {
        case '\n':
            return "\\n";
        case '\r':
            return "\\r";
        case '\t':
            return "\\t";
        default: {
            constexpr std::string_view kDigits = "0123456789abcdef";
            return {'\\', 'x', kDigits[c / 16 % 16], kDigits[c % 16]};
        }
    }
}

}  // namespace

std::string Count(std::size_t number, std::string_view noun) {
    std::string text = std::to_string(number) + ' ';
    text += noun;
    return number == 1 ? text : text + 's';
}

std::string UnitMark(std::optional<CqLengthUnit> unit) {
    if (!unit) {
        return {};
    }
    return *unit == CqLengthUnit::Metre               ? " m"
           : *unit == CqLengthUnit::InternationalFoot ? " ft"
                                                      : " US ft";
}

std::string Quoted(std::string_view text) {
    constexpr std::size_t kMost = 60;
    const char* const begin = text.data();
    const bool whole = text.size() <= kMost;
    const char* const end =
        whole ? begin + text.size() : g_utf8_find_prev_char(begin, begin + kMost + 1);
    std::string quoted = "\"";
    for (const char* c = begin; c < end; c = g_utf8_next_char(c)) {
        if (g_unichar_iscntrl(g_utf8_get_char(c)) != FALSE) {
            quoted += Escape(g_utf8_get_char(c));
        } else {
            quoted.append(c, static_cast<std::size_t>(g_utf8_next_char(c) - c));
        }
    }
    return quoted + (whole ? "\"" : "...\"");
}

}  // namespace cqsurvey::plan
