#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "cqsurvey/Export.h"
#include "cqsurvey/Types.h"

namespace cqsurvey {

/// One narrow code page: converts between its bytes and UTF-16.
///
/// Field files and older programs write a character in one byte, or in two in East Asia, and name
/// the encoding by a number: 1252 is Western Europe, 932 Japan, 65001 UTF-8. A page is known when
/// the system's iconv knows it as CP and its number. The numbers of ISO 8859, EUC, KOI8 and
/// MacRoman are known as well.
///
/// Use an object from one thread at a time. After a move only destroy it or assign to it. The
/// conversions throw CqSurveyException with error::kInvalidArgument when the page is not known, and
/// std::bad_alloc.
class CQSURVEY_API CqCodePage {
 public:
    static constexpr int kUtf8 = 65001;

    /// Any number is accepted; IsKnown tells whether it names a page.
    explicit CqCodePage(int number);
    CqCodePage(CqCodePage&& other) noexcept;
    CqCodePage& operator=(CqCodePage&& other) noexcept;
    ~CqCodePage();

    [[nodiscard]] int GetNumber() const noexcept { return m_number; }
    [[nodiscard]] bool IsKnown() const noexcept;

    /// True when the bytes below 0x80 are the characters of ASCII. Only such a page can be the
    /// narrow code page of the process (SetAnsiCodePage). False for a page that is not known.
    [[nodiscard]] bool KeepsAscii() const noexcept;

    /// The bytes as UTF-16. Bytes that are not a character become U+FFFD.
    [[nodiscard]] CString Decode(std::string_view bytes);

    /// As Decode, but returns nothing when some of the bytes are not a character.
    [[nodiscard]] std::optional<CString> TryDecode(std::string_view bytes);

    /// The text as bytes. A character that the page lacks becomes "?". UTF-8 lacks no character; in
    /// it, a surrogate without its partner becomes U+FFFD.
    [[nodiscard]] std::string Encode(std::u16string_view text);

    /// As Encode, but returns nothing when the page lacks a character or a surrogate has no
    /// partner.
    [[nodiscard]] std::optional<std::string> TryEncode(std::u16string_view text);

    /// The length of the longest prefix that does not end inside a character. It is less than all
    /// the bytes only when the rest is the beginning of a character. In a page that keeps ASCII, a
    /// text that is converted in pieces of this length reads the same as one converted at once.
    [[nodiscard]] std::size_t WholePrefix(std::string_view bytes);

 private:
    class Page;

    [[nodiscard]] Page& GetPage() const;

    int m_number;
    std::unique_ptr<Page> m_page;  // nothing for UTF-8
};

}  // namespace cqsurvey
