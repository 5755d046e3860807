#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

#include "exchange/inspect/Searches.h"
#include "text/NumberText.h"

namespace cqsurvey::exchange {

namespace {

/// The coordinates of one axis, sorted, with the points that have them.
using Axis = std::vector<std::pair<double, std::uint32_t>>;

/// How many points at either end may be far: one in fifty, but at least one.
std::size_t MostFar(const Axis& axis) {
    return std::max<std::size_t>(1, axis.size() / 50);
}

/// The extent of the points that are certainly not far.
double Extent(const Axis& axis) {
    const std::size_t cut = MostFar(axis);
    return axis[axis.size() - 1 - cut].first - axis[cut].first;
}

/// Adds the points at both ends of the axis that are behind a gap, with its width.
void AddFar(const Axis& axis, double gap, std::map<std::uint32_t, double>& far) {
    const std::size_t most = MostFar(axis);
    const std::size_t last = axis.size() - 1;
    for (std::size_t count = most; count > 0; --count) {
        const double below = axis[count].first - axis[count - 1].first;
        const double above = axis[last - count + 1].first - axis[last - count].first;
        for (std::size_t i = 0; i < count; ++i) {
            if (below > gap) {
                double& width = far[axis[i].second];
                width = std::max(width, below);
            }
            if (above > gap) {
                double& width = far[axis[last - i].second];
                width = std::max(width, above);
            }
        }
        if (below > gap && above > gap) {
            break;
        }
    }
}

}  // namespace

void FindFar(const Survey& survey, Findings& findings) {
    // With fewer points nothing can be said about where the others are.
    constexpr std::size_t kFewest = 8;
    Axis eastings;
    Axis northings;
    for (std::uint32_t i = 0; i < survey.points.size(); ++i) {
        const SurveyedPoint& point = survey.points[i];
        if (std::isfinite(point.easting) && std::isfinite(point.northing)) {
            eastings.emplace_back(point.easting, i);
            northings.emplace_back(point.northing, i);
        }
    }
    if (eastings.size() < kFewest) {
        return;
    }
    std::sort(eastings.begin(), eastings.end());
    std::sort(northings.begin(), northings.end());
    const double extent = std::max(Extent(eastings), Extent(northings));
    if (!(extent > 0.0)) {
        return;
    }
    std::map<std::uint32_t, double> far;
    AddFar(eastings, 2.0 * extent, far);
    AddFar(northings, 2.0 * extent, far);
    std::vector<std::pair<std::uint32_t, double>> order(far.begin(), far.end());
    std::stable_sort(order.begin(), order.end(),
                     [](const auto& a, const auto& b) { return a.second > b.second; });
    for (const auto& [index, width] : order) {
        const SurveyedPoint& point = survey.points[index];
        findings.push_back(survey.Find(
            Oddity::Far,
            fmt::format("{} at easting {}, northing {} is {} away from the others, which lie "
                        "within {}",
                        Survey::Name(point), FormatNumber(point.easting, 3),
                        FormatNumber(point.northing, 3), FormatNumber(width, 1),
                        FormatNumber(extent, 1)),
            {index}));
    }
}

}  // namespace cqsurvey::exchange
