#pragma once

#include <string_view>

namespace cqsurvey::exchange {

/// True when the name `a` comes before `b`: numbers in names count by their values, so P2 comes
/// before P10.
[[nodiscard]] bool ComesBefore(std::string_view a, std::string_view b);

}  // namespace cqsurvey::exchange
