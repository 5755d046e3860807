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
/// Field files and older programs write one byte a character, or two in East Asia, and name the
/// encoding by a number: 1252 is Western Europe, 932 Japan, 65001 UTF-8. Known are the pages whose
/// number the system's iconv knows, and the usual other names of ISO 8859, EUC, KOI8 and MacRoman.
///
/// An object may be used by one thread at a time. One that was moved from can only be destroyed or
/// assigned to. The conversions throw CqSurveyException error::kInvalidArgument when the page is
/// not known, and std::bad_alloc.
class CQSURVEY_API CqCodePage {
 public:
    static constexpr int kUtf8 = 65001;

    /// A page of any number; IsKnown tells whether there is one.
    explicit CqCodePage(int number);
    CqCodePage(CqCodePage&& other) noexcept;
    CqCodePage& operator=(CqCodePage&& other) noexcept;
    ~CqCodePage();

    [[nodiscard]] int GetNumber() const noexcept { return m_number; }
    [[nodiscard]] bool IsKnown() const noexcept;

    /// True when the bytes below 0x80 are the characters of ASCII. Only such a page can be the
    /// narrow code page of the process (SetAnsiCodePage). False for a page that is not known.
    [[nodiscard]] bool KeepsAscii() const noexcept;

    /// The text of the bytes. Bytes that are no character become U+FFFD.
    [[nodiscard]] CString Decode(std::string_view bytes);

    /// The same; nothing when some of the bytes are no character.
    [[nodiscard]] std::optional<CString> TryDecode(std::string_view bytes);

    /// The bytes of the text. A character that the page lacks becomes "?"; in UTF-8, which lacks
    /// none, a surrogate without its partner becomes U+FFFD.
    [[nodiscard]] std::string Encode(std::u16string_view text);

    /// The same; nothing when the page lacks a character, or a surrogate has no partner.
    [[nodiscard]] std::optional<std::string> TryEncode(std::u16string_view text);

    /// The length of the longest prefix that does not end inside a character: less than the whole
    /// only when the rest is the beginning of a character. Where the page keeps ASCII, bytes that
    /// are converted in pieces cut by it read as those that are converted at once.
    [[nodiscard]] std::size_t WholePrefix(std::string_view bytes);

 private:
    class Page;

    [[nodiscard]] Page& GetPage() const;

    int m_number;
    std::unique_ptr<Page> m_page;  // nothing for UTF-8
};

}  // namespace cqsurvey
