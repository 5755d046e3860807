#include <fmt/format.h>
#include <glib.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <numeric>
#include <unordered_set>
#include <utility>

#include "exchange/inspect/Searches.h"
#include "text/NumberText.h"

namespace cqsurvey::exchange {

namespace {

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

/// The name without regard to letter case, blanks and leading zeros.
std::string Simplify(const std::string& name) {
    const std::unique_ptr<gchar, decltype(&g_free)> folded(
        g_utf8_casefold(name.data(), static_cast<gssize>(name.size())), &g_free);
    std::string simple;
    for (const char* at = folded.get(); *at != 0; ++at) {
        const char before = simple.empty() ? 'x' : simple.back();
        const bool leads = *at == '0' && !IsDigit(before) && before != '.' && IsDigit(at[1]);
        if (*at != ' ' && *at != '\t' && !leads) {
            simple += *at;
        }
    }
    return simple;
}

/// The length of the name without the "_2" that an import appends; 0 when it has none.
std::size_t LengthWithoutSuffix(const std::string& name) {
    std::size_t digits = name.size();
    while (digits > 0 && IsDigit(name[digits - 1])) {
        --digits;
    }
    const bool isNumber = digits < name.size() && name[digits] != '0' &&
                          (name.size() - digits > 1 || name[digits] != '1');
    return isNumber && digits > 1 && name[digits - 1] == '_' ? digits - 1 : 0;
}

}  // namespace

void FindRepeatedNames(const Survey& survey, const SamePlaces& places, Findings& findings) {
    std::vector<std::string> keys(survey.points.size());
    std::unordered_set<std::string> known;
    for (std::size_t i = 0; i < keys.size(); ++i) {
        keys[i] = Simplify(survey.points[i].name);
        known.insert(keys[i]);
    }
    for (std::size_t i = 0; i < keys.size(); ++i) {
        const std::string& name = survey.points[i].name;
        const std::size_t length = LengthWithoutSuffix(name);
        if (length == 0) {
            continue;
        }
        std::string key = Simplify(name.substr(0, length));
        if (known.count(key) != 0) {
            keys[i] = std::move(key);
        }
    }
    std::vector<std::uint32_t> order(keys.size());
    std::iota(order.begin(), order.end(), 0U);
    std::stable_sort(order.begin(), order.end(),
                     [&](std::uint32_t a, std::uint32_t b) { return keys[a] < keys[b]; });
    struct Repeated {
        double distance;
        std::vector<std::uint32_t> points;
    };
    std::vector<Repeated> all;
    for (std::size_t i = 0; i < order.size();) {
        std::size_t end = i + 1;
        while (end < order.size() && keys[order[end]] == keys[order[i]]) {
            ++end;
        }
        std::vector<std::uint32_t> points(order.begin() + static_cast<std::ptrdiff_t>(i),
                                          order.begin() + static_cast<std::ptrdiff_t>(end));
        i = end;
        const SurveyedPoint& first = survey.points[points.front()];
        if (first.name.empty() ||
            std::all_of(points.begin(), points.end(), [&](std::uint32_t point) {
                return places.PlaceOf(point) == places.PlaceOf(points.front());
            })) {
            continue;
        }
        double farthest = 0.0;
        for (const std::uint32_t point : points) {
            const SurveyedPoint& other = survey.points[point];
            const double distance =
                std::hypot(other.easting - first.easting, other.northing - first.northing);
            farthest = distance > farthest ? distance : farthest;
        }
        all.push_back({farthest, std::move(points)});
    }
    std::stable_sort(all.begin(), all.end(),
                     [](const Repeated& a, const Repeated& b) { return a.distance > b.distance; });
    for (const Repeated& repeated : all) {
        findings.push_back(survey.Find(
            Oddity::RepeatedName,
            fmt::format("{} may be one name; they are up to {} apart", survey.List(repeated.points),
                        FormatNumber(repeated.distance, 3)),
            repeated.points));
    }
}

}  // namespace cqsurvey::exchange
