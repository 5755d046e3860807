#include "exchange/dxf/read/TextDecoder.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <string>
#include <system_error>
#include <utility>

#include "exchange/drawing/Names.h"

namespace cqsurvey::exchange::dxf {

namespace {

constexpr std::size_t kDigits = 4;

std::optional<char16_t> ReadHex(std::u16string_view text) {
    if (text.size() < kDigits) {
        return std::nullopt;
    }
    unsigned value = 0;
    for (const char16_t c : text.substr(0, kDigits)) {
        const unsigned digit = c >= u'0' && c <= u'9'   ? c - u'0'
                               : c >= u'a' && c <= u'f' ? c - u'a' + 10U
                               : c >= u'A' && c <= u'F' ? c - u'A' + 10U
                                                        : 16U;
        if (digit > 15) {
            return std::nullopt;
        }
        value = value * 16 + digit;
    }
    return static_cast<char16_t>(value);
}

}  // namespace

/// The character of two bytes in one of the five East Asian pages.
CString TextDecoder::DecodePair(char16_t page, char16_t bytes) {
    static constexpr std::array<int, 5> kPages{932, 950, 949, 1361, 936};
    const auto index = static_cast<std::size_t>(page - u'1');
    if (!m_asian.at(index)) {
        m_asian.at(index).emplace(kPages.at(index));
    }
    const std::string pair{static_cast<char>(static_cast<unsigned char>(bytes >> 8U)),
                           static_cast<char>(static_cast<unsigned char>(bytes & 0xFFU))};
    return m_asian.at(index)->Decode(pair);
}

CString TextDecoder::ReplaceEscapes(const CString& text) {
    CString out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::u16string_view rest = std::u16string_view(text).substr(i);
        if (rest.starts_with(u"\\U+")) {
            if (const auto unit = ReadHex(rest.substr(3))) {
                out += *unit;
                i += 2 + kDigits;
                continue;
            }
        } else if (rest.starts_with(u"\\M+") && rest.size() > 3 && rest[3] >= u'1' &&
                   rest[3] <= u'5') {
            if (const auto bytes = ReadHex(rest.substr(4))) {
                out += DecodePair(rest[3], *bytes);
                i += 3 + kDigits;
                continue;
            }
        }
        out += text[i];
    }
    return out;
}

std::optional<int> CodePageOf(std::string_view name) {
    static constexpr std::array<std::pair<std::string_view, int>, 8> kNamed{{{"utf", 65001},
                                                                             {"big5", 950},
                                                                             {"ksc5601", 949},
                                                                             {"johab", 1361},
                                                                             {"gb2312", 936},
                                                                             {"mac-roman", 10000},
                                                                             {"ascii", 1252},
                                                                             {"undefined", 1252}}};
    const std::string lower = Lower(name);
    for (const auto& [word, page] : kNamed) {
        if (lower.starts_with(word)) {
            return page;
        }
    }
    const std::size_t digits = lower.find_last_not_of("0123456789") + 1;
    int number = 0;
    const auto [end, error] =
        std::from_chars(lower.data() + digits, lower.data() + lower.size(), number);
    if (error != std::errc{} || number <= 0) {
        return std::nullopt;
    }
    constexpr int kFirstIso = 28590;
    const int page = lower.starts_with("iso") ? kFirstIso + number : number;
    return CqCodePage(page).KeepsAscii() ? std::optional<int>(page) : std::nullopt;
}

CString TextDecoder::Decode(std::string_view bytes) {
    CString text;
    if (std::all_of(bytes.begin(), bytes.end(),
                    [](char c) { return static_cast<unsigned char>(c) < 0x80; })) {
        text.assign(bytes.begin(), bytes.end());
    } else if (std::optional<CString> whole = m_page.TryDecode(bytes)) {
        text = std::move(*whole);
    } else {
        ++m_bad;
        text = m_page.Decode(bytes);
    }
    return text.find(u"\\U+") == CString::npos && text.find(u"\\M+") == CString::npos
               ? text
               : ReplaceEscapes(text);
}

CString TextDecoder::DecodeName(std::string_view bytes) {
    const CString text = Decode(bytes);
    CString name;
    for (std::size_t i = 0; i < text.size(); ++i) {
        name += text[i];
        i += text.compare(i, 2, u"^ ") == 0 ? 1 : 0;
    }
    return name;
}

}  // namespace cqsurvey::exchange::dxf
