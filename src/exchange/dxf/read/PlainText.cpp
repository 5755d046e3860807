#include "exchange/dxf/read/PlainText.h"

#include <algorithm>
#include <cstddef>

namespace cqsurvey::exchange::dxf {

namespace {

bool IsDigit(char16_t c) {
    return c >= u'0' && c <= u'9';
}

char16_t ToLower(char16_t c) {
    return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c - u'A' + u'a') : c;
}

/// Reads the code after "%%" at `index`, and moves `index` past it; false when there is none.
bool ReadPercent(std::u16string_view text, std::size_t& index, PlainText& out) {
    switch (ToLower(text[index])) {
        case u'd':
            out.text += u'\u00B0';
            break;
        case u'p':
            out.text += u'\u00B1';
            break;
        case u'c':
            out.text += u'\u2300';
            break;
        case u'%':
            out.text += u'%';
            break;
        case u'u':
        case u'o':
        case u'k':
            out.changed = true;
            break;
        default: {
            const std::u16string_view digits = text.substr(index, 3);
            if (digits.size() < 3 || !std::all_of(digits.begin(), digits.end(), IsDigit)) {
                return false;
            }
            const int number =
                (digits[0] - u'0') * 100 + (digits[1] - u'0') * 10 + (digits[2] - u'0');
            out.text += static_cast<char16_t>(number);
            index += 2;
            break;
        }
    }
    ++index;
    return true;
}

/// Reads an MTEXT code, which goes on to a semicolon.
std::u16string_view TakeArgument(std::u16string_view text, std::size_t& index) {
    const std::size_t end = std::min(text.find(u';', index), text.size());
    const std::u16string_view argument = text.substr(index, end - index);
    index = std::min(end + 1, text.size());
    return argument;
}

/// "1^2", "1/2" and "1#2" are stacked; on one line they are "1/2".
CString Unstack(std::u16string_view stacked) {
    CString out;
    for (std::size_t i = 0; i < stacked.size(); ++i) {
        const char16_t c = stacked[i];
        if (c == u'\\' && i + 1 < stacked.size()) {
            out += stacked[++i];
        } else if (c == u'^' || c == u'#') {
            out += u'/';
            if (i + 1 < stacked.size() && stacked[i + 1] == u' ') {
                ++i;
            }
        } else {
            out += c;
        }
    }
    if (!out.empty() && out.back() == u'/') {
        out.pop_back();
    } else if (!out.empty() && out.front() == u'/') {
        out.erase(0, 1);
    }
    return out;
}

/// Reads the code after a backslash at `index`, and moves `index` past it.
void ReadCode(std::u16string_view text, std::size_t& index, PlainText& out) {
    const char16_t code = text[index++];
    switch (code) {
        case u'P':
        case u'X':
        case u'N':
            out.text += u'\n';
            out.changed |= code != u'P';
            break;
        case u'~':
            out.text += u'\u00A0';
            break;
        case u'S':
            out.text += Unstack(TakeArgument(text, index));
            out.changed = true;
            break;
        case u'L':
        case u'l':
        case u'O':
        case u'o':
        case u'K':
        case u'k':
            out.changed = true;
            break;
        case u'A':
        case u'C':
        case u'c':
        case u'F':
        case u'f':
        case u'H':
        case u'p':
        case u'Q':
        case u'T':
        case u'W':
            TakeArgument(text, index);
            out.changed = true;
            break;
        case u'\\':
        case u'{':
        case u'}':
            out.text += code;
            break;
        default:
            out.text += u'\\';
            out.text += code;
            break;
    }
}

}  // namespace

CString ReplaceCarets(std::u16string_view text) {
    CString out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == u'^' && i + 1 < text.size()) {
            const char16_t next = text[i + 1];
            if (next == u' ') {
                out += u'^';
                ++i;
                continue;
            }
            if (next >= u'@' && next <= u'_') {
                out += static_cast<char16_t>(next - u'@');
                ++i;
                continue;
            }
        }
        out += text[i];
    }
    return out;
}

PlainText ResolveText(std::u16string_view raw) {
    const CString text = ReplaceCarets(raw);
    PlainText out;
    for (std::size_t i = 0; i < text.size();) {
        std::size_t after = i + 2;
        if (text[i] == u'%' && after < text.size() && text[i + 1] == u'%' &&
            ReadPercent(text, after, out)) {
            i = after;
        } else {
            out.text += text[i++];
        }
    }
    return out;
}

PlainText ResolveMText(std::u16string_view raw) {
    const CString text = ReplaceCarets(raw);
    PlainText out;
    for (std::size_t i = 0; i < text.size();) {
        const char16_t c = text[i];
        std::size_t after = i + 2;
        if (c == u'\\' && i + 1 < text.size()) {
            ++i;
            ReadCode(text, i, out);
        } else if (c == u'{' || c == u'}') {
            ++i;
        } else if (c == u'%' && after < text.size() && text[i + 1] == u'%' &&
                   ReadPercent(text, after, out)) {
            i = after;
        } else {
            out.text += c;
            ++i;
        }
    }
    return out;
}

}  // namespace cqsurvey::exchange::dxf
