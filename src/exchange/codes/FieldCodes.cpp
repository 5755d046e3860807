#include "exchange/codes/FieldCodes.h"

#include <cqsurvey/Text.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "text/NumberText.h"

namespace cqsurvey::exchange {

namespace {

constexpr std::string_view kBlanks = " \t\r\n";
constexpr std::size_t kMostDigits = 9;

bool IsDigits(std::string_view text) {
    return !text.empty() &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

/// Nothing as well for a number that is too large to be a length on site.
std::optional<double> ReadNumber(std::string_view text) {
    constexpr double kMost = 1e6;
    const ParsedNumber number = ParseNumber(text);
    return number.fault == nullptr && std::abs(number.value) <= kMost ? std::optional(number.value)
                                                                      : std::nullopt;
}

/// Whether the words behind the code of a point are wanted.
bool TakesText(const CqCode& row) {
    return row.label.find(u"{text}") != CString::npos || row.text.find(u"{text}") != CString::npos;
}

std::string FigureNumber(std::string_view digits) {
    digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size()));
    return digits.empty() ? "0" : std::string(digits);
}

}  // namespace

void FieldCodes::SplitWords(std::string_view description) {
    m_parts.clear();
    description = description.substr(0, description.find_first_of(m_words.GetCommentSigns()));
    const std::string& signs = m_words.GetPartingSigns();
    while (true) {
        const std::size_t begin = description.find_first_not_of(kBlanks);
        if (begin == std::string_view::npos) {
            return;
        }
        description.remove_prefix(begin);
        if (signs.find(description.front()) != std::string::npos) {
            m_parts.push_back(description.substr(0, 0));
            description.remove_prefix(1);
            continue;
        }
        const std::size_t end = std::min({description.find_first_of(kBlanks),
                                          description.find_first_of(signs), description.size()});
        const std::string_view word = description.substr(0, end);
        const CodeWords::Meanings* meanings = m_words.Find(word);
        if (meanings != nullptr && meanings->front() == CodeMeaning::Comment) {
            return;
        }
        const bool parts = meanings != nullptr && meanings->front() == CodeMeaning::And;
        m_parts.push_back(parts ? word.substr(0, 0) : word);
        description.remove_prefix(end);
    }
}

FieldCodes::Word FieldCodes::SplitSuffixes(std::string_view text) {
    Word word{text, text, {}, {}};
    if (!m_words.HasSuffixes() || FindRow(text).exact) {
        return word;
    }
    for (std::size_t hyphen = word.code.rfind('-'); hyphen != std::string_view::npos && hyphen > 0;
         hyphen = word.code.rfind('-')) {
        const CodeWords::Meanings* meanings = m_words.FindSuffix(word.code.substr(hyphen + 1));
        if (meanings == nullptr) {
            break;
        }
        word.suffixes.insert(word.suffixes.end(), meanings->begin(), meanings->end());
        word.code = word.code.substr(0, hyphen);
    }
    const std::size_t hyphen = word.code.find('-');
    if (hyphen != std::string_view::npos && hyphen > 0 &&
        ReadNumber(word.code.substr(hyphen + 1))) {
        word.value = word.code.substr(hyphen + 1);
        word.code = word.code.substr(0, hyphen);
    }
    return word;
}

const FieldCodes::Row& FieldCodes::FindRow(std::string_view code) {
    const auto [entry, isNew] = m_rows.try_emplace(std::string(code));
    Row& row = entry->second;
    if (isNew) {
        const CString wide = FromUtf8(code);
        std::size_t stem = 0;
        row.code = m_table.FindFigure(wide, stem);
        row.stem = code.size() - (wide.size() - stem);
        row.exact = row.code != nullptr && row.code->code.find(u'*') == CString::npos;
    }
    return row;
}

bool FieldCodes::IsKnown(const Word& word) {
    const Row& row = FindRow(word.code);
    return row.code != nullptr && !CqCodeTable::IsDefault(*row.code);
}

bool FieldCodes::ReadControls(std::size_t& next, FieldControls& controls) {
    const std::string_view part = m_parts[next];
    std::string_view value;
    const CodeWords::Meanings* meanings = m_words.Find(part);
    std::size_t used = 1;
    if (meanings == nullptr) {
        // The value may stand at its word: "H0.5", "JPT15".
        const std::string_view prefix = m_words.FindPrefix(part);
        if (prefix.empty() || prefix.size() == part.size()) {
            return false;
        }
        meanings = m_words.Find(prefix);
        value = part.substr(prefix.size());
        const bool isJoin = meanings->front() == CodeMeaning::Join;
        if (isJoin ? !IsDigits(value) : !ReadNumber(value)) {
            return false;
        }
    }
    const bool separate = value.empty();
    if (separate && next + 1 < m_parts.size()) {
        value = m_parts[next + 1];
    }
    const std::optional<double> number = value.empty() ? std::nullopt : ReadNumber(value);
    bool tookValue = false;
    FieldControls read = controls;
    for (const CodeMeaning meaning : *meanings) {
        switch (meaning) {
            case CodeMeaning::Begin:
                read.begin = true;
                break;
            case CodeMeaning::Continue:
                read.proceed = true;
                break;
            case CodeMeaning::End:
                read.end = true;
                break;
            case CodeMeaning::Close:
                read.close = true;
                break;
            case CodeMeaning::CurveBegin:
                read.curveBegin = true;
                break;
            case CodeMeaning::CurvePoint:
                read.curvePoint = true;
                break;
            case CodeMeaning::CurveEnd:
                read.curveEnd = true;
                break;
            case CodeMeaning::Circle:
                read.circle = true;
                read.radius = number ? number : read.radius;
                tookValue = number.has_value();
                break;
            case CodeMeaning::Rectangle:
                read.rectangle = true;
                read.width = number ? number : read.width;
                tookValue = number.has_value();
                break;
            case CodeMeaning::Turn:
                if (!number) {
                    return false;
                }
                read.turns.push_back(*number);
                tookValue = true;
                break;
            case CodeMeaning::Join:
                if (value.empty()) {
                    return false;
                }
                read.joins.emplace_back(value);
                tookValue = true;
                break;
            case CodeMeaning::Horizontal:
                if (!number) {
                    return false;
                }
                read.parallels.push_back({*number, 0.0});
                tookValue = true;
                break;
            case CodeMeaning::Vertical:
                if (!number) {
                    return false;
                }
                if (read.parallels.empty()) {
                    read.parallels.emplace_back();
                }
                read.parallels.back().up = *number;
                tookValue = true;
                break;
            case CodeMeaning::And:
            case CodeMeaning::Comment:
                return false;
        }
    }
    used += separate && tookValue ? 1 : 0;
    next += used;
    // A turn may go on: "RT 3.5 -2 4".
    const bool turns = meanings->front() == CodeMeaning::Turn;
    for (; turns && next < m_parts.size() && ReadNumber(m_parts[next]); ++next) {
        read.turns.push_back(*ReadNumber(m_parts[next]));
    }
    controls = std::move(read);
    return true;
}

void FieldCodes::AddCode(const Word& word) {
    const Row& row = FindRow(word.code);
    FieldCode& code = m_out->codes.emplace_back();
    code.word = word.code;
    code.row = row.code;
    const std::string_view digits = word.code.substr(row.stem);
    code.figure = CodeWords::Fold(word.code.substr(0, row.stem)) + ' ' +
                  (digits.empty() ? std::string() : FigureNumber(digits));
    m_numbered = !digits.empty();
    if (code.IsLine() || code.row == nullptr) {
        code.controls = std::exchange(m_pending, {});
        m_pendingWords.clear();
    } else {
        GiveUpPending(nullptr);
    }
    for (const CodeMeaning meaning : word.suffixes) {
        code.controls.begin |= meaning == CodeMeaning::Begin;
        code.controls.proceed |= meaning == CodeMeaning::Continue;
        code.controls.end |= meaning == CodeMeaning::End;
        code.controls.close |= meaning == CodeMeaning::Close;
        code.controls.curveBegin |= meaning == CodeMeaning::CurveBegin;
        code.controls.curvePoint |= meaning == CodeMeaning::CurvePoint;
        code.controls.curveEnd |= meaning == CodeMeaning::CurveEnd;
    }
    code.text = word.value;
    m_atCode = false;
    m_justBegun = true;
}

void FieldCodes::AddText(std::string& text, std::string_view word) {
    if (!text.empty()) {
        text += ' ';
    }
    text += word;
}

void FieldCodes::GiveUpPending(std::string* text) {
    for (const std::string_view word : m_pendingWords) {
        if (text != nullptr) {
            AddText(*text, word);
        } else {
            m_out->stray.emplace_back(word);
        }
    }
    m_pendingWords.clear();
    m_pending = {};
}

void FieldCodes::ReadAtCode(std::size_t& next) {
    const Word word = SplitSuffixes(m_parts[next]);
    if (!FindRow(word.code).exact) {
        const std::size_t first = next;
        if (ReadControls(next, m_pending)) {
            m_pendingWords.insert(m_pendingWords.end(), m_parts.begin() + static_cast<long>(first),
                                  m_parts.begin() + static_cast<long>(next));
            return;
        }
    }
    AddCode(word);
    ++next;
}

void FieldCodes::ReadBehindCode(std::size_t& next) {
    FieldCode& code = m_out->codes.back();
    const bool justBegun = std::exchange(m_justBegun, false);
    const std::string_view part = m_parts[next];
    const Word word = SplitSuffixes(part);
    const bool drawsLine = code.IsLine() || code.row == nullptr;
    if (!drawsLine) {
        const std::size_t first = next;
        if (ReadControls(next, m_pending)) {
            // They belong to a line's code if one follows, else they are words of the text.
            m_pendingWords.insert(m_pendingWords.end(), m_parts.begin() + static_cast<long>(first),
                                  m_parts.begin() + static_cast<long>(next));
            return;
        }
        ++next;
        const Row& row = FindRow(word.code);
        const bool line = row.code != nullptr && (row.code->kind == CqCodeKind::Line ||
                                                  row.code->kind == CqCodeKind::ClosedLine);
        FieldControls ahead;
        std::size_t after = next;
        const bool controlled = !m_pendingWords.empty() || !word.suffixes.empty() ||
                                row.stem < word.code.size() ||
                                (next < m_parts.size() && ReadControls(after, ahead));
        if (IsKnown(word) && !(IsDigits(part) && word.suffixes.empty()) &&
            (!TakesText(*code.row) || (line && controlled))) {
            if (!line) {
                GiveUpPending(&code.text);
            }
            AddCode(word);
            return;
        }
        GiveUpPending(&code.text);
        AddText(code.text, part);
        return;
    }
    if (IsDigits(part) && part.size() <= kMostDigits && !m_numbered && justBegun) {
        code.figure += FigureNumber(part);
        code.word += part;
        m_numbered = true;
        ++next;
        return;
    }
    if (word.suffixes.empty() && ReadControls(next, code.controls)) {
        return;
    }
    ++next;
    AddCode(word);
}

void FieldCodes::Parse(std::string_view description, FieldDescription& out) {
    out.codes.clear();
    out.stray.clear();
    m_out = &out;
    m_atCode = true;
    m_pending = {};
    m_pendingWords.clear();
    SplitWords(description);
    for (std::size_t next = 0; next < m_parts.size();) {
        if (m_parts[next].empty()) {
            if (!m_atCode && !m_pendingWords.empty()) {
                GiveUpPending(&out.codes.back().text);
            }
            m_atCode = true;
            ++next;
        } else if (m_atCode) {
            ReadAtCode(next);
        } else {
            ReadBehindCode(next);
        }
    }
    GiveUpPending(m_atCode || out.codes.empty() ? nullptr : &out.codes.back().text);
}

}  // namespace cqsurvey::exchange
