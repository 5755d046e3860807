#pragma once

#include <string_view>

namespace cqsurvey::plan {

/// True when `name` is `pattern`, where each "*" stands for any characters. The letter case of A to
/// Z does not matter.
[[nodiscard]] bool FitsPattern(std::string_view pattern, std::string_view name);

}  // namespace cqsurvey::plan
