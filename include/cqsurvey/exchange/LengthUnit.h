#pragma once

#include <optional>
#include <string_view>

#include "cqsurvey/exchange/Export.h"

namespace cqsurvey::exchange {

/// A unit of length that survey files use. The numbers are those of $INSUNITS in a DXF file.
enum class LengthUnit : int {
    Inch = 1,
    Foot = 2,
    Millimetre = 4,
    Centimetre = 5,
    Metre = 6,
    Kilometre = 7,
    UsSurveyFoot = 21
};

/// How many metres one unit is.
[[nodiscard]] CQSURVEY_EXCHANGE_API double MetresOf(LengthUnit unit);

/// "metre", "US survey foot".
[[nodiscard]] CQSURVEY_EXCHANGE_API const char* UnitWord(LengthUnit unit);

/// The unit of a word of an option: m, mm, cm, km, ft, us-ft, in; nothing for another word.
[[nodiscard]] CQSURVEY_EXCHANGE_API std::optional<LengthUnit> UnitOfWord(std::string_view word);

/// The unit of a number of $INSUNITS; nothing for one that is not in the list above.
[[nodiscard]] CQSURVEY_EXCHANGE_API std::optional<LengthUnit> UnitOfNumber(int number);

}  // namespace cqsurvey::exchange
