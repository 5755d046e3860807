#include "cqjob/ViewOptions.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include <cqsurvey/CodeWord.h>

#include "cqjob/Arguments.h"
#include "cqjob/Failure.h"
#include "cqjob/WordPattern.h"
#include "text/NumberText.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

namespace {

constexpr const char* kRange = "..";

/// How many points have no data origin, so no filter admits them. Changes the view.
std::int32_t CountWithoutOrigin(CqSurveyDB& db) {
    COORDFILTER everyOrigin;
    everyOrigin.originMask = limits::kHighestOrigin;
    return db.GetNumCoordRecs() -
           db.SetSortCoordSetting(static_cast<std::uint16_t>(PointOrder::Record), 0, everyOrigin);
}

/// A group number that no point has. A filter for it and the ungrouped points admits only the
/// ungrouped points.
std::uint16_t FindUnusedGroup(const CqSurveyDB& db, const std::string& job) {
    std::vector<bool> used(limits::kHighestGroup + 1U);
    used[0] = true;
    for (const auto& [handle, point] : Points(db)) {
        used[point.GetGroup()] = true;
    }
    const auto unused = std::find(used.begin(), used.end(), false);
    if (unused == used.end()) {
        throw Failure(job, "every number of a group is in use");
    }
    return static_cast<std::uint16_t>(unused - used.begin());
}

std::string FindPatternFault(const std::string& pattern) {
    return IsUtf8(pattern) ? std::string() : Quoted(pattern) + " is not UTF-8";
}

std::string FindBoundsFault(const std::string& word) {
    return NameBounds(word).fault;
}

}  // namespace

NameBounds::NameBounds(const std::string& word) {
    const std::size_t star = word.find('*');
    const std::size_t range = word.find(kRange);
    if (!IsUtf8(word)) {
        fault = Quoted(word) + " is not UTF-8";
    } else if (star != std::string::npos) {
        if (star + 1 != word.size() || range != std::string::npos) {
            fault = Quoted(word) + " has a * that is not the end of a prefix such as P*";
        }
        from = word;
    } else if (range == std::string::npos) {
        from = word;
        to = word;
    } else {
        from = word.substr(0, range);
        to = word.substr(range + std::char_traits<char>::length(kRange));
    }
    if (fault.empty() && from.empty() && to.empty()) {
        fault =
            Quoted(word) + " is neither a range of names such as P5..P20 nor a prefix such as P*";
    }
}

void ViewOptions::AddTo(CommandLine& command) {
    m_command = &command;
    command
        .Add("--sort", m_sort,
             "Sort by name in natural order (P2 before P10), by code, or by record number")
        .Placeholder("KEY")
        .OneOf({"name", "code", "record"})
        .ShowDefault();
    command.AddFlag("--descending", m_descending, "Sort in descending order");
    command.Add("--name", m_name, "Only names in a range or with a prefix")
        .Placeholder("FROM..TO|PREFIX*")
        .Check(FindBoundsFault);
    command
        .Add("--code", m_codes,
             "Only points of this feature code, a number or a word such as \"TREE*\"; may be given "
             "several times")
        .Placeholder("CODE")
        .OneValueEach()
        .Check(FindPatternFault);
    command.Add("--desc", m_description, "Only points with such a description, as in \"*MH*\"")
        .Placeholder("PATTERN")
        .Check(FindPatternFault);
    command.Add("--group", m_group, "Only points of this group").Placeholder("NAME");
    command.AddFlag("--ungrouped", m_ungrouped,
                    "Points in no group, in addition to those of --group");
    command.Add("--origin", m_origin, "Only points with one of these bits in their data origin")
        .Placeholder("MASK")
        .InRange(1, limits::kHighestOrigin);
}

bool ViewOptions::IsFiltered() const {
    static constexpr std::array kFilters = {"--name", "--group", "--ungrouped", "--origin"};
    return (!m_codes.empty() && !HasCodeWord()) ||
           std::any_of(kFilters.begin(), kFilters.end(),
                       [this](const char* option) { return m_command->IsGiven(option); });
}

bool ViewOptions::HasCodeWord() const {
    return !std::all_of(m_codes.begin(), m_codes.end(),
                        [](const std::string& code) { return ParseWholeNumber(code).has_value(); });
}

PointList::Test ViewOptions::MakeTest(const CqSurveyDB& db) const {
    std::vector<std::int32_t> numbers;
    std::vector<WordPattern> words;
    if (HasCodeWord()) {
        for (const std::string& code : m_codes) {
            if (const std::optional<std::int32_t> number = ParseWholeNumber(code)) {
                numbers.push_back(*number);
            } else {
                words.emplace_back(code);
            }
        }
    }
    std::optional<WordPattern> description;
    if (m_command->IsGiven("--desc")) {
        description.emplace(m_description);
    }
    if (words.empty() && !description) {
        return {};
    }
    return [&db, numbers, words, description](CqHandle handle, const CqCoordRec& point) {
        CString stored;
        db.GetCoordDescription(handle, stored);
        const std::string text = ToUtf8(stored);
        if (description && !description->Matches(text)) {
            return false;
        }
        const std::string_view word = CodeWord(std::string_view(text));
        return words.empty() ||
               std::any_of(words.begin(), words.end(),
                           [&](const WordPattern& pattern) { return pattern.Matches(word); }) ||
               std::find(numbers.begin(), numbers.end(), point.GetCode()) != numbers.end();
    };
}

COORDFILTER ViewOptions::MakeFilter(CqSurveyDB& db, const std::string& job) const {
    COORDFILTER filter;
    filter.originMask = m_command->IsGiven("--origin") ? m_origin : limits::kHighestOrigin;
    if (!m_name.empty()) {
        const NameBounds bounds(m_name);
        filter.nameFrom = FromUtf8(bounds.from);
        filter.nameTo = FromUtf8(bounds.to);
    }
    if (!HasCodeWord()) {
        for (const std::string& code : m_codes) {
            filter.codes.push_back(ParseWholeNumber(code).value_or(0));
        }
    }
    if (m_command->IsGiven("--group")) {
        filter.group = db.GetGroupID(ReadText(m_group, "the group's name"));
        if (filter.group == 0) {
            throw Failure(job, "there is no group {}", Quoted(m_group));
        }
    } else if (m_ungrouped) {
        filter.group = FindUnusedGroup(db, job);
    }
    filter.withUngrouped = m_ungrouped ? 1 : 0;
    return filter;
}

PointList ViewOptions::MakeList(CqSurveyDB& db, const std::string& job, Console& console) const {
    static constexpr std::pair<const char*, PointOrder> kOrders[] = {
        {"name", PointOrder::Name}, {"code", PointOrder::Code}, {"record", PointOrder::Record}};
    const auto* const order =
        std::find_if(std::begin(kOrders), std::end(kOrders),
                     [&](const auto& entry) { return entry.first == m_sort; });
    std::optional<COORDFILTER> filter;
    if (IsFiltered()) {
        filter = MakeFilter(db, job);
        const std::int32_t without = m_command->IsGiven("--origin") ? 0 : CountWithoutOrigin(db);
        if (without > 0) {
            console.Say("{}: {} without data origin, which no filter admits\n", Printable(job),
                        Count(static_cast<std::size_t>(without), "point"));
        }
    }
    return PointList(db, order->second, m_descending, filter, MakeTest(db));
}

}  // namespace cqsurvey::cqjob
