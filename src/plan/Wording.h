#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace cqsurvey::plan {

/// "1 point", "2 points".
[[nodiscard]] std::string Count(std::size_t number, std::string_view noun);

/// UTF-8 text in quotation marks for a message of one line, shortened to about 60 bytes. Control
/// characters become \n, \t, \x1b and the like.
[[nodiscard]] std::string Quoted(std::string_view text);

}  // namespace cqsurvey::plan
