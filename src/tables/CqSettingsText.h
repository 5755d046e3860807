#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "cqsurvey/Types.h"

namespace cqsurvey {

/// A line of a settings file, or the name of a section: its text, and its bytes if the text does
/// not give them back.
///
///     bytes      "k=" 81        in code page 1252, which does not define the byte 81
///     text       "k=" U+FFFD    what lookups see; it would be written as "k=?"
///
/// Such bytes are written again as they were read, whatever the code page is by then, for as long
/// as nobody changes the line. All other text is converted to the code page in force when it is
/// written.
class CqSettingsText {
 public:
    CqSettingsText() = default;
    /// A text of the application.
    explicit CqSettingsText(CString text) : m_text(std::move(text)) {}
    /// Bytes of a file, in the narrow code page.
    [[nodiscard]] static CqSettingsText FromBytes(std::string_view bytes);

    [[nodiscard]] const CString& GetText() const { return m_text; }

    /// Whether the text alone would be written as other bytes.
    [[nodiscard]] bool HasBytes() const { return !m_bytes.empty(); }
    /// Empty when the text gives them back.
    [[nodiscard]] const std::string& GetBytes() const { return m_bytes; }

    // For a line with "=".

    /// What is before the first "=".
    [[nodiscard]] std::u16string_view GetKey() const;
    /// What is after it.
    [[nodiscard]] std::u16string_view GetValue() const;
    /// Replaces the value, unless it is this one already. The key stays as it is spelt, bytes
    /// included.
    void SetValue(std::u16string_view value);

    bool operator==(const CqSettingsText&) const = default;

 private:
    CString m_text;
    std::string m_bytes;
};

}  // namespace cqsurvey
