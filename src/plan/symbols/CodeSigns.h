#pragma once

#include <cqsurvey/cqsurvey.h>

#include <optional>
#include <unordered_map>

#include "plan/symbols/Symbol.h"

namespace cqsurvey::plan {

/// What a field code asks for at a point.
struct CodeSign {
    Symbol symbol = Symbol::None;
    double size = 0.0;  ///< in millimetres; 0: as usual
    CString label;      ///< with {name}, {code}, {height} and {text}, as in CqCode
};

/// The signs of a job's codes, as its code table has them (CqJobCodes).
class CodeSigns {
 public:
    /// Reads the table of an open job.
    explicit CodeSigns(CqSurveyDB& db);

    /// The sign for a point whose description begins with a code word, or, without a row for it,
    /// for its code's number. A job without a table has no signs.
    const CodeSign& Find(const CString& codeWord, int number);

    /// The label of a point: what stands for its name, code, height and the rest of its description
    /// is put in.
    [[nodiscard]] static CString MakeLabel(const CString& label, const CString& name,
                                           const CString& code, const CString& height,
                                           const CString& text);

 private:
    /// The sign of a word; nothing when at most the default row fits it.
    const std::optional<CodeSign>& FindWord(const CString& codeWord);

    CqCodeTable m_table;
    std::unordered_map<CString, std::optional<CodeSign>> m_words;  ///< looked up so far
    std::unordered_map<int, CodeSign> m_numbers;
    CodeSign m_default;
};

}  // namespace cqsurvey::plan
