#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "cqjob/points/PointDetails.h"

namespace cqsurvey::cqjob {

/// A column of a table of points, which the command line names by a word.
struct PointColumn {
    const char* word;
    const char* heading;
    bool right;  ///< aligned to the right, as numbers are
    std::string (*cell)(const PointDetails& point, int decimals);

    /// Null when there is no such column.
    [[nodiscard]] static const PointColumn* Find(std::string_view word);
    [[nodiscard]] static std::vector<std::string> WordList();
    /// The words in a list for people.
    [[nodiscard]] static std::string Words();
};

}  // namespace cqsurvey::cqjob
