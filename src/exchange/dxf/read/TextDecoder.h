#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

#include "cqsurvey/CodePage.h"
#include "cqsurvey/Types.h"

namespace cqsurvey::exchange::dxf {

/// The number of the code page that a file names in $DWGCODEPAGE, such as ANSI_1252; nothing for a
/// name that is not known.
[[nodiscard]] std::optional<int> CodePageOf(std::string_view name);

/// Reads the bytes of a file's texts: in its code page, or in UTF-8 from the version of 2007 on.
/// \U+XXXX is a character by its number in any version, \M+NXXXX one of an East Asian page.
class TextDecoder {
 public:
    explicit TextDecoder(int codePage = 1252) : m_page(codePage), m_number(codePage) {}

    [[nodiscard]] CString Decode(std::string_view bytes);

    /// The name of a layer, block or style, in which "^ " is the sign ^. Other signs after it stand
    /// for themselves: names have no control characters.
    [[nodiscard]] CString DecodeName(std::string_view bytes);

    [[nodiscard]] int GetCodePage() const { return m_number; }

    /// How many texts held bytes that are no characters; these became U+FFFD.
    [[nodiscard]] std::uint64_t GetBad() const { return m_bad; }

 private:
    [[nodiscard]] CString DecodePair(char16_t page, char16_t bytes);
    [[nodiscard]] CString ReplaceEscapes(const CString& text);

    CqCodePage m_page;
    /// Opened when a text needs them: that takes longer than reading a text.
    std::array<std::optional<CqCodePage>, 5> m_asian;
    int m_number;
    std::uint64_t m_bad = 0;
};

}  // namespace cqsurvey::exchange::dxf
