#include "platform/Text.h"

#include <iconv.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <cerrno>
#include <cstdint>
#include <memory>
#include <optional>
#include <type_traits>

#include "cqsurvey/CqSurveyException.h"

namespace cqsurvey {

namespace {

constexpr int kUtf8Page = 65001;
constexpr char16_t kReplacement = 0xFFFD;
constexpr std::u16string_view kWhiteSpace = u" \t\r\n\v\f";

std::atomic<int> g_codePage{kUtf8Page};

bool IsHighSurrogate(char16_t unit) {
    return (unit & 0xFC00) == 0xD800;
}
bool IsLowSurrogate(char16_t unit) {
    return (unit & 0xFC00) == 0xDC00;
}

/// What stands at the beginning of UTF-8 bytes: a character, or an ill-formed sequence to be
/// replaced as one, or, at the end of the bytes, the beginning of a character.
struct Utf8Step {
    enum class Kind { Character, IllFormed, Incomplete };

    Kind kind;
    std::size_t length;
    char32_t codePoint;
};

Utf8Step DecodeUtf8(std::string_view bytes) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
    const unsigned char lead = byte(0);
    if (lead < 0x80) {
        return {Utf8Step::Kind::Character, 1, lead};
    }
    const std::size_t length = lead < 0xC2   ? 0
                               : lead < 0xE0 ? 2
                               : lead < 0xF0 ? 3
                               : lead < 0xF5 ? 4
                                             : 0;
    if (length == 0) {
        return {Utf8Step::Kind::IllFormed, 1, 0};
    }
    // The second byte alone tells overlong forms, surrogates and numbers above U+10FFFF.
    const unsigned char low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    const unsigned char high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    char32_t codePoint = lead & (0xFFU >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        if (i == bytes.size()) {
            return {Utf8Step::Kind::Incomplete, i, 0};
        }
        if (byte(i) < (i == 1 ? low : 0x80) || byte(i) > (i == 1 ? high : 0xBF)) {
            return {Utf8Step::Kind::IllFormed, i, 0};
        }
        codePoint = codePoint << 6 | (byte(i) & 0x3FU);
    }
    return {Utf8Step::Kind::Character, length, codePoint};
}

void AppendUtf8(std::string& bytes, char32_t codePoint) {
    const auto put = [&](char32_t value) { bytes += static_cast<char>(value); };
    if (codePoint < 0x80) {
        put(codePoint);
    } else if (codePoint < 0x800) {
        put(0xC0 | codePoint >> 6);
        put(0x80 | (codePoint & 0x3F));
    } else if (codePoint < 0x10000) {
        put(0xE0 | codePoint >> 12);
        put(0x80 | (codePoint >> 6 & 0x3F));
        put(0x80 | (codePoint & 0x3F));
    } else {
        put(0xF0 | codePoint >> 18);
        put(0x80 | (codePoint >> 12 & 0x3F));
        put(0x80 | (codePoint >> 6 & 0x3F));
        put(0x80 | (codePoint & 0x3F));
    }
}

void AppendUtf8(std::string& bytes, std::u16string_view text) {
    for (std::size_t i = 0; i < text.size();) {
        const char32_t codePoint = NextCodePoint(text, i);
        AppendUtf8(bytes, codePoint >= 0xD800 && codePoint < 0xE000 ? kReplacement : codePoint);
    }
}

std::size_t WholeUtf8Prefix(std::string_view bytes) {
    // A character that is cut off shows at most three of its bytes.
    for (std::size_t tail = 1; tail <= std::min<std::size_t>(3, bytes.size()); ++tail) {
        const std::size_t begin = bytes.size() - tail;
        if (DecodeUtf8(bytes.substr(begin)).kind == Utf8Step::Kind::Incomplete) {
            return begin;
        }
    }
    return bytes.size();
}

/// The system's name of a code page; most are known under their number.
std::string IconvName(int page) {
    struct Alias {
        int page;
        const char* name;
    };
    static constexpr std::array kAliases{
        Alias{10000, "MACINTOSH"},   Alias{10007, "MAC-CYRILLIC"}, Alias{20127, "US-ASCII"},
        Alias{20866, "KOI8-R"},      Alias{20932, "EUC-JP"},       Alias{20936, "EUC-CN"},
        Alias{20949, "EUC-KR"},      Alias{21866, "KOI8-U"},       Alias{28591, "ISO-8859-1"},
        Alias{28592, "ISO-8859-2"},  Alias{28593, "ISO-8859-3"},   Alias{28594, "ISO-8859-4"},
        Alias{28595, "ISO-8859-5"},  Alias{28596, "ISO-8859-6"},   Alias{28597, "ISO-8859-7"},
        Alias{28598, "ISO-8859-8"},  Alias{28599, "ISO-8859-9"},   Alias{28600, "ISO-8859-10"},
        Alias{28601, "ISO-8859-11"}, Alias{28603, "ISO-8859-13"},  Alias{28604, "ISO-8859-14"},
        Alias{28605, "ISO-8859-15"}, Alias{28606, "ISO-8859-16"},  Alias{51932, "EUC-JP"},
        Alias{51936, "EUC-CN"},      Alias{51949, "EUC-KR"},       Alias{51950, "EUC-TW"},
        Alias{54936, "GB18030"},
    };
    const auto* alias = std::find_if(kAliases.begin(), kAliases.end(),
                                     [&](const Alias& entry) { return entry.page == page; });
    return alias != kAliases.end() ? alias->name : "CP" + std::to_string(page);
}

constexpr const char* kWideName =
    std::endian::native == std::endian::little ? "UTF-16LE" : "UTF-16BE";

class Iconv {
 public:
    Iconv(const std::string& to, const std::string& from)
        : m_descriptor(iconv_open(to.c_str(), from.c_str())) {}
    Iconv(const Iconv&) = delete;
    Iconv& operator=(const Iconv&) = delete;
    ~Iconv() {
        if (IsOpen()) {
            iconv_close(m_descriptor);
        }
    }

    [[nodiscard]] bool IsOpen() const {
        // The interface gives (iconv_t)-1 for a page that it does not know.
        // NOLINTNEXTLINE(performance-no-int-to-ptr)
        return m_descriptor != reinterpret_cast<iconv_t>(-1);
    }

    void Reset() { iconv(m_descriptor, nullptr, nullptr, nullptr, nullptr); }

    /// Converts until `in` is empty or a byte sequence stops it; gives 0, EILSEQ or EINVAL.
    int Convert(std::string_view& in, std::string& out) {
        // iconv takes its input by a pointer to non-const and does not write to it.
        char* next = const_cast<char*>(in.data());
        std::size_t left = in.size();
        const int reason = Run(&next, &left, out);
        in.remove_prefix(in.size() - left);
        return reason;
    }

    /// Gives out a character that was held back to be composed with what follows.
    void Flush(std::string& out) { Run(nullptr, nullptr, out); }

 private:
    int Run(char** next, std::size_t* left, std::string& out) {
        int reason = 0;
        do {
            std::array<char, 1024> room;
            char* put = room.data();
            std::size_t space = room.size();
            const bool stopped =
                iconv(m_descriptor, next, left, &put, &space) == static_cast<std::size_t>(-1);
            reason = stopped ? errno : 0;
            out.append(room.data(), room.size() - space);
        } while (reason == E2BIG);
        return reason;
    }

    iconv_t m_descriptor;
};

/// One code page other than UTF-8, for one thread.
class CodePage {
 public:
    explicit CodePage(int number)
        : m_number(number),
          m_decoder(kWideName, IconvName(number)),
          m_encoder(IconvName(number), kWideName) {
        if (IsKnown()) {
            ReadSingleBytes();
        }
    }

    [[nodiscard]] int Number() const { return m_number; }
    [[nodiscard]] bool IsKnown() const { return m_decoder.IsOpen() && m_encoder.IsOpen(); }
    [[nodiscard]] bool KeepsAscii() const { return m_keepsAscii; }

    CString Decode(std::string_view bytes) {
        CString text;
        if (m_singleByte) {
            text.reserve(bytes.size());
            for (const char byte : bytes) {
                text += m_table[static_cast<unsigned char>(byte)];
            }
            return text;
        }
        Walk(bytes, &text);
        return text;
    }

    std::size_t WholePrefix(std::string_view bytes) {
        return m_singleByte ? bytes.size() : Walk(bytes, nullptr);
    }

    std::string Encode(std::u16string_view text) {
        std::string bytes;
        std::string_view in(reinterpret_cast<const char*>(text.data()), 2 * text.size());
        m_encoder.Reset();
        while (m_encoder.Convert(in, bytes) != 0) {
            bytes += '?';
            std::size_t index = text.size() - in.size() / 2;
            const std::size_t begin = index;
            static_cast<void>(NextCodePoint(text, index));
            in.remove_prefix(2 * (index - begin));
        }
        return bytes;
    }

 private:
    /// Decodes into `text`, when it is given. Returns the length up to the beginning of a character
    /// that is cut off by the end of the bytes.
    std::size_t Walk(std::string_view bytes, CString* text) {
        std::string wide;
        std::string_view rest = bytes;
        std::optional<std::size_t> cut;
        m_decoder.Reset();
        while (const int reason = m_decoder.Convert(rest, wide)) {
            if (reason == EINVAL && !cut) {
                cut = bytes.size() - rest.size();
            }
            rest.remove_prefix(1);
            m_decoder.Reset();
            wide.append(reinterpret_cast<const char*>(&kReplacement), sizeof kReplacement);
        }
        if (text != nullptr) {
            text->resize(wide.size() / 2);
            std::copy(wide.begin(), wide.end(), reinterpret_cast<char*>(text->data()));
        }
        return cut.value_or(bytes.size());
    }

    /// A page whose every byte is a character is decoded by a table: the system would compose
    /// letters with the accents that follow, and so read other text than was written.
    void ReadSingleBytes() {
        m_singleByte = true;
        m_keepsAscii = true;
        for (std::size_t i = 0; i < m_table.size(); ++i) {
            const char byte = static_cast<char>(i);
            std::string_view in(&byte, 1);
            std::string wide;
            m_decoder.Reset();
            const int reason = m_decoder.Convert(in, wide);
            m_decoder.Flush(wide);
            m_table[i] = kReplacement;
            if (reason == 0 && wide.size() == 2) {
                std::copy(wide.begin(), wide.end(), reinterpret_cast<char*>(&m_table[i]));
            } else if (reason != EILSEQ) {
                m_singleByte = false;
            }
            m_keepsAscii = m_keepsAscii && (i >= 0x80 || m_table[i] == i);
        }
    }

    int m_number;
    Iconv m_decoder;
    Iconv m_encoder;
    std::array<char16_t, 256> m_table{};
    bool m_singleByte = false;
    bool m_keepsAscii = false;
};

/// The page as this thread uses it; a descriptor of iconv serves one thread only.
CodePage& ThreadsPage(int number) {
    thread_local std::unique_ptr<CodePage> page;
    if (!page || page->Number() != number || !page->IsKnown()) {
        page = std::make_unique<CodePage>(number);
    }
    return *page;
}

/// The page in force, which was found known when it was chosen.
CodePage& PageInForce(int number) {
    CodePage& page = ThreadsPage(number);
    if (!page.IsKnown()) {
        throw CqSurveyException(error::kOutOfMemory, "code page " + std::to_string(number));
    }
    return page;
}

/// The ASCII characters that begin `text` read the same in every page.
template <class Out, class In>
Out CopyAscii(In& text) {
    const auto end = std::find_if(text.begin(), text.end(), [](auto unit) {
        return static_cast<std::make_unsigned_t<decltype(unit)>>(unit) >= 0x80;
    });
    Out out;
    out.reserve(text.size());
    for (auto unit = text.begin(); unit != end; ++unit) {
        out += static_cast<typename Out::value_type>(*unit);
    }
    text.remove_prefix(out.size());
    return out;
}

}  // namespace

char32_t NextCodePoint(std::u16string_view text, std::size_t& index) {
    const char16_t unit = text[index++];
    if (IsHighSurrogate(unit) && index < text.size() && IsLowSurrogate(text[index])) {
        return 0x10000 + ((unit & 0x3FFU) << 10) + (text[index++] & 0x3FFU);
    }
    return unit;
}

void AppendCodePoint(CString& text, char32_t codePoint) {
    if (codePoint < 0x10000) {
        text += static_cast<char16_t>(codePoint);
    } else {
        text += static_cast<char16_t>(0xD800 + ((codePoint - 0x10000) >> 10));
        text += static_cast<char16_t>(0xDC00 + (codePoint & 0x3FF));
    }
}

std::size_t WholeUtf16Prefix(std::u16string_view text, std::size_t maxUnits) {
    if (text.size() <= maxUnits) {
        return text.size();
    }
    const bool splits = IsHighSurrogate(text[maxUnits - 1]) && IsLowSurrogate(text[maxUnits]);
    return splits ? maxUnits - 1 : maxUnits;
}

std::u16string_view TrimRight(std::u16string_view text) {
    return text.substr(0, text.find_last_not_of(kWhiteSpace) + 1);
}

std::u16string_view Trim(std::u16string_view text) {
    const std::u16string_view right = TrimRight(text);
    return right.substr(std::min(right.find_first_not_of(kWhiteSpace), right.size()));
}

std::string ToUtf8(const CString& text) {
    std::u16string_view rest = text;
    std::string bytes = CopyAscii<std::string>(rest);
    AppendUtf8(bytes, rest);
    return bytes;
}

CString FromUtf8(std::string_view bytes) {
    CString text = CopyAscii<CString>(bytes);
    while (!bytes.empty()) {
        const Utf8Step step = DecodeUtf8(bytes);
        AppendCodePoint(text,
                        step.kind == Utf8Step::Kind::Character ? step.codePoint : kReplacement);
        bytes.remove_prefix(step.length);
    }
    return text;
}

int SetAnsiCodePage(int codePage) {
    if (codePage != kUtf8Page && !ThreadsPage(codePage).KeepsAscii()) {
        return 0;
    }
    g_codePage = codePage;
    return 1;
}

int GetAnsiCodePage() {
    return g_codePage;
}

std::string ToAnsi(std::u16string_view text) {
    const int page = g_codePage;
    std::string bytes = CopyAscii<std::string>(text);
    if (page == kUtf8Page) {
        AppendUtf8(bytes, text);
    } else if (!text.empty()) {
        bytes += PageInForce(page).Encode(text);
    }
    return bytes;
}

CString FromAnsi(std::string_view bytes) {
    const int page = g_codePage;
    if (page == kUtf8Page) {
        return FromUtf8(bytes);
    }
    CString text = CopyAscii<CString>(bytes);
    if (!bytes.empty()) {
        text += PageInForce(page).Decode(bytes);
    }
    return text;
}

std::size_t WholeAnsiPrefix(std::string_view bytes) {
    const int page = g_codePage;
    return page == kUtf8Page ? WholeUtf8Prefix(bytes) : PageInForce(page).WholePrefix(bytes);
}

}  // namespace cqsurvey
