#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <optional>
#include <string_view>

#include "exchange/inspect/Searches.h"
#include "text/Printable.h"

namespace cqsurvey::exchange {

namespace {

struct Numbered {
    std::uint64_t number = 0;
    std::uint32_t point = 0;
};

/// The names that differ only in the number at their end, in record order.
using Series = std::map<std::string, std::vector<Numbered>>;

/// Longer numbers than this are no counters.
constexpr std::size_t kMostDigits = 15;
/// A gap between two runs of at least so many numbers is worth a word, if it is no wider itself.
constexpr std::uint64_t kRun = 10;

Series CollectSeries(const Survey& survey) {
    Series series;
    for (std::uint32_t i = 0; i < survey.points.size(); ++i) {
        const std::string& name = survey.points[i].name;
        std::size_t digits = name.size();
        while (digits > 0 && name[digits - 1] >= '0' && name[digits - 1] <= '9') {
            --digits;
        }
        if (digits == name.size() || name.size() - digits > kMostDigits) {
            continue;
        }
        series[name.substr(0, digits)].push_back({std::stoull(name.substr(digits)), i});
    }
    return series;
}

/// The numbers from `first` to `last` of a series as a reader would write them.
std::string Range(const std::string& prefix, std::uint64_t first, std::uint64_t last) {
    const std::string start = Printable(prefix) + fmt::format("{}", first);
    return first == last ? start : start + " to " + Printable(prefix) + fmt::format("{}", last);
}

/// One finding for the gaps of a series, unless it has so many that they mean nothing.
void FindGaps(const Survey& survey, const std::string& prefix, std::vector<Numbered> numbers,
              Findings& findings) {
    std::sort(numbers.begin(), numbers.end(),
              [](const Numbered& a, const Numbered& b) { return a.number < b.number; });
    struct Run {
        std::size_t first;
        std::size_t last;
        [[nodiscard]] std::size_t Length() const { return last - first + 1; }
    };
    std::vector<Run> runs;
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        if (i > 0 && numbers[i].number <= numbers[i - 1].number + 1) {
            runs.back().last = i;
        } else {
            runs.push_back({i, i});
        }
    }
    std::vector<std::uint32_t> beside;
    std::string text;
    std::size_t gaps = 0;
    std::uint64_t missing = 0;
    for (std::size_t i = 1; i < runs.size(); ++i) {
        const Numbered& before = numbers[runs[i - 1].last];
        const Numbered& after = numbers[runs[i].first];
        const std::uint64_t width = after.number - before.number - 1;
        if (width > kRun || runs[i - 1].Length() + runs[i].Length() < 2 * kRun) {
            continue;
        }
        constexpr std::size_t kShown = 8;
        if (gaps < kShown) {
            text += (gaps == 0 ? "" : ", ") + Range(prefix, before.number + 1, after.number - 1);
        }
        ++gaps;
        missing += width;
        beside.push_back(before.point);
        beside.push_back(after.point);
        if (gaps == kShown + 1) {
            text += " and more";
        }
    }
    constexpr std::size_t kRuns = 4;
    if (gaps == 0 || runs.size() * kRuns > numbers.size()) {
        return;
    }
    findings.push_back(
        survey.Find(Oddity::Sequence,
                    fmt::format("the series {} misses {}: {}",
                                Range(prefix, numbers.front().number, numbers.back().number),
                                Count(missing, "number"), text),
                    beside));
}

/// Names that stand between two others that follow each other, as 57 in 100, 57, 101.
void FindStrays(const Survey& survey, const std::vector<Numbered>& numbers, Findings& findings) {
    std::vector<std::size_t> strays;
    for (std::size_t i = 1; i + 1 < numbers.size(); ++i) {
        const std::uint64_t before = numbers[i - 1].number;
        const std::uint64_t after = numbers[i + 1].number;
        const std::uint64_t here = numbers[i].number;
        if (after > before && after - before <= 2 && (here < before || here > after)) {
            strays.push_back(i);
            ++i;
        }
    }
    // Where this is common, the order of the points is not that of their names.
    constexpr std::size_t kFew = 3;
    constexpr std::size_t kRare = 500;
    if (strays.size() > kFew && strays.size() * kRare > numbers.size()) {
        return;
    }
    for (const std::size_t stray : strays) {
        const auto name = [&](std::size_t index) {
            return Survey::Name(survey.points[numbers[index].point]);
        };
        findings.push_back(survey.Find(Oddity::Sequence,
                                       fmt::format("{} stands between {} and {}", name(stray),
                                                   name(stray - 1), name(stray + 1)),
                                       {numbers[stray].point}));
    }
}

}  // namespace

void FindSequences(const Survey& survey, Findings& findings) {
    const Series series = CollectSeries(survey);
    for (const auto& [prefix, numbers] : series) {
        if (numbers.size() >= 2 * kRun) {
            FindGaps(survey, prefix, numbers, findings);
        }
    }
    for (const auto& [prefix, numbers] : series) {
        if (numbers.size() >= 2 * kRun) {
            FindStrays(survey, numbers, findings);
        }
    }
}

}  // namespace cqsurvey::exchange
