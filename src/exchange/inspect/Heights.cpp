#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

#include "exchange/inspect/NearestPlaces.h"
#include "exchange/inspect/Searches.h"
#include "text/NumberText.h"

namespace cqsurvey::exchange {

namespace {

constexpr std::size_t kNeighbours = 12;
constexpr std::size_t kFewest = 8;

/// The middle one of the numbers, which are reordered.
double Median(std::vector<double>& numbers) {
    const auto middle = numbers.begin() + static_cast<std::ptrdiff_t>(numbers.size() / 2);
    std::nth_element(numbers.begin(), middle, numbers.end());
    return *middle;
}

/// A point's height beside those of its neighbours.
struct Comparison {
    std::uint32_t point = 0;
    /// How far the height is from the second nearest in height. One neighbour may have the same
    /// mistake.
    double alone = 0.0;
    /// How far it is from the median of all.
    double off = 0.0;
    /// The median distance of the neighbours from their median.
    double spread = 0.0;
    double low = 0.0;
    double high = 0.0;
};

Comparison Compare(std::uint32_t point, double height, std::vector<double>& heights) {
    Comparison result;
    result.point = point;
    const auto [low, high] = std::minmax_element(heights.begin(), heights.end());
    result.low = *low;
    result.high = *high;
    const double median = Median(heights);
    result.off = std::fabs(height - median);
    std::vector<double> distances(heights.size());
    std::transform(heights.begin(), heights.end(), distances.begin(),
                   [&](double other) { return std::fabs(other - median); });
    result.spread = Median(distances);
    std::transform(heights.begin(), heights.end(), distances.begin(),
                   [&](double other) { return std::fabs(other - height); });
    std::nth_element(distances.begin(), distances.begin() + 1, distances.end());
    result.alone = distances[1];
    return result;
}

/// Compares each point that has a place and a height with its neighbours.
std::vector<Comparison> CompareAll(const Survey& survey, const SamePlaces& places,
                                   const std::function<void()>& looked) {
    std::vector<Comparison> comparisons;
    std::vector<std::uint32_t> firsts;
    std::vector<Place> where;
    for (const std::uint32_t first : places.GetFirsts()) {
        const SurveyedPoint& point = survey.points[first];
        if (std::isfinite(point.height)) {
            firsts.push_back(first);
            where.push_back({point.easting, point.northing});
        }
    }
    if (firsts.size() < kFewest) {
        return comparisons;
    }
    const NearestPlaces nearest(std::move(where));
    std::vector<std::uint32_t> found;
    std::vector<double> heights;
    for (std::uint32_t i = 0; i < survey.points.size(); ++i) {
        looked();
        const SurveyedPoint& point = survey.points[i];
        if (!Survey::HasPlace(point) || !std::isfinite(point.height)) {
            continue;
        }
        nearest.Find({point.easting, point.northing}, kNeighbours + 1, found);
        heights.clear();
        for (const std::uint32_t neighbour : found) {
            if (firsts[neighbour] != i && heights.size() < kNeighbours) {
                heights.push_back(survey.points[firsts[neighbour]].height);
            }
        }
        comparisons.push_back(Compare(i, point.height, heights));
    }
    return comparisons;
}

/// How far a height must be from its neighbours' to be odd in this job: much further than nine of
/// ten points are from their second nearest height, and not next to nothing where most are equal.
double FindLeast(const Survey& survey, const std::vector<Comparison>& comparisons) {
    constexpr double kUsualTimes = 30.0;
    constexpr double kSpreadPart = 0.1;
    std::vector<double> numbers;
    numbers.reserve(comparisons.size());
    for (const Comparison& comparison : comparisons) {
        numbers.push_back(comparison.alone);
    }
    const auto ninth = numbers.begin() + static_cast<std::ptrdiff_t>((numbers.size() - 1) * 9 / 10);
    std::nth_element(numbers.begin(), ninth, numbers.end());
    const double usual = *ninth;
    std::transform(
        comparisons.begin(), comparisons.end(), numbers.begin(),
        [&](const Comparison& comparison) { return survey.points[comparison.point].height; });
    const double middle = Median(numbers);
    std::transform(numbers.begin(), numbers.end(), numbers.begin(),
                   [middle](double height) { return std::fabs(height - middle); });
    return std::max(kUsualTimes * usual, kSpreadPart * Median(numbers));
}

}  // namespace

void FindHeights(const Survey& survey, const SamePlaces& places, Findings& findings,
                 const std::function<void()>& looked) {
    // Six times what the median distance from the median says of a normal distribution.
    constexpr double kSpreadTimes = 6.0 * 1.4826;
    const std::vector<Comparison> comparisons = CompareAll(survey, places, looked);
    if (comparisons.empty()) {
        return;
    }
    const double least = FindLeast(survey, comparisons);
    std::vector<Comparison> odd;
    std::copy_if(comparisons.begin(), comparisons.end(), std::back_inserter(odd),
                 [&](const Comparison& comparison) {
                     return comparison.alone > least &&
                            comparison.off > kSpreadTimes * comparison.spread;
                 });
    std::stable_sort(odd.begin(), odd.end(),
                     [](const Comparison& a, const Comparison& b) { return a.alone > b.alone; });
    for (const Comparison& comparison : odd) {
        const SurveyedPoint& point = survey.points[comparison.point];
        findings.push_back(survey.Find(
            Oddity::Height,
            fmt::format("{} has the height {}; the points around it have {} to {}",
                        Survey::Name(point), FormatNumber(point.height, 3),
                        FormatNumber(comparison.low, 3), FormatNumber(comparison.high, 3)),
            {comparison.point}));
    }
}

}  // namespace cqsurvey::exchange
