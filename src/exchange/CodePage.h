#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "cqsurvey/Types.h"

namespace cqsurvey::exchange {

/// The encoding of a text file, by the number of its narrow code page.
class CodePage {
 public:
    static constexpr int kUtf8 = 65001;

    /// Throws OptionError for a page that the system does not know or that does not keep ASCII.
    explicit CodePage(int number = kUtf8);
    CodePage(const CodePage&) = delete;
    CodePage& operator=(const CodePage&) = delete;
    ~CodePage();

    [[nodiscard]] int GetNumber() const { return m_number; }

    /// The text; nothing when the bytes are none in this page.
    [[nodiscard]] std::optional<CString> Decode(std::string_view bytes);

    /// The bytes; nothing when the page lacks a character of the text, or when half a surrogate
    /// pair stands alone.
    [[nodiscard]] std::optional<std::string> Encode(const CString& text);

 private:
    int m_number;
    void* m_toText = nullptr;
    void* m_toBytes = nullptr;
};

}  // namespace cqsurvey::exchange
