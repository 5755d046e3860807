#pragma once

#include <cqsurvey/cqsurvey.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace cqsurvey::cqjob {

/// The word by which the command line names a kind of entity; "?" for an unknown kind.
[[nodiscard]] std::string_view KindWord(EntType kind);

/// The kind that a word names.
[[nodiscard]] std::optional<EntType> FindKind(std::string_view word);

/// Every word, in the order of the kinds.
[[nodiscard]] std::vector<std::string> KindWords();

}  // namespace cqsurvey::cqjob
