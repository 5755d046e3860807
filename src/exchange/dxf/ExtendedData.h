#pragma once

#include "exchange/drawing/Extras.h"
#include "exchange/dxf/Record.h"

namespace cqsurvey::exchange::dxf {

/// The extended data of this library in a record: texts such as "CODE=12".
[[nodiscard]] Extras ExtrasOf(const Record& record);

}  // namespace cqsurvey::exchange::dxf
