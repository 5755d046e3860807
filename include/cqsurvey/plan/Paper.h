#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "cqsurvey/plan/Export.h"

namespace cqsurvey::plan {

/// A size on paper, in millimetres.
struct PaperSize {
    double width = 0.0;
    double height = 0.0;
    bool operator==(const PaperSize&) const = default;
};

/// The upright paper of that name, in any letter case: A0 to A6, Letter, Legal, Tabloid. Returns
/// nothing for any other name.
[[nodiscard]] CQSURVEY_PLAN_API std::optional<PaperSize> FindPaper(std::string_view name);

/// The names that FindPaper knows, with commas between them, for a message.
[[nodiscard]] CQSURVEY_PLAN_API std::string PaperNames();

}  // namespace cqsurvey::plan
