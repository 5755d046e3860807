#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "cqsurvey/exchange/ColumnOrder.h"

namespace cqsurvey::exchange {

/// Lower case, without accents, blanks and punctuation: "Elevação " and "ELEVACAO" are one
/// heading.
[[nodiscard]] std::string NormaliseHeading(std::string_view heading);

/// The column that a usual heading names in English, Spanish, Portuguese or German, or one that
/// FieldTextRow writes.
[[nodiscard]] std::optional<Column> RecogniseHeading(std::string_view heading);

/// The northing for a heading that means a latitude, the easting for one that means a longitude.
[[nodiscard]] std::optional<Column> RecogniseDegrees(std::string_view heading);

}  // namespace cqsurvey::exchange
