#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>

#include "exchange/inspect/Searches.h"
#include "text/Printable.h"

namespace cqsurvey::exchange {

namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

/// The range of the numbers without the lowest and the highest hundredth.
struct Usual {
    double low = 0.0;
    double high = 0.0;

    explicit Usual(std::vector<double> numbers) {
        if (numbers.empty()) {
            return;
        }
        const std::size_t cut = numbers.size() / 100;
        const auto at = [&](std::size_t index) {
            const auto place = numbers.begin() + static_cast<std::ptrdiff_t>(index);
            std::nth_element(numbers.begin(), place, numbers.end());
            return *place;
        };
        low = at(cut);
        high = at(numbers.size() - 1 - cut);
    }
    [[nodiscard]] bool Holds(double number) const { return number >= low && number <= high; }
    /// Also true for a number next to the range, at most as far away as that is wide.
    [[nodiscard]] bool IsNear(double number) const {
        const double width = high - low;
        return number >= low - width && number <= high + width;
    }
};

/// Three nines or more and nothing else, such as -9999 and -9.99E+27, or the number that grids of
/// heights have for nothing.
bool IsMadeUp(double number) {
    if (number == -32768.0) {
        return true;
    }
    const std::string text = fmt::format("{:e}", std::fabs(number));
    std::size_t nines = 0;
    std::size_t end = text.find('e');
    while (end > 0 && (text[end - 1] == '0' || text[end - 1] == '.')) {
        --end;
    }
    for (std::size_t i = 0; i < end; ++i) {
        if (text[i] != '9' && text[i] != '.') {
            return false;
        }
        nines += text[i] == '9' ? 1U : 0U;
    }
    return nines >= 3;
}

void FindHeightSentinels(Survey& survey, Findings& findings) {
    // The numbers that occur among the sentinels do not say what is usual.
    std::vector<double> usual;
    std::map<double, std::vector<std::uint32_t>> suspects;
    std::size_t heights = 0;
    for (std::uint32_t i = 0; i < survey.points.size(); ++i) {
        const double height = survey.points[i].height;
        heights += std::isnan(height) ? 0U : 1U;
        if (height == 0.0 || (!std::isnan(height) && IsMadeUp(height))) {
            suspects[height].push_back(i);
        } else if (!std::isnan(height)) {
            usual.push_back(height);
        }
    }
    const bool allSuspect = usual.empty();
    const Usual range(std::move(usual));
    for (const auto& [height, points] : suspects) {
        if (!allSuspect && range.Holds(height) &&
            (height != 0.0 || points.size() < 10 || points.size() * 20 < heights)) {
            continue;
        }
        if (allSuspect && points.size() == 1 && height == 0.0) {
            continue;
        }
        findings.push_back(
            survey.Find(Oddity::Sentinel,
                        fmt::format("{} with the height {}: {}", Count(points.size(), "point"),
                                    height, survey.List(points)),
                        points));
        for (const std::uint32_t point : points) {
            survey.points[point].height = kNone;
        }
    }
}

void FindPlaceSentinels(Survey& survey, Findings& findings) {
    std::vector<double> eastings;
    std::vector<double> northings;
    std::map<std::pair<double, double>, std::vector<std::uint32_t>> suspects;
    std::vector<std::uint32_t> notFinite;
    for (std::uint32_t i = 0; i < survey.points.size(); ++i) {
        const SurveyedPoint& point = survey.points[i];
        if (!std::isfinite(point.easting) || !std::isfinite(point.northing)) {
            notFinite.push_back(i);
        } else if ((point.easting == 0.0 && point.northing == 0.0) || IsMadeUp(point.easting) ||
                   IsMadeUp(point.northing)) {
            suspects[{point.easting, point.northing}].push_back(i);
        } else {
            eastings.push_back(point.easting);
            northings.push_back(point.northing);
        }
    }
    if (!notFinite.empty()) {
        findings.push_back(
            survey.Find(Oddity::Sentinel,
                        fmt::format("{} with coordinates that are not numbers: {}",
                                    Count(notFinite.size(), "point"), survey.List(notFinite)),
                        notFinite));
    }
    if (eastings.empty()) {
        return;
    }
    const Usual east(std::move(eastings));
    const Usual north(std::move(northings));
    for (const auto& [place, points] : suspects) {
        if (east.IsNear(place.first) && north.IsNear(place.second)) {
            continue;
        }
        findings.push_back(survey.Find(Oddity::Sentinel,
                                       fmt::format("{} with the easting {} and the northing {}: {}",
                                                   Count(points.size(), "point"), place.first,
                                                   place.second, survey.List(points)),
                                       points));
        for (const std::uint32_t point : points) {
            survey.points[point].easting = kNone;
            survey.points[point].northing = kNone;
        }
    }
}

}  // namespace

void FindSentinels(Survey& survey, Findings& findings) {
    const std::size_t before = findings.size();
    FindHeightSentinels(survey, findings);
    FindPlaceSentinels(survey, findings);
    std::stable_sort(findings.begin() + static_cast<std::ptrdiff_t>(before), findings.end(),
                     [](const InspectionFinding& a, const InspectionFinding& b) {
                         return a.points.size() > b.points.size();
                     });
}

}  // namespace cqsurvey::exchange
