#pragma once

#include "cqsurvey/exchange/Export.h"

namespace cqsurvey::exchange {

/// What separates the fields of a line. Blank: any run of blanks and tabs.
enum class Separator : char { Comma = ',', Semicolon = ';', Tab = '\t', Blank = ' ' };

/// "comma", "semicolon", "tab" or "blank".
[[nodiscard]] CQSURVEY_EXCHANGE_API const char* SeparatorWord(Separator separator);

}  // namespace cqsurvey::exchange
