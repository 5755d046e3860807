#pragma once

#include <iconv.h>

#include <string>
#include <string_view>

namespace cqsurvey::exchange {

/// Turns the bytes of an encoding that an XML file declares into UTF-8, piece by piece. The parser
/// itself knows only UTF-8, UTF-16, ISO 8859-1 and ASCII.
class XmlTranscoder {
 public:
    /// `encoding` is a name as it stands in a declaration, in any letter case.
    explicit XmlTranscoder(std::string_view encoding);
    XmlTranscoder(const XmlTranscoder&) = delete;
    XmlTranscoder& operator=(const XmlTranscoder&) = delete;
    ~XmlTranscoder();

    /// False when nobody on this machine knows the encoding.
    [[nodiscard]] bool IsKnown() const;

    /// Appends the text of the next bytes to `out`. Returns false at bytes that are no characters;
    /// what came before them is in `out` then.
    [[nodiscard]] bool Convert(std::string_view bytes, std::string& out);

    /// False when the last bytes were only the beginning of a character.
    [[nodiscard]] bool IsWhole() const { return m_rest.empty(); }

 private:
    iconv_t m_converter;
    std::string m_rest;  // the beginning of a character
};

/// The encoding that the XML declaration at the front of `start` names; empty when it names none.
[[nodiscard]] std::string_view FindDeclaredEncoding(std::string_view start);

}  // namespace cqsurvey::exchange
