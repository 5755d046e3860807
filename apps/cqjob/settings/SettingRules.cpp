#include "cqjob/settings/SettingRules.h"

#include <cqsurvey/CqAngleForm.h>
#include <cqsurvey/Limits.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <numeric>
#include <optional>
#include <utility>
#include <vector>

#include "text/NumberText.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

namespace {

enum class Kind { Whole, Length, Fixed, Text };

struct Rule {
    std::string_view section;
    std::string_view key;
    Kind kind;
    std::int64_t low = INT32_MIN;
    std::int64_t high = INT32_MAX;
};

constexpr std::array kRules = {
    Rule{"SETTINGS", "SiPointSize", Kind::Length},
    Rule{"SETTINGS", "JCoordDivision", Kind::Whole, limits::kLowestDivision,
         limits::kHighestDivision},
    Rule{"SETTINGS", "Version", Kind::Fixed},
    Rule{"SETTINGS", "Mapscale", Kind::Whole, 1},
    Rule{"BACKGROUND", "EntityColor", Kind::Whole, limits::kNoForcedColor,
         limits::kHighestForcedColor},
    Rule{"BACKGROUND", "Type", Kind::Whole},
    Rule{"BACKGROUND", "CenterX", Kind::Length},
    Rule{"BACKGROUND", "CenterY", Kind::Length},
    Rule{"BACKGROUND", "SizeX", Kind::Length},
    Rule{"BACKGROUND", "SizeY", Kind::Length},
    Rule{"BACKGROUND", "Rotation", Kind::Length},
    Rule{"BACKGROUND", "Brightness", Kind::Whole, limits::kLowestBrightness,
         limits::kHighestBrightness},
    Rule{"BACKGROUND", "Contrast", Kind::Whole, limits::kLowestContrast, limits::kHighestContrast},
    Rule{"BACKGROUND", "Monotone", Kind::Whole},
    Rule{"BACKGROUND", "BKColor", Kind::Whole, 0, UINT32_MAX},
    Rule{"TITLE", "Title", Kind::Text},
    Rule{"TITLE", "Client", Kind::Text},
    Rule{"TITLE", "Place", Kind::Text},
    Rule{"TITLE", "SurveyedBy", Kind::Text},
    Rule{"TITLE", "DrawnBy", Kind::Text},
    Rule{"TITLE", "Date", Kind::Text},
    Rule{"TITLE", "DrawingNumber", Kind::Text},
    Rule{"TITLE", "HeightSystem", Kind::Text},
};

bool SameWord(std::string_view a, std::string_view b) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [&](char x, char y) { return lower(x) == lower(y); });
}

/// How many letters must be changed, added or left out to make one word of the other, without
/// regard to letter case.
std::size_t CountChanges(std::string_view from, std::string_view to) {
    constexpr std::size_t kLongest = 64;
    to = to.substr(0, kLongest);
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < from.size(); ++i) {
        std::size_t diagonal = std::exchange(row[0], i + 1);
        for (std::size_t j = 0; j < to.size(); ++j) {
            const std::size_t change =
                diagonal + (SameWord(from.substr(i, 1), to.substr(j, 1)) ? 0U : 1U);
            diagonal = row[j + 1];
            row[j + 1] = std::min({change, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row.back();
}

const Rule* FindRule(std::string_view section, std::string_view key) {
    const auto* const rule = std::find_if(kRules.begin(), kRules.end(), [&](const Rule& entry) {
        return SameWord(entry.section, section) && SameWord(entry.key, key);
    });
    return rule == kRules.end() ? nullptr : rule;
}

std::optional<std::int64_t> ReadWhole(std::string_view text) {
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc{} && end == text.data() + text.size() ? std::optional(value)
                                                                    : std::nullopt;
}

bool HasBreak(std::string_view text) {
    return std::any_of(text.begin(), text.end(),
                       [](char c) { return c >= 0 && c < 0x20 && c != '\t'; });
}

bool IsPadded(std::string_view text) {
    return Trim(text).size() != text.size();
}

}  // namespace

std::string SettingRules::FindFault(std::string_view section, std::string_view key,
                                    std::string_view value) {
    const Rule* rule = FindRule(section, key);
    if (rule != nullptr && rule->kind != Kind::Text) {
        if (rule->kind == Kind::Fixed) {
            return fmt::format("{} belongs to the job and cannot be changed", rule->key);
        }
        if (rule->kind == Kind::Length) {
            const ParsedNumber number = ParseNumber(value);
            return number.fault == nullptr
                       ? std::string()
                       : fmt::format("{} {} {}", rule->key, Quoted(value), number.fault);
        }
        const std::optional<std::int64_t> whole = ReadWhole(value);
        if (!whole || *whole < rule->low || *whole > rule->high) {
            return fmt::format("{} must be a whole number from {} to {}, not {}", rule->key,
                               rule->low, rule->high, Quoted(value));
        }
        return {};
    }
    if (SameWord(section, "IDENTITY")) {
        return "the identity belongs to the job and cannot be changed";
    }
    if (IsOfSystem(section) && IsAngles(key)) {
        return value.empty() || FindAngleForm(value)
                   ? std::string()
                   : fmt::format("Angles is dms, deg or gon, not {}", Quoted(value));
    }
    if (IsOfSystem(section) && !IsUnit(key) && !SameWord(key, "System")) {
        return "the section COORDINATES has the keys LengthUnit, System and Angles";
    }
    if (section.empty() || IsPadded(section) || HasBreak(section) ||
        section.find_first_of("[]") != std::string_view::npos) {
        return fmt::format(
            "{} is not a name for a section: it must be one line without brackets and "
            "without blanks at its ends",
            Quoted(section));
    }
    if (key.empty() || IsPadded(key) || HasBreak(key) || key.find('=') != std::string_view::npos) {
        return fmt::format(
            "{} is not a name for a key: it must be one line without = and without "
            "blanks at its ends",
            Quoted(key));
    }
    if (IsPadded(value) || HasBreak(value)) {
        return fmt::format(
            "{} cannot be stored: a value must be one line without blanks at its ends",
            Quoted(value));
    }
    const auto holds = [&](char bracket) {
        return key.find(bracket) != std::string_view::npos ||
               value.find(bracket) != std::string_view::npos;
    };
    if (holds('[') && holds(']')) {
        return fmt::format("{} cannot be stored: a line with [ and ] would be read as a section",
                           Quoted(fmt::format("{}={}", key, value)));
    }
    return {};
}

std::string SettingRules::FindTypo(std::string_view section, std::string_view key) {
    if (FindRule(section, key) != nullptr) {
        return {};
    }
    const Rule* nearest = nullptr;
    std::size_t fewest = key.size() / 2 + 1;
    bool isFixed = false;
    for (const Rule& rule : kRules) {
        if (!SameWord(rule.section, section)) {
            continue;
        }
        isFixed = true;
        const std::size_t changes = CountChanges(rule.key, key);
        if (changes < fewest) {
            fewest = changes;
            nearest = &rule;
        }
    }
    if (!isFixed) {
        return {};
    }
    return fmt::format("section {} has no key {}{}; --new adds it", section, Quoted(key),
                       nearest == nullptr ? "" : fmt::format(" (is it {}?)", nearest->key));
}

bool SettingRules::IsOfSystem(std::string_view section) {
    return SameWord(section, "COORDINATES");
}

bool SettingRules::IsUnit(std::string_view key) {
    return SameWord(key, "LengthUnit");
}

bool SettingRules::IsAngles(std::string_view key) {
    return SameWord(key, "Angles");
}

std::string SettingRules::Normalise(std::string_view section, std::string_view key,
                                    std::string_view value) {
    const Rule* rule = FindRule(section, key);
    if (rule == nullptr || rule->kind == Kind::Text) {
        return std::string(value);
    }
    if (rule->kind == Kind::Length) {
        return FormatNumber(ParseNumber(value).value, 3);
    }
    // A colour fills 32 bits and is written as a signed number.
    return fmt::format("{}", static_cast<std::int32_t>(ReadWhole(value).value_or(0)));
}

}  // namespace cqsurvey::cqjob
