#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <vector>

#include "cqsurvey/Types.h"

namespace cqsurvey::bench {

/// What is recorded of one point.
struct SurveyPoint {
    CString name;
    std::array<double, 3> coords;
    int code;
};

/// The first `count` points of a survey that is the same in every run, with the names that field
/// files have: mostly plain numbers that count up, in between runs with a prefix for what is
/// surveyed, control points, and points taken twice with a letter behind. The span stays valid.
[[nodiscard]] std::span<const SurveyPoint> Survey(std::size_t count);

/// More points of that kind, none with a name of Survey, in a random order of names.
[[nodiscard]] std::vector<SurveyPoint> LatePoints(std::size_t count);

/// The numbers 0 to `size` - 1, `count` of them drawn at random, the same in every run.
[[nodiscard]] std::vector<std::size_t> RandomPlaces(std::size_t count, std::size_t size);

}  // namespace cqsurvey::bench
