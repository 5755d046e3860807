#include "plan/symbols/CodeSigns.h"

#include <cstddef>

namespace cqsurvey::plan {

namespace {

CodeSign MakeSign(const CqCode& row) {
    const bool line = row.kind == CqCodeKind::Line || row.kind == CqCodeKind::ClosedLine;
    // The size of texts and circles is not one on paper, and what a line writes stands at its first
    // point alone.
    return {FindSymbol(row.symbol), row.kind == CqCodeKind::Point ? row.size : 0.0,
            line ? CString() : row.label};
}

}  // namespace

CodeSigns::CodeSigns(CqSurveyDB& db) : m_table(CqJobCodes(db).Get()) {
    for (const CqCode& row : m_table.GetCodes()) {
        if (row.number != 0) {
            m_numbers.emplace(row.number, MakeSign(row));
        }
        if (CqCodeTable::IsDefault(row)) {
            m_default = MakeSign(row);
        }
    }
}

const std::optional<CodeSign>& CodeSigns::FindWord(const CString& codeWord) {
    // Surveys have few words, but a word may be anything.
    constexpr std::size_t kMostKept = 100'000;
    const auto known = m_words.find(codeWord);
    if (known != m_words.end()) {
        return known->second;
    }
    if (m_words.size() >= kMostKept) {
        m_words.clear();
    }
    std::size_t stem = 0;
    const CqCode* row = m_table.FindFigure(codeWord, stem);
    return m_words
        .emplace(codeWord, row == nullptr || CqCodeTable::IsDefault(*row)
                               ? std::nullopt
                               : std::optional(MakeSign(*row)))
        .first->second;
}

const CodeSign& CodeSigns::Find(const CString& codeWord, int number) {
    if (!m_table.IsEmpty() && !codeWord.empty()) {
        if (const std::optional<CodeSign>& sign = FindWord(codeWord)) {
            return *sign;
        }
    }
    const auto found = m_numbers.find(number);
    return found == m_numbers.end() ? m_default : found->second;
}

CString CodeSigns::MakeLabel(const CString& label, const CString& name, const CString& code,
                             const CString& height, const CString& text) {
    CString made;
    for (std::size_t at = 0; at < label.size();) {
        const auto put = [&](std::u16string_view place, const CString& value) {
            if (label.compare(at, place.size(), place) != 0) {
                return false;
            }
            made += value;
            at += place.size();
            return true;
        };
        if (!put(u"{name}", name) && !put(u"{code}", code) && !put(u"{height}", height) &&
            !put(u"{text}", text)) {
            made += label[at++];
        }
    }
    return made;
}

}  // namespace cqsurvey::plan
