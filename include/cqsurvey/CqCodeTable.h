#pragma once

#include <cstddef>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "cqsurvey/CqCode.h"
#include "cqsurvey/Export.h"
#include "cqsurvey/Types.h"

namespace cqsurvey {

/// The field codes of a survey and how each is drawn. Rows keep their order.
///
/// Looking up a code finds the row of exactly that code; otherwise the row whose pattern fits it
/// and has the most characters beside "*", the first of several; so the default row "*" is found
/// last.
class CQSURVEY_API CqCodeTable {
 public:
    /// The most rows of a table, and the longest text of a row in UTF-16 code units.
    static constexpr std::size_t kMostRows = 5000;
    static constexpr std::size_t kLongestText = 200;

    /// Appends a row. Returns 0, with the table unchanged, when FindFault finds one, when there is
    /// a row of that code, and when the table is full.
    int Add(const CqCode& code);

    /// What is wrong with a row by itself, as the end of an English sentence such as "the colour
    /// 300 is not 0 to 256"; empty when nothing is.
    [[nodiscard]] static CString FindFault(const CqCode& code);

    [[nodiscard]] const std::vector<CqCode>& GetCodes() const { return m_codes; }
    [[nodiscard]] bool IsEmpty() const { return m_codes.empty(); }

    /// The row of exactly this code (a pattern by its own text); null when there is none. A pointer
    /// is valid until a row is added.
    [[nodiscard]] const CqCode* FindExact(std::u16string_view code) const;

    /// The row for a code in the field; null when there is none.
    [[nodiscard]] const CqCode* Find(std::u16string_view code) const;

    /// The row for a code that may have a figure number: "EP12" is found by itself, or else as
    /// "EP". `stem` becomes the length of the code without the figure number, or of all of it.
    [[nodiscard]] const CqCode* FindFigure(std::u16string_view code, std::size_t& stem) const;

    /// True when the row is the default one.
    [[nodiscard]] static bool IsDefault(const CqCode& code) { return code.code == u"*"; }

    /// The words that control figures, as the application spells them; see CodeWords of the
    /// exchange library. Empty: the words of that library's first preset. At most kLongestText.
    [[nodiscard]] const CString& GetWords() const { return m_words; }
    /// Returns 0 with the words unchanged when they are too long.
    int SetWords(const CString& words);

    /// `code` with A to Z in upper case.
    [[nodiscard]] static CString Fold(std::u16string_view code);

    bool operator==(const CqCodeTable& other) const {
        return m_codes == other.m_codes && m_words == other.m_words;
    }

 private:
    std::vector<CqCode> m_codes;
    std::unordered_map<CString, std::size_t> m_exact;
    // The patterns, folded, and their rows; the most particular first.
    std::vector<std::pair<CString, std::size_t>> m_patterns;
    CString m_words;
};

}  // namespace cqsurvey
