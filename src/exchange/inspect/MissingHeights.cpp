#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

#include "exchange/inspect/Searches.h"
#include "text/Printable.h"

namespace cqsurvey::exchange {

void FindMissingHeights(const Survey& survey, Findings& findings) {
    struct Kind {
        std::size_t points = 0;
        std::vector<std::uint32_t> without;
    };
    std::map<std::pair<std::uint32_t, std::uint32_t>, Kind> kinds;
    for (std::uint32_t i = 0; i < survey.points.size(); ++i) {
        const SurveyedPoint& point = survey.points[i];
        Kind& kind = kinds[{point.group, point.code}];
        ++kind.points;
        if (std::isnan(point.height)) {
            kind.without.push_back(i);
        }
    }
    std::vector<std::pair<std::pair<std::uint32_t, std::uint32_t>, Kind>> order;
    for (auto& [key, kind] : kinds) {
        if (!kind.without.empty()) {
            order.emplace_back(key, std::move(kind));
        }
    }
    std::stable_sort(order.begin(), order.end(), [](const auto& a, const auto& b) {
        return a.second.without.size() > b.second.without.size();
    });
    for (const auto& [key, kind] : order) {
        const std::string group =
            key.first == 0 ? std::string("no group") : "group " + Quoted(survey.groups[key.first]);
        const std::string code =
            key.second == 0 ? std::string("no code") : "code " + Quoted(survey.codes[key.second]);
        findings.push_back(survey.Find(
            Oddity::MissingHeight,
            fmt::format("{}, {}: {} of {} without height: {}", group, code, kind.without.size(),
                        Count(kind.points, "point"), survey.List(kind.without)),
            kind.without));
    }
}

}  // namespace cqsurvey::exchange
