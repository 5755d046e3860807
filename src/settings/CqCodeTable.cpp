#include "cqsurvey/CqCodeTable.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>

#include "cqsurvey/Limits.h"
#include "cqsurvey/SymbolNames.h"
#include "cqsurvey/Text.h"

namespace cqsurvey {

namespace {

constexpr char16_t kAny = u'*';
constexpr double kHighestSize = 1e6;

constexpr std::array<std::u16string_view, 5> kKinds{u"point", u"line", u"closed line", u"text",
                                                    u"circle"};

bool IsPattern(std::u16string_view code) {
    return code.find(kAny) != std::u16string_view::npos;
}

std::size_t CountPlain(std::u16string_view pattern) {
    return pattern.size() -
           static_cast<std::size_t>(std::count(pattern.begin(), pattern.end(), kAny));
}

/// Whether the text fits the pattern. When a stretch after a "*" does not fit, the "*" takes one
/// character more; an earlier one never needs to.
bool Fits(std::u16string_view pattern, std::u16string_view text) {
    std::size_t p = 0;
    std::size_t t = 0;
    std::size_t star = std::u16string_view::npos;
    std::size_t taken = 0;
    while (t < text.size()) {
        if (p < pattern.size() && pattern[p] == kAny) {
            star = p++;
            taken = t;
        } else if (p < pattern.size() && pattern[p] == text[t]) {
            ++p;
            ++t;
        } else if (star != std::u16string_view::npos) {
            p = star + 1;
            t = ++taken;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == kAny) {
        ++p;
    }
    return p == pattern.size();
}

bool IsDigit(char16_t unit) {
    return unit >= u'0' && unit <= u'9';
}

CString Quote(std::u16string_view text) {
    return u"\"" + CString(text) + u"\"";
}

CString Number(int number) {
    return FromUtf8(std::to_string(number));
}

bool HasControl(std::u16string_view text) {
    return std::any_of(text.begin(), text.end(),
                       [](char16_t unit) { return unit < u' ' || unit == 0x7F; });
}

}  // namespace

std::u16string_view GetKindWord(CqCodeKind kind) {
    return kKinds[static_cast<std::size_t>(kind)];
}

std::optional<CqCodeKind> FindCodeKind(std::u16string_view word) {
    const CString folded = CqCodeTable::Fold(word);
    for (std::size_t i = 0; i < kKinds.size(); ++i) {
        if (CqCodeTable::Fold(kKinds[i]) == folded) {
            return static_cast<CqCodeKind>(i);
        }
    }
    return std::nullopt;
}

CString CqCodeTable::Fold(std::u16string_view code) {
    CString folded(code);
    for (char16_t& unit : folded) {
        unit = unit >= u'a' && unit <= u'z' ? static_cast<char16_t>(unit - 32) : unit;
    }
    return folded;
}

CString CqCodeTable::FindFault(const CqCode& code) {
    if (code.code.empty()) {
        return u"there is no code";
    }
    for (const CString* text : {&code.code, &code.layer, &code.symbol, &code.label, &code.text}) {
        if (text->size() > kLongestText) {
            return u"a text has more than " + Number(static_cast<int>(kLongestText)) +
                   u" characters";
        }
        if (HasControl(*text)) {
            return u"a text has a line break or another control character";
        }
    }
    if (code.code.find_first_of(u" \t") != CString::npos) {
        return u"the code " + Quote(code.code) + u" has a blank in it";
    }
    if (code.layer.size() > limits::kLayerName) {
        return u"the layer's name has more than " + Number(static_cast<int>(limits::kLayerName)) +
               u" characters";
    }
    if (code.color < 0 || code.color > limits::kHighestColor) {
        return u"the colour " + Number(code.color) + u" is not 0 to " +
               Number(limits::kHighestColor);
    }
    if (code.line < 0 || code.line > limits::kHighestLine) {
        return u"the line " + Number(code.line) + u" is not 0 to " + Number(limits::kHighestLine);
    }
    if (!code.symbol.empty() && !IsSymbolName(code.symbol)) {
        return u"there is no symbol " + Quote(code.symbol);
    }
    if (!(code.size >= 0.0 && code.size <= kHighestSize)) {
        return u"the size is not 0 to 1000000";
    }
    if (code.kind == CqCodeKind::Text && code.text.empty() && code.label.empty()) {
        return u"a code of the kind text needs a text, such as {text}";
    }
    return {};
}

int CqCodeTable::Add(const CqCode& code) {
    if (m_codes.size() >= kMostRows || !FindFault(code).empty()) {
        return 0;
    }
    const std::size_t index = m_codes.size();
    const CString folded = Fold(code.code);
    if (!m_exact.emplace(folded, index).second) {
        return 0;
    }
    m_codes.push_back(code);
    if (IsPattern(folded)) {
        const std::size_t plain = CountPlain(folded);
        const auto place =
            std::find_if(m_patterns.begin(), m_patterns.end(),
                         [&](const auto& pattern) { return CountPlain(pattern.first) < plain; });
        m_patterns.insert(place, {folded, index});
    }
    return 1;
}

const CqCode* CqCodeTable::FindExact(std::u16string_view code) const {
    const auto found = m_exact.find(Fold(code));
    return found == m_exact.end() ? nullptr : &m_codes[found->second];
}

const CqCode* CqCodeTable::Find(std::u16string_view code) const {
    // A "*" that comes from the field is a character like any other, so it fits only patterns.
    if (const CqCode* exact = IsPattern(code) ? nullptr : FindExact(code)) {
        return exact;
    }
    const CString folded = Fold(code);
    for (const auto& [pattern, index] : m_patterns) {
        if (Fits(pattern, folded)) {
            return &m_codes[index];
        }
    }
    return nullptr;
}

const CqCode* CqCodeTable::FindFigure(std::u16string_view code, std::size_t& stem) const {
    stem = code.size();
    if (const CqCode* exact = IsPattern(code) ? nullptr : FindExact(code)) {
        return exact;
    }
    std::size_t length = code.size();
    while (length > 0 && IsDigit(code[length - 1])) {
        --length;
    }
    const bool hasNumber = length > 0 && length < code.size();
    if (hasNumber) {
        stem = length;
        if (const CqCode* exact = FindExact(code.substr(0, length))) {
            return exact;
        }
    }
    const CqCode* found = Find(code);
    const CqCode* byStem = hasNumber ? Find(code.substr(0, length)) : nullptr;
    // A pattern may be meant for codes that end with digits, such as "W*2", so it goes first.
    return byStem != nullptr && (found == nullptr || IsDefault(*found)) ? byStem : found;
}

int CqCodeTable::SetWords(const CString& words) {
    if (words.size() > kLongestText || HasControl(words)) {
        return 0;
    }
    m_words = words;
    return 1;
}

}  // namespace cqsurvey
