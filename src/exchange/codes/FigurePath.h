#pragma once

#include <cqsurvey/CVector.h>

#include <cstddef>
#include <limits>
#include <optional>
#include <vector>

#include "exchange/codes/FieldCodes.h"

namespace cqsurvey::exchange {

/// The vertex of a path, and how the segment behind it is curved: the bulge of a polyline.
struct FigureVertex {
    static constexpr std::size_t kFree = std::numeric_limits<std::size_t>::max();

    CVector place;
    double height = 0.0;
    double bulge = 0.0;
    std::size_t point = kFree;  ///< the index of the point that it lies on, or kFree
};

/// Straight segments and arcs. A closed path ends with a copy of its first vertex.
struct FigurePath {
    std::vector<FigureVertex> vertices;
    bool closed = false;
};

/// A path beside another one: lines at the distance, arcs about the same centres, each to where it
/// meets the next. Corners that would reach farther than ten times the distance are cut off. Its
/// vertices are free. Nothing when it would fold back, since the path bends more sharply inside
/// than the distance allows.
[[nodiscard]] std::optional<FigurePath> FindParallel(const FigurePath& path,
                                                     const Parallel& parallel);

/// The index of a vertex whose segment crosses another one, when the closed path crosses itself.
/// Nothing as well when finding it out would take too long.
[[nodiscard]] std::optional<std::size_t> FindCrossing(const FigurePath& path);

}  // namespace cqsurvey::exchange
