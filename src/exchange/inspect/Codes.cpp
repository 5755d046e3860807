#include <cqsurvey/Text.h>
#include <fmt/format.h>

#include <algorithm>
#include <unordered_map>

#include "exchange/inspect/Searches.h"
#include "text/Printable.h"

namespace cqsurvey::exchange {

namespace {

/// A code used at least so often is a common one.
constexpr std::size_t kCommon = 5;
/// Short codes differ by one letter on purpose: TOE and TOP, TP and TOP. A letter too few or two
/// swapped are a slip from three letters on, another letter from four on.
constexpr std::size_t kShortest = 3;
/// No code is as long as this; a long word has too many neighbours to look at.
constexpr std::size_t kLongest = 24;

/// The letters of a code in upper case.
std::u16string Fold(const std::string& code) {
    std::u16string folded = FromUtf8(code);
    for (char16_t& unit : folded) {
        unit = unit >= u'a' && unit <= u'z' ? static_cast<char16_t>(unit - 32) : unit;
    }
    return folded;
}

bool IsDigit(char16_t unit) {
    return unit >= u'0' && unit <= u'9';
}

/// Calls `visit` with the word without each one of its letters in turn, and that letter. Digits
/// stay: they number things, and B1 is no mistake for B2.
template <class Visit>
void ForEachShorter(const std::u16string& word, Visit&& visit) {
    for (std::size_t i = 0; i < word.size(); ++i) {
        if (!IsDigit(word[i]) && (i == 0 || word[i] != word[i - 1])) {
            visit(word.substr(0, i) + word.substr(i + 1), i);
        }
    }
}

/// Whether one word comes of the other by changing, inserting or leaving out one letter, or by
/// swapping two neighbours.
bool AreNear(const std::u16string& a, const std::u16string& b) {
    const auto [endA, endB] = std::mismatch(a.begin(), a.end(), b.begin(), b.end());
    std::u16string_view restA(a);
    std::u16string_view restB(b);
    const auto same = static_cast<std::size_t>(endA - a.begin());
    restA.remove_prefix(same);
    restB.remove_prefix(same);
    while (!restA.empty() && !restB.empty() && restA.back() == restB.back()) {
        restA.remove_suffix(1);
        restB.remove_suffix(1);
    }
    const auto hasDigit = [](std::u16string_view text) {
        return std::any_of(text.begin(), text.end(), IsDigit);
    };
    if (hasDigit(restA) || hasDigit(restB)) {
        return false;
    }
    if (restA.size() == 1 && restB.size() == 1) {
        return a.size() > kShortest;
    }
    return (restA.size() + restB.size() == 1 && std::min(a.size(), b.size()) >= kShortest) ||
           (restA.size() == 2 && restB.size() == 2 && restA[0] == restB[1] && restA[1] == restB[0]);
}

}  // namespace

void FindCodes(const Survey& survey, Findings& findings) {
    std::vector<std::size_t> uses(survey.codes.size());
    std::vector<std::uint32_t> last(survey.codes.size());
    for (std::uint32_t i = 0; i < survey.points.size(); ++i) {
        ++uses[survey.points[i].code];
        last[survey.points[i].code] = i;
    }
    // The common codes, and what is left of each without one letter.
    std::unordered_map<std::u16string, std::vector<std::uint32_t>> near;
    std::vector<std::u16string> folded(survey.codes.size());
    for (std::uint32_t code = 1; code < survey.codes.size(); ++code) {
        folded[code] = Fold(survey.codes[code]);
        if (uses[code] < kCommon || folded[code].size() > kLongest) {
            continue;
        }
        near[folded[code]].push_back(code);
        if (folded[code].size() >= kShortest) {
            ForEachShorter(folded[code], [&](const std::u16string& shorter, std::size_t) {
                near[shorter].push_back(code);
            });
        }
    }
    struct Rare {
        std::uint32_t code;
        std::uint32_t common;
    };
    std::vector<Rare> rare;
    for (std::uint32_t code = 1; code < survey.codes.size(); ++code) {
        if (uses[code] != 1 || folded[code].size() > kLongest + 1) {
            continue;
        }
        std::uint32_t best = 0;
        const auto consider = [&](const std::u16string& word) {
            const auto found = near.find(word);
            if (found == near.end()) {
                return;
            }
            for (const std::uint32_t common : found->second) {
                const bool sameLetters = folded[common] == folded[code];
                if ((sameLetters || (folded[common].size() >= kShortest &&
                                     AreNear(folded[code], folded[common]))) &&
                    (best == 0 || uses[common] > uses[best])) {
                    best = common;
                }
            }
        };
        consider(folded[code]);
        ForEachShorter(folded[code],
                       [&](const std::u16string& shorter, std::size_t) { consider(shorter); });
        if (best != 0) {
            rare.push_back({code, best});
        }
    }
    std::stable_sort(rare.begin(), rare.end(),
                     [&](const Rare& a, const Rare& b) { return uses[a.common] > uses[b.common]; });
    for (const Rare& entry : rare) {
        const std::uint32_t point = last[entry.code];
        findings.push_back(survey.Find(
            Oddity::Code,
            fmt::format("{} has the code {}, which no other point has; {} have {}",
                        Survey::Name(survey.points[point]), Quoted(survey.codes[entry.code]),
                        Count(uses[entry.common], "point"), Quoted(survey.codes[entry.common])),
            {point}));
    }
}

}  // namespace cqsurvey::exchange
