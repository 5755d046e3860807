#pragma once

#include "cqsurvey/CodePage.h"

namespace cqsurvey::exchange {

/// The code page of a text file by its number. Throws OptionError for a page that the system does
/// not know, and for one whose bytes below 0x80 are not ASCII: in its bytes, separators and digits
/// could not be found.
[[nodiscard]] CqCodePage RequireNarrowPage(int number);

}  // namespace cqsurvey::exchange
