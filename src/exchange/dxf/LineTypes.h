#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace cqsurvey::exchange::dxf {

inline constexpr int kSolidLine = 0;

/// The name by which a file knows a job's line number. A number without a pattern of its own is
/// "LINE_" and the number.
[[nodiscard]] std::string LineName(int line);

/// The dashes (positive), gaps (negative) and dots (0) of a line number; empty for a solid line.
[[nodiscard]] std::span<const double> LinePattern(int line);

/// The line number that a name means by itself, in any letter case; nothing for another name.
[[nodiscard]] std::optional<int> LineOfName(std::string_view name);

/// The line number whose pattern looks most like this one.
[[nodiscard]] int LineOfPattern(const std::vector<double>& pattern);

}  // namespace cqsurvey::exchange::dxf
