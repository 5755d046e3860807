#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "cqsurvey/CqLengthUnit.h"

namespace cqsurvey::plan {

/// "1 point", "2 points".
[[nodiscard]] std::string Count(std::size_t number, std::string_view noun);

/// What stands behind a length: the mark of the unit after a blank, nothing without a unit.
[[nodiscard]] std::string UnitMark(std::optional<CqLengthUnit> unit);

/// UTF-8 text in quotation marks for a message of one line, shortened to about 60 bytes. Control
/// characters become \n, \t, \x1b and the like.
[[nodiscard]] std::string Quoted(std::string_view text);

}  // namespace cqsurvey::plan
