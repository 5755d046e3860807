#include "exchange/inspect/Survey.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "text/Printable.h"

namespace cqsurvey::exchange {

bool Survey::HasPlace(const SurveyedPoint& point) {
    constexpr double kFarthest = 1e12;
    return std::fabs(point.easting) <= kFarthest && std::fabs(point.northing) <= kFarthest;
}

std::string Survey::Name(const SurveyedPoint& point) {
    return point.name.empty() ? fmt::format("#{}", point.handle)
                              : fmt::format("{} (#{})", Printable(point.name), point.handle);
}

std::string Survey::List(const std::vector<std::uint32_t>& indices) const {
    constexpr std::size_t kShown = 5;
    std::string list;
    for (std::size_t i = 0; i < std::min(kShown, indices.size()); ++i) {
        list += (i == 0 ? "" : ", ") + Name(points[indices[i]]);
    }
    return indices.size() <= kShown ? list
                                    : fmt::format("{} and {} more", list, indices.size() - kShown);
}

InspectionFinding Survey::Find(Oddity kind, std::string text,
                               const std::vector<std::uint32_t>& indices) const {
    InspectionFinding finding{kind, std::move(text), {}};
    finding.points.reserve(indices.size());
    for (const std::uint32_t index : indices) {
        finding.points.push_back({points[index].handle, points[index].name});
    }
    return finding;
}

}  // namespace cqsurvey::exchange
