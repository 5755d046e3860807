#pragma once

#include <optional>

#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/Export.h"

namespace cqsurvey {

/// Where a background image lies: its centre and size in the job's unit of length, and its rotation
/// in degrees counter-clockwise. A height of 0 leaves the height to the shape of the picture.
struct CQSURVEY_API CqImagePlace {
    double east = 0.0;
    double north = 0.0;
    double width = 0.0;
    double height = 0.0;
    double rotation = 0.0;

    /// The place as the job keeps it, with three decimals, whether the job has an image or not.
    /// CqSurveyDB::ReadBackgroundImageFile rounds the same numbers to single precision, which is a
    /// quarter of a metre at a northing of 6,000,000. Nothing when a number in the settings cannot
    /// be read or is not finite.
    [[nodiscard]] static std::optional<CqImagePlace> Of(CqSurveyDB& db);
};

}  // namespace cqsurvey
