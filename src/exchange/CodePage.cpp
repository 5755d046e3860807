#include "exchange/CodePage.h"

#include <fmt/format.h>
#include <iconv.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <cstddef>

#include "cqsurvey/Text.h"
#include "cqsurvey/exchange/ExchangeError.h"
#include "text/Printable.h"

namespace cqsurvey::exchange {

namespace {

constexpr const char* kWide = std::endian::native == std::endian::little ? "UTF-16LE" : "UTF-16BE";

bool IsAscii(std::string_view bytes) {
    return std::all_of(bytes.begin(), bytes.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

std::string NameOf(int page) {
    switch (page) {
        case 10000:
            return "MACINTOSH";
        case 20127:
            return "ASCII";
        case 20866:
            return "KOI8-R";
        case 21866:
            return "KOI8-U";
        case 51932:
            return "EUC-JP";
        case 51936:
            return "GB2312";
        case 51949:
            return "EUC-KR";
        case 54936:
            return "GB18030";
        default:
            break;
    }
    if (page > 28590 && page <= 28606) {
        return fmt::format("ISO-8859-{}", page - 28590);
    }
    return fmt::format("CP{}", page);
}

/// Seven-bit encodings that switch character sets by escape sequences are no narrow code pages:
/// their bytes cannot be told from separators and quotation marks.
bool Switches(int page) {
    return (page >= 50220 && page <= 50229) || page == 52936 || page == 65000;
}

/// Runs the whole of `input` through the converter; false when it does not go.
bool Convert(iconv_t converter, const char* input, std::size_t size, std::string& output) {
    output.resize(size * 4 + 16);
    // The interface lacks the const that it keeps to.
    char* from = const_cast<char*>(input);
    char* to = output.data();
    std::size_t room = output.size();
    iconv(converter, nullptr, nullptr, nullptr, nullptr);
    if (iconv(converter, &from, &size, &to, &room) != 0 || size != 0) {
        return false;
    }
    if (iconv(converter, nullptr, nullptr, &to, &room) != 0) {
        return false;
    }
    output.resize(output.size() - room);
    return true;
}

bool HasLoneSurrogate(const CString& text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool high = text[i] >= 0xD800 && text[i] < 0xDC00;
        const bool low = text[i] >= 0xDC00 && text[i] < 0xE000;
        const bool paired =
            high && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000;
        if (low || (high && !paired)) {
            return true;
        }
        i += paired ? 1U : 0U;
    }
    return false;
}

}  // namespace

CodePage::CodePage(int number) : m_number(number) {
    if (number == kUtf8) {
        return;
    }
    const std::string name = NameOf(number);
    // The interface gives (iconv_t)-1 for a page that it does not know.
    // NOLINTNEXTLINE(performance-no-int-to-ptr)
    const iconv_t none = reinterpret_cast<iconv_t>(-1);
    iconv_t toText = Switches(number) ? none : iconv_open(kWide, name.c_str());
    iconv_t toBytes = Switches(number) ? none : iconv_open(name.c_str(), kWide);
    if (toText != none && toBytes != none) {
        std::array<char, 0x7F> ascii{};
        std::string text;
        std::string back;
        for (std::size_t i = 0; i < ascii.size(); ++i) {
            ascii[i] = static_cast<char>(i);
        }
        bool keepsAscii = Convert(toText, ascii.data(), ascii.size(), text) &&
                          text.size() == ascii.size() * sizeof(char16_t) &&
                          Convert(toBytes, text.data(), text.size(), back) &&
                          std::equal(ascii.begin(), ascii.end(), back.begin(), back.end());
        for (std::size_t i = 0; keepsAscii && i < ascii.size(); ++i) {
            const std::size_t low = std::endian::native == std::endian::little ? 0 : 1;
            keepsAscii = text[i * 2 + low] == ascii[i] && text[i * 2 + 1 - low] == '\0';
        }
        if (keepsAscii) {
            m_toText = toText;
            m_toBytes = toBytes;
            return;
        }
    }
    if (toText != none) {
        iconv_close(toText);
    }
    if (toBytes != none) {
        iconv_close(toBytes);
    }
    throw OptionError(
        fmt::format("{} is no narrow code page that this system knows; 65001 is UTF-8, 1252 "
                    "Western Europe, 1251 Cyrillic, 932 Japan",
                    number));
}

CodePage::~CodePage() {
    if (m_toText != nullptr) {
        iconv_close(m_toText);
        iconv_close(m_toBytes);
    }
}

std::optional<CString> CodePage::Decode(std::string_view bytes) {
    if (IsAscii(bytes)) {
        return CString(bytes.begin(), bytes.end());
    }
    if (m_number == kUtf8) {
        return IsUtf8(bytes) ? std::optional(FromUtf8(bytes)) : std::nullopt;
    }
    std::string wide;
    if (!Convert(m_toText, bytes.data(), bytes.size(), wide)) {
        return std::nullopt;
    }
    CString text(wide.size() / sizeof(char16_t), u'\0');
    std::copy(wide.begin(), wide.end(), reinterpret_cast<char*>(text.data()));
    return text;
}

std::optional<std::string> CodePage::Encode(const CString& text) {
    if (HasLoneSurrogate(text)) {
        return std::nullopt;
    }
    if (m_number == kUtf8) {
        return ToUtf8(text);
    }
    std::string bytes;
    if (!Convert(m_toBytes, reinterpret_cast<const char*>(text.data()),
                 text.size() * sizeof(char16_t), bytes)) {
        return std::nullopt;
    }
    return bytes;
}

}  // namespace cqsurvey::exchange
