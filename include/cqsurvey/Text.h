#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "cqsurvey/Export.h"
#include "cqsurvey/Types.h"

namespace cqsurvey {

/// U+FFFD, which replaces what could not be read as text.
inline constexpr char16_t kReplacementCharacter = 0xFFFD;

/// The text as UTF-8. A surrogate without its partner becomes U+FFFD.
CQSURVEY_API std::string ToUtf8(std::u16string_view text);

/// The UTF-8 text as UTF-16. Each ill-formed sequence becomes one U+FFFD.
CQSURVEY_API CString FromUtf8(std::string_view bytes);

/// Chooses the narrow code page of settings files and descriptions for the whole process: 65001
/// (UTF-8, the default), 1252, 932 or any other page that CqCodePage knows and that keeps ASCII.
/// Returns 1, or 0 for any other page, and the page in force stays. Call it before a job is opened:
/// texts that are already stored are not converted.
CQSURVEY_API int SetAnsiCodePage(int codePage);

/// The narrow code page in force.
CQSURVEY_API int GetAnsiCodePage();

// Walking texts character by character.

constexpr bool IsHighSurrogate(char32_t unit) noexcept {
    return (unit & 0xFFFFFC00U) == 0xD800;
}
constexpr bool IsLowSurrogate(char32_t unit) noexcept {
    return (unit & 0xFFFFFC00U) == 0xDC00;
}
constexpr bool IsSurrogate(char32_t unit) noexcept {
    return (unit & 0xFFFFF800U) == 0xD800;
}

/// Returns the code point at text[index] and moves `index` past it. A surrogate without its partner
/// is returned as it is. `index` must be less than the text's length.
constexpr char32_t NextCodePoint(std::u16string_view text, std::size_t& index) noexcept {
    const char16_t unit = text[index++];
    if (IsHighSurrogate(unit) && index < text.size() && IsLowSurrogate(text[index])) {
        return 0x10000 + ((unit & 0x3FFU) << 10) + (text[index++] & 0x3FFU);
    }
    return unit;
}

/// Appends a code point of at most U+10FFFF.
CQSURVEY_API void AppendCodePoint(CString& text, char32_t codePoint);
/// Appends a code point of at most U+10FFFF that is not a surrogate.
CQSURVEY_API void AppendCodePoint(std::string& utf8, char32_t codePoint);

/// The first character of some UTF-8 bytes.
struct Utf8Step {
    enum class Kind : std::uint8_t {
        Character,
        IllFormed,  ///< bytes that are not a character, to be replaced together
        Incomplete  ///< all the bytes, which are the beginning of a character
    };

    Kind kind;
    std::size_t length;  ///< in bytes, at least 1
    char32_t codePoint;  ///< of a character, else 0
};

/// Reads the first character of at least one UTF-8 byte. Overlong forms, surrogates and numbers
/// above U+10FFFF are ill-formed. An ill-formed sequence ends where it could no longer have become
/// a character.
CQSURVEY_API Utf8Step NextUtf8Step(std::string_view bytes) noexcept;

/// The length of the longest prefix that does not end inside a character. It is less than all the
/// bytes only when the rest is the beginning of a character.
CQSURVEY_API std::size_t WholeUtf8Prefix(std::string_view bytes) noexcept;

/// The length of the longest prefix of at most `maxUnits` code units that does not end between the
/// two halves of a surrogate pair. 0 when not even the first character fits.
CQSURVEY_API std::size_t WholeUtf16Prefix(std::u16string_view text, std::size_t maxUnits) noexcept;

}  // namespace cqsurvey
