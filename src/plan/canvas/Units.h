#pragma once

namespace cqsurvey::plan {

inline constexpr double kMillimetresInInch = 25.4;

/// A millimetre in points of 1/72 inch, the unit of cairo's pages.
inline constexpr double kMillimetre = 72.0 / kMillimetresInInch;

}  // namespace cqsurvey::plan
