#include "cqsurvey/CodePage.h"

#include <iconv.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <new>
#include <utility>

#include "cqsurvey/CqSurveyException.h"
#include "cqsurvey/Text.h"
#include "platform/AsciiPrefix.h"

namespace cqsurvey {

namespace {

/// The name under which iconv knows a code page; for most it is "CP" and the number.
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

std::string_view BytesOf(std::u16string_view text) {
    return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(char16_t)};
}

/// Where the first of the invisible tags U+E0000 to U+E007F begins. They need care, because iconv
/// drops them silently instead of reporting that the page lacks them.
std::size_t FindTag(std::u16string_view text) {
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t begin = i;
        if (const char32_t codePoint = NextCodePoint(text, i); codePoint >> 7 == 0xE0000 >> 7) {
            return begin;
        }
    }
    return text.size();
}

/// A conversion of iconv in one direction.
class Iconv {
 public:
    Iconv(const std::string& to, const std::string& from)
        : m_descriptor(iconv_open(to.c_str(), from.c_str())) {
        if (!IsOpen() && errno == ENOMEM) {
            throw std::bad_alloc();
        }
    }
    Iconv(const Iconv&) = delete;
    Iconv& operator=(const Iconv&) = delete;
    ~Iconv() {
        if (IsOpen()) {
            iconv_close(m_descriptor);
        }
    }

    [[nodiscard]] bool IsOpen() const {
        // iconv_open returns (iconv_t)-1 for a page that it does not know.
        // NOLINTNEXTLINE(performance-no-int-to-ptr)
        return m_descriptor != reinterpret_cast<iconv_t>(-1);
    }

    void Reset() { iconv(m_descriptor, nullptr, nullptr, nullptr, nullptr); }

    /// Converts from the front of `in`, and removes what it has converted, until `in` is empty or
    /// begins with something that cannot be converted. Returns 0 in the first case, otherwise
    /// EILSEQ, or EINVAL when `in` is the beginning of a character.
    int Convert(std::string_view& in, std::string& out) {
        // iconv takes a pointer to non-const, but does not write to its input.
        char* next = const_cast<char*>(in.data());
        std::size_t left = in.size();
        const int reason = Run(&next, &left, out);
        in.remove_prefix(in.size() - left);
        return reason;
    }

    /// Writes what iconv has held back: a character that might have been combined with the next
    /// one, or the bytes that switch back from another character set.
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

}  // namespace

/// A code page other than UTF-8: a conversion of iconv for each direction. A page in which every
/// byte is a character is decoded by a table of its 256 characters instead.
///
/// iconv stops at what it cannot convert. Each conversion then writes a replacement, skips one byte
/// or character, and goes on; `exact` says that this was never necessary.
class CqCodePage::Page {
 public:
    explicit Page(int number)
        : m_decoder(kWideName, IconvName(number)), m_encoder(IconvName(number), kWideName) {
        if (IsKnown()) {
            ReadSingleBytes();
        }
    }

    [[nodiscard]] bool IsKnown() const { return m_decoder.IsOpen() && m_encoder.IsOpen(); }
    [[nodiscard]] bool KeepsAscii() const { return m_keepsAscii; }

    struct Decoded {
        CString text;
        bool exact = true;
        /// Where the character begins that is cut off by the end of the bytes; the number of bytes
        /// if there is none.
        std::size_t whole;
    };

    Decoded Decode(std::string_view bytes) {
        Decoded result{{}, true, bytes.size()};
        if (m_keepsAscii) {
            result.text = TakeAsciiPrefix<CString>(bytes);
        }
        if (m_singleByte) {
            for (const char byte : bytes) {
                const char16_t unit = m_table[static_cast<unsigned char>(byte)];
                result.text += unit;
                result.exact = result.exact && unit != kReplacementCharacter;
            }
        } else {
            DecodeByIconv(bytes, result);
        }
        return result;
    }

    struct Encoded {
        std::string bytes;
        bool exact = true;
    };

    Encoded Encode(std::u16string_view text) {
        Encoded result;
        if (m_keepsAscii) {
            result.bytes = TakeAsciiPrefix<std::string>(text);
        }
        m_encoder.Reset();
        while (!text.empty()) {
            if (const std::size_t tag = FindTag(text); tag > 0) {
                EncodeByIconv(text.substr(0, tag), result);
                text.remove_prefix(tag);
            } else {
                const std::size_t before = result.bytes.size();
                std::size_t length = 0;
                static_cast<void>(NextCodePoint(text, length));
                EncodeByIconv(text.substr(0, length), result);
                if (result.bytes.size() == before) {
                    Replace(result);
                }
                text.remove_prefix(length);
            }
        }
        m_encoder.Flush(result.bytes);
        return result;
    }

 private:
    void DecodeByIconv(std::string_view bytes, Decoded& result) {
        std::string wide;
        std::string_view rest = bytes;
        bool cut = false;
        m_decoder.Reset();
        while (const int reason = m_decoder.Convert(rest, wide)) {
            if (reason == EINVAL && !cut) {
                cut = true;
                result.whole -= rest.size();
            }
            result.exact = false;
            rest.remove_prefix(1);
            m_decoder.Reset();
            wide += BytesOf({&kReplacementCharacter, 1});
        }
        m_decoder.Flush(wide);
        const std::size_t before = result.text.size();
        result.text.resize(before + wide.size() / sizeof(char16_t));
        std::copy(wide.begin(), wide.end(), reinterpret_cast<char*>(result.text.data() + before));
    }

    void EncodeByIconv(std::u16string_view text, Encoded& result) {
        std::string_view rest = BytesOf(text);
        while (m_encoder.Convert(rest, result.bytes) != 0) {
            Replace(result);
            std::size_t index = text.size() - rest.size() / sizeof(char16_t);
            const std::size_t begin = index;
            static_cast<void>(NextCodePoint(text, index));
            rest.remove_prefix((index - begin) * sizeof(char16_t));
        }
    }

    void Replace(Encoded& result) {
        std::string_view mark = BytesOf(u"?");
        static_cast<void>(m_encoder.Convert(mark, result.bytes));
        result.exact = false;
    }

    /// Makes the table of a page in which every byte is a character. In such a page iconv would
    /// combine a letter with an accent after it, and so return another text than was written.
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
            m_table[i] = kReplacementCharacter;
            if (reason == 0 && wide.size() == sizeof(char16_t)) {
                std::copy(wide.begin(), wide.end(), reinterpret_cast<char*>(&m_table[i]));
            } else if (reason != EILSEQ) {
                m_singleByte = false;
            }
            m_keepsAscii = m_keepsAscii && (i >= 0x80 || m_table[i] == i);
        }
    }

    Iconv m_decoder;
    Iconv m_encoder;
    std::array<char16_t, 256> m_table{};
    bool m_singleByte = false;
    bool m_keepsAscii = false;
};

CqCodePage::CqCodePage(int number)
    : m_number(number), m_page(number == kUtf8 ? nullptr : std::make_unique<Page>(number)) {}
CqCodePage::CqCodePage(CqCodePage&& other) noexcept = default;
CqCodePage& CqCodePage::operator=(CqCodePage&& other) noexcept = default;
CqCodePage::~CqCodePage() = default;

bool CqCodePage::IsKnown() const noexcept {
    return m_number == kUtf8 || m_page->IsKnown();
}

bool CqCodePage::KeepsAscii() const noexcept {
    return m_number == kUtf8 || m_page->KeepsAscii();
}

CString CqCodePage::Decode(std::string_view bytes) {
    return m_number == kUtf8 ? FromUtf8(bytes) : GetPage().Decode(bytes).text;
}

std::optional<CString> CqCodePage::TryDecode(std::string_view bytes) {
    if (m_number == kUtf8) {
        for (std::string_view rest = bytes; !rest.empty();) {
            const Utf8Step step = NextUtf8Step(rest);
            if (step.kind != Utf8Step::Kind::Character) {
                return std::nullopt;
            }
            rest.remove_prefix(step.length);
        }
        return FromUtf8(bytes);
    }
    Page::Decoded decoded = GetPage().Decode(bytes);
    return decoded.exact ? std::optional(std::move(decoded.text)) : std::nullopt;
}

std::string CqCodePage::Encode(std::u16string_view text) {
    return m_number == kUtf8 ? ToUtf8(text) : GetPage().Encode(text).bytes;
}

std::optional<std::string> CqCodePage::TryEncode(std::u16string_view text) {
    if (m_number == kUtf8) {
        for (std::size_t i = 0; i < text.size();) {
            if (IsSurrogate(NextCodePoint(text, i))) {
                return std::nullopt;
            }
        }
        return ToUtf8(text);
    }
    Page::Encoded encoded = GetPage().Encode(text);
    return encoded.exact ? std::optional(std::move(encoded.bytes)) : std::nullopt;
}

std::size_t CqCodePage::WholePrefix(std::string_view bytes) {
    return m_number == kUtf8 ? WholeUtf8Prefix(bytes) : GetPage().Decode(bytes).whole;
}

CqCodePage::Page& CqCodePage::GetPage() const {
    if (!m_page->IsKnown()) {
        throw CqSurveyException(error::kInvalidArgument,
                                "code page " + std::to_string(m_number) + " is not known");
    }
    return *m_page;
}

}  // namespace cqsurvey
