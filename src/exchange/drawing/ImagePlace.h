#pragma once

#include <array>
#include <optional>

#include "cqsurvey/CqSurveyDB.h"
#include "exchange/drawing/Vec3.h"

namespace cqsurvey::exchange {

/// Where a background image lies in the plan: its centre, its size, and its rotation in degrees
/// counter-clockwise.
///
/// A job keeps these numbers with three decimals, and CqSurveyDB::ReadBackgroundImageFile rounds
/// them to single precision, which is a quarter of a metre at a northing of 6,000,000. So they are
/// taken from the settings here.
struct ImagePlace {
    double east = 0.0;
    double north = 0.0;
    double width = 0.0;
    double height = 0.0;
    double rotation = 0.0;

    /// The place that the job keeps, whether it has an image or not. Nothing when its settings are
    /// no finite numbers, or the width is not positive. A height of 0 stays.
    [[nodiscard]] static std::optional<ImagePlace> Of(CqSurveyDB& db);

    /// The corners: lower left, lower right, upper right, upper left, at height 0.
    [[nodiscard]] std::array<Vec3, 4> GetCorners() const;
};

}  // namespace cqsurvey::exchange
