#pragma once

#include <string_view>

#include "cqsurvey/exchange/DrawingReport.h"

namespace cqsurvey::exchange {

[[nodiscard]] inline DrawingOutcome Taken(std::string_view what) {
    return {DrawingFate::Taken, what, 0.0};
}
[[nodiscard]] inline DrawingOutcome Converted(std::string_view what, double deviation = 0.0) {
    return {DrawingFate::Converted, what, deviation};
}
[[nodiscard]] inline DrawingOutcome LeftOut(std::string_view why) {
    return {DrawingFate::LeftOut, why, 0.0};
}

inline constexpr std::string_view kNotFinite = "its numbers are not finite, or too large";
inline constexpr std::string_view kNothingLikeIt = "a job has nothing like it";

}  // namespace cqsurvey::exchange
