#pragma once

#include "tables/CqRecordTable.h"
#include "tables/JobSchema.h"

namespace cqsurvey {

/// The points' attributes. Their coordinates are those of their survey-point entities; point and
/// entity name each other.
class CqPointTable : public CqRecordTable<PointLayout> {};

}  // namespace cqsurvey
