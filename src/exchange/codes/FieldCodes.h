#pragma once

#include <cqsurvey/CqCodeTable.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "exchange/codes/CodeWords.h"

namespace cqsurvey::exchange {

/// How a parallel runs beside its figure, in the job's unit: to the right and upwards when
/// positive.
struct Parallel {
    double across = 0.0;
    double up = 0.0;

    bool operator==(const Parallel&) const = default;
};

/// What the control words at a code say.
struct FieldControls {
    bool begin = false;
    bool proceed = false;
    bool end = false;
    bool close = false;
    bool curveBegin = false;
    bool curvePoint = false;
    bool curveEnd = false;
    bool circle = false;
    bool rectangle = false;
    std::optional<double> radius;    ///< of the circle
    std::optional<double> width;     ///< of the rectangle, to the right when positive
    std::vector<double> turns;       ///< how far to go at a right angle, to the right when positive
    std::vector<std::string> joins;  ///< the names of points
    std::vector<Parallel> parallels;

    bool operator==(const FieldControls&) const = default;
};

/// A code in the description of a point.
struct FieldCode {
    std::string word;             ///< as it is written, with its figure number
    const CqCode* row = nullptr;  ///< of the table; null when it is unknown
    std::string figure;           ///< the same for all points of a figure: "EP 2"
    FieldControls controls;
    std::string text;  ///< what follows the code of a point

    [[nodiscard]] bool IsLine() const {
        return row != nullptr &&
               (row->kind == CqCodeKind::Line || row->kind == CqCodeKind::ClosedLine);
    }
};

struct FieldDescription {
    std::vector<FieldCode> codes;
    /// Control words that belong to no code.
    std::vector<std::string> stray;
};

/// Reads the descriptions of points: several codes with figure numbers, control words and texts.
///
///     EP2 B KERB1 BC     figure 2 of EP begins; a curve of figure 1 of KERB begins
///     B EP 2             figure 2 of EP begins
///     TR oak 0.4         the code TR, which the table calls a point, with a text
///     30-1+40-2          line 30 begins, line 40 goes on (number suffixes)
///
/// The first word is a code when the table has it; otherwise a control word, which then belongs to
/// the next code; otherwise an unknown code, or one that fits a pattern. Behind a line's code stand
/// its figure number and control words, behind a point's code its text. Behind either, a code of
/// the table begins the next one; but when the row of a point's code asks for the {text}, only a
/// line's code with a figure number or a control word does, since "TR MU" may be a remark. Any
/// other word behind a line's code is taken for an unknown code, so that no misspelt one is lost.
class FieldCodes {
 public:
    /// Both must outlive the object.
    FieldCodes(const CqCodeTable& table, const CodeWords& words) : m_table(table), m_words(words) {}

    /// Replaces `out` by what the description, in UTF-8, says.
    void Parse(std::string_view description, FieldDescription& out);

 private:
    /// A word with its suffixes taken off: "30-1" is 30 with 1.
    struct Word {
        std::string_view text;
        std::string_view code;
        CodeWords::Meanings suffixes;
        std::string_view value;  // behind the hyphen, when it is a number but no suffix
    };
    struct Row {
        const CqCode* code = nullptr;
        std::size_t stem = 0;
        bool exact = false;  // the table has the code itself, with or without a figure number
    };

    void SplitWords(std::string_view description);
    [[nodiscard]] Word SplitSuffixes(std::string_view text);
    const Row& FindRow(std::string_view code);
    [[nodiscard]] bool IsKnown(const Word& word);
    bool ReadControls(std::size_t& next, FieldControls& controls);
    void ReadAtCode(std::size_t& next);
    void ReadBehindCode(std::size_t& next);
    void AddCode(const Word& word);
    static void AddText(std::string& text, std::string_view word);
    void GiveUpPending(std::string* text);

    const CqCodeTable& m_table;
    const CodeWords& m_words;
    std::unordered_map<std::string, Row> m_rows;
    std::vector<std::string_view> m_parts;  // words, and parting signs as empty views
    FieldDescription* m_out = nullptr;
    bool m_atCode = true;  // the next word begins a code
    bool m_numbered = false;
    bool m_justBegun = false;  // nothing stands behind the last code so far
    FieldControls m_pending;   // read before their code
    std::vector<std::string_view> m_pendingWords;
};

}  // namespace cqsurvey::exchange
