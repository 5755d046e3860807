#pragma once

#include <optional>
#include <string_view>

#include "cqsurvey/Export.h"

namespace cqsurvey {

/// How the bearings of a job are written. A bearing is counted clockwise from grid north.
enum class CqAngleForm { DegreesMinutesSeconds, Degrees, Gon };

/// The word for the form in settings: "dms", "deg" or "gon".
[[nodiscard]] CQSURVEY_API const char* GetAngleWord(CqAngleForm form);

/// The form of a word, in any letter case; nothing for any other text.
[[nodiscard]] CQSURVEY_API std::optional<CqAngleForm> FindAngleForm(std::string_view word);

}  // namespace cqsurvey
