#pragma once

#include <cqsurvey/cqsurvey.h>

#include <optional>

#include "cqjob/JsonWriter.h"

namespace cqsurvey::cqjob {

/// A box around places.
struct Extents {
    CVector min;
    CVector max;
};

/// The box around everything that is drawn; nothing when nothing is.
[[nodiscard]] std::optional<Extents> FindExtents(CqSurveyDB& db);

/// Writes min_easting, min_northing, max_easting and max_northing as members of an object.
void WriteMembers(JsonWriter& json, const Extents& extents);

}  // namespace cqsurvey::cqjob
