#pragma once

#include <cqsurvey/cqsurvey.h>

#include <array>
#include <string>

#include "cqjob/JsonWriter.h"

namespace cqsurvey::cqjob {

/// Everything about a point, ready to be shown.
struct PointDetails {
    CqHandle handle = 0;
    CqCoordRec record;
    std::array<double, 3> coords{};  ///< easting, northing, height
    std::string group;               ///< "#" and the number when there is no such group
    std::string description;

    /// Completes `record`, which was read from point `handle` of `db`, with what else the job knows
    /// about the point.
    PointDetails(CqSurveyDB& db, CqHandle handle, CqCoordRec record);

    /// When the point was recorded, such as "2026-05-04T08:15:00Z".
    [[nodiscard]] std::string Time() const;

    /// Writes the point as a JSON object.
    void WriteJson(JsonWriter& json) const;
};

}  // namespace cqsurvey::cqjob
