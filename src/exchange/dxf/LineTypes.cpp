#include "exchange/dxf/LineTypes.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "exchange/drawing/Names.h"
#include "text/NumberText.h"

namespace cqsurvey::exchange::dxf {

namespace {

constexpr std::array<std::string_view, 8> kNames{"CONTINUOUS", "DASHED",   "DOT",     "DASHDOT",
                                                 "DIVIDE",     "DASHEDX2", "DASHED2", "CENTER"};
constexpr std::string_view kNumbered = "LINE_";

}  // namespace

std::string LineName(int line) {
    return line >= 0 && static_cast<std::size_t>(line) < kNames.size()
               ? std::string(kNames.at(static_cast<std::size_t>(line)))
               : fmt::format("{}{}", kNumbered, line);
}

std::span<const double> LinePattern(int line) {
    static constexpr std::array kDashed{0.5, -0.25};
    static constexpr std::array kDot{0.0, -0.25};
    static constexpr std::array kDashDot{0.5, -0.25, 0.0, -0.25};
    static constexpr std::array kDivide{0.5, -0.25, 0.0, -0.25, 0.0, -0.25};
    static constexpr std::array kLong{1.0, -0.5};
    static constexpr std::array kShort{0.25, -0.125};
    static constexpr std::array kCenter{1.25, -0.25, 0.25, -0.25};
    switch (line) {
        case 1:
            return kDashed;
        case 2:
            return kDot;
        case 3:
            return kDashDot;
        case 4:
            return kDivide;
        case 5:
            return kLong;
        case 6:
            return kShort;
        case 7:
            return kCenter;
        default:
            return {};
    }
}

std::optional<int> LineOfName(std::string_view name) {
    const std::string upper = Upper(name);
    for (std::size_t i = 0; i < kNames.size(); ++i) {
        if (upper == kNames.at(i)) {
            return static_cast<int>(i);
        }
    }
    if (upper.starts_with(kNumbered)) {
        return ParseWholeNumber(std::string_view(upper).substr(kNumbered.size()));
    }
    return std::nullopt;
}

int LineOfPattern(const std::vector<double>& pattern) {
    double longest = 0.0;
    double shortest = HUGE_VAL;
    std::size_t dashes = 0;
    std::size_t dots = 0;
    for (const double part : pattern) {
        if (part == 0.0) {
            ++dots;
        } else if (part > 0.0) {
            ++dashes;
            longest = std::max(longest, part);
            shortest = std::min(shortest, part);
        }
    }
    if (dashes + dots == 0 || pattern.size() < 2) {
        return 0;
    }
    if (dots > 0) {
        return dashes == 0 ? 2 : dots > dashes ? 4 : 3;
    }
    return longest > 2 * shortest ? 7 : 1;
}

}  // namespace cqsurvey::exchange::dxf
