#pragma once

#include <optional>
#include <string_view>

#include "cqsurvey/Export.h"

namespace cqsurvey {

/// A unit of length in which a job may be measured.
enum class CqLengthUnit { Metre, InternationalFoot, UsSurveyFoot };

/// The length of the unit in metres: 1, 0.3048 or 1200/3937.
[[nodiscard]] CQSURVEY_API double GetMetres(CqLengthUnit unit);

/// The word for the unit in settings and options: "m", "ft" or "us-ft".
[[nodiscard]] CQSURVEY_API const char* GetUnitWord(CqLengthUnit unit);

/// The name for people: "metre", "international foot" or "US survey foot".
[[nodiscard]] CQSURVEY_API const char* GetUnitName(CqLengthUnit unit);

/// The unit of a word, in any letter case; nothing for any other text.
[[nodiscard]] CQSURVEY_API std::optional<CqLengthUnit> FindLengthUnit(std::string_view word);

}  // namespace cqsurvey
