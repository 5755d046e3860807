#pragma once

#include <algorithm>
#include <limits>

#include "cqsurvey/CVector.h"

namespace cqsurvey::plan {

/// A rectangle with sides along the axes, which belong to it. It is empty until something is added.
struct Box {
    double minX = std::numeric_limits<double>::infinity();
    double minY = std::numeric_limits<double>::infinity();
    double maxX = -std::numeric_limits<double>::infinity();
    double maxY = -std::numeric_limits<double>::infinity();

    [[nodiscard]] bool IsEmpty() const { return !(minX <= maxX && minY <= maxY); }

    /// 0 for an empty box.
    [[nodiscard]] double GetWidth() const { return IsEmpty() ? 0.0 : maxX - minX; }

    /// 0 for an empty box.
    [[nodiscard]] double GetHeight() const { return IsEmpty() ? 0.0 : maxY - minY; }

    void Add(const CVector& point) {
        minX = std::min(minX, point.GetX());
        minY = std::min(minY, point.GetY());
        maxX = std::max(maxX, point.GetX());
        maxY = std::max(maxY, point.GetY());
    }

    void Add(const Box& box) {
        minX = std::min(minX, box.minX);
        minY = std::min(minY, box.minY);
        maxX = std::max(maxX, box.maxX);
        maxY = std::max(maxY, box.maxY);
    }

    /// The box with all sides moved out by `margin`.
    [[nodiscard]] Box Grow(double margin) const {
        return {minX - margin, minY - margin, maxX + margin, maxY + margin};
    }

    /// True when the boxes have a point in common.
    [[nodiscard]] bool Meets(const Box& box) const {
        return minX <= box.maxX && box.minX <= maxX && minY <= box.maxY && box.minY <= maxY;
    }

    /// True when all of `box` lies in this one.
    [[nodiscard]] bool Holds(const Box& box) const {
        return minX <= box.minX && box.maxX <= maxX && minY <= box.minY && box.maxY <= maxY;
    }
};

}  // namespace cqsurvey::plan
