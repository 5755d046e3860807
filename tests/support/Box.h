#pragma once

#include <algorithm>
#include <limits>

namespace cqsurvey {

/// A rectangle that grows with the points given to it. What is not a number does not
/// change it.
struct Box {
    double minX = std::numeric_limits<double>::max();
    double minY = std::numeric_limits<double>::max();
    double maxX = -std::numeric_limits<double>::max();
    double maxY = -std::numeric_limits<double>::max();

    void Add(double x, double y) {
        minX = std::min(minX, x);
        minY = std::min(minY, y);
        maxX = std::max(maxX, x);
        maxY = std::max(maxY, y);
    }
};

}  // namespace cqsurvey
