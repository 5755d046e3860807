#pragma once

#include <cqsurvey/cqsurvey.h>

#include <array>
#include <string>

namespace cqsurvey::cqjob {

/// What the help of a command says about naming places.
inline constexpr const char* kPlaceArgument =
    "A place is a point, by its name or by # and its record number, or an easting and a northing,\n"
    "with or without a height: 2000.5,5000 or 2000.5,5000,312.4. Before a place that begins with\n"
    "a minus, write -- once.\n";

/// A place in the drawing.
struct Place {
    std::array<double, 3> coords{};
    CqHandle point = 0;  ///< the survey-point entity that it is, or 0
};

/// The place that `text` names. A text of two or three numbers with commas between them is
/// coordinates, in which a height that is missing is not-a-number; any other one is a point. Throws
/// as RequirePoint.
[[nodiscard]] Place ReadPlace(const CqSurveyDB& db, const std::string& job,
                              const std::string& text);

/// The handle in a text like "17" or "#17". Throws UsageError for any other text.
[[nodiscard]] CqHandle ReadEntityHandle(const std::string& text);

/// Reads an entity of the job. Throws Failure when it is not there or of another type.
[[nodiscard]] CqCadEntityPtr RequireEntity(const CqSurveyDB& db, const std::string& job,
                                           CqHandle handle, EntType type);

}  // namespace cqsurvey::cqjob
