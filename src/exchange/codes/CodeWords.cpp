#include "exchange/codes/CodeWords.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <optional>
#include <set>

#include "cqsurvey/exchange/ExchangeError.h"
#include "text/NumberText.h"
#include "text/Printable.h"

namespace cqsurvey::exchange {

namespace {

constexpr std::array<std::string_view, kMeaningCount> kNames{
    "begin",       "continue",   "end",      "close",     "curve-begin",
    "curve-point", "curve-end",  "circle",   "rectangle", "turn",
    "join",        "horizontal", "vertical", "and",       "comment"};

constexpr std::string_view kWordsPreset =
    "begin=B,continue=C,end=E,close=CLS,close=CLOSE,curve-begin=BC,curve-end=EC,circle=CIR,"
    "rectangle=RECT,turn=RT,join=JPT,horizontal=H,vertical=V,and=X,comment=;";
constexpr std::string_view kNumbersPreset =
    "begin=1,continue=2,curve-point=3,end=9,close=CLS,circle=CIR,rectangle=RECT,turn=RT,join=JPT,"
    "horizontal=H,vertical=V,and=+,comment=;";

bool IsSign(std::string_view word) {
    return word.size() == 1 && static_cast<unsigned char>(word[0]) < 0x80 &&
           std::ispunct(static_cast<unsigned char>(word[0])) != 0;
}

bool IsNumber(std::string_view word) {
    return !word.empty() &&
           std::all_of(word.begin(), word.end(), [](char c) { return c >= '0' && c <= '9'; });
}

std::optional<CodeMeaning> FindMeaning(std::string_view name) {
    const auto* const found = std::find(kNames.begin(), kNames.end(), name);
    return found == kNames.end() ? std::nullopt
                                 : std::optional(static_cast<CodeMeaning>(found - kNames.begin()));
}

/// Splits at each `sign`; an empty text has no parts.
std::vector<std::string_view> Split(std::string_view text, char sign) {
    std::vector<std::string_view> parts;
    while (!text.empty()) {
        const std::size_t at = std::min(text.find(sign), text.size());
        parts.push_back(text.substr(0, at));
        text.remove_prefix(std::min(at + 1, text.size()));
    }
    return parts;
}

bool TakesMore(CodeMeaning meaning) {
    return meaning == CodeMeaning::Circle || meaning == CodeMeaning::Rectangle ||
           meaning == CodeMeaning::Turn || meaning == CodeMeaning::Join ||
           meaning == CodeMeaning::Horizontal || meaning == CodeMeaning::Vertical;
}

/// A part of the text: "begin+curve-point=IC".
struct Assignment {
    CodeWords::Meanings meanings;
    std::string word;
};

Assignment ReadAssignment(std::string_view part) {
    const std::size_t equals = part.find('=');
    if (equals == std::string_view::npos) {
        throw OptionError(fmt::format("{} among the words is not like begin=B", Quoted(part)));
    }
    Assignment assignment;
    for (const std::string_view name : Split(Trim(part.substr(0, equals)), '+')) {
        const std::optional<CodeMeaning> meaning = FindMeaning(Trim(name));
        if (!meaning) {
            throw OptionError(fmt::format("no word means {}; the meanings are {}", Quoted(name),
                                          fmt::join(kNames, ", ")));
        }
        assignment.meanings.push_back(*meaning);
    }
    assignment.word = CodeWords::Fold(Trim(part.substr(equals + 1)));
    std::sort(assignment.meanings.begin(), assignment.meanings.end());
    const bool forSigns =
        assignment.meanings.size() == 1 && (assignment.meanings[0] == CodeMeaning::And ||
                                            assignment.meanings[0] == CodeMeaning::Comment);
    if (assignment.meanings.empty() || assignment.word.find_first_of(" \t") != std::string::npos ||
        (IsSign(assignment.word) && !forSigns)) {
        throw OptionError(fmt::format("{} among the words makes no sense", Quoted(part)));
    }
    return assignment;
}

}  // namespace

std::string CodeWords::Fold(std::string_view text) {
    std::string folded(text);
    for (char& c : folded) {
        c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c;
    }
    return folded;
}

CodeWords CodeWords::FromText(std::string_view text) {
    std::vector<std::string_view> parts = Split(text, ',');
    std::string_view preset = kWordsPreset;
    if (!parts.empty() && parts[0].find('=') == std::string_view::npos) {
        const std::string_view name = Trim(parts[0]);
        if (name != "words" && name != "numbers") {
            throw OptionError(fmt::format(
                "there are no words {}; the presets are words and numbers", Quoted(name)));
        }
        preset = name == "numbers" ? kNumbersPreset : kWordsPreset;
        parts.erase(parts.begin());
    }
    CodeWords words;
    for (const std::string_view part : Split(preset, ',')) {
        const Assignment assignment = ReadAssignment(part);
        words.Set(assignment.word, assignment.meanings);
    }
    std::vector<Assignment> own;
    for (const std::string_view part : parts) {
        own.push_back(ReadAssignment(part));
        words.Remove(own.back().meanings);
    }
    for (const Assignment& assignment : own) {
        if (!assignment.word.empty()) {
            words.Set(assignment.word, assignment.meanings);
        }
    }
    return words;
}

void CodeWords::Set(const std::string& word, const Meanings& meanings) {
    if (IsSign(word)) {
        (meanings[0] == CodeMeaning::And ? m_parting : m_comment) += word;
    } else {
        (IsNumber(word) ? m_suffixes : m_words)[word] = {meanings};
    }
}

void CodeWords::Remove(const Meanings& meanings) {
    const auto isTheirs = [&](const auto& entry) { return entry.second.meanings == meanings; };
    std::erase_if(m_words, isTheirs);
    std::erase_if(m_suffixes, isTheirs);
    if (meanings.size() == 1 && meanings[0] == CodeMeaning::And) {
        m_parting.clear();
    } else if (meanings.size() == 1 && meanings[0] == CodeMeaning::Comment) {
        m_comment.clear();
    }
}

const CodeWords::Meanings* CodeWords::Find(std::string_view word) const {
    const auto found = m_words.find(Fold(word));
    return found == m_words.end() ? nullptr : &found->second.meanings;
}

const CodeWords::Meanings* CodeWords::FindSuffix(std::string_view number) const {
    const auto found = m_suffixes.find(number);
    return found == m_suffixes.end() ? nullptr : &found->second.meanings;
}

std::string_view CodeWords::FindPrefix(std::string_view text) const {
    const std::string folded = Fold(text);
    std::size_t longest = 0;
    for (const auto& [word, entry] : m_words) {
        if (word.size() > longest && folded.starts_with(word) &&
            std::any_of(entry.meanings.begin(), entry.meanings.end(), TakesMore)) {
            longest = word.size();
        }
    }
    return text.substr(0, longest);
}

}  // namespace cqsurvey::exchange
