#pragma once

#include <cqsurvey/cqsurvey.h>

#include <string>

namespace cqsurvey::cqjob {

/// What the help of a command says about naming points.
inline constexpr const char* kPointArgument =
    "A point is given by its name or by # and its record number, which the JSON of points calls\n"
    "handle: \"#17\". The # is special to a shell, so it needs the quotation marks.\n";

/// The point that `text` names, by its name or by "#" and its record number; 0 when there is no
/// such point. Throws Failure with the job's path when the text is the name of one point and the
/// number of another, and UsageError when it is empty or not UTF-8.
[[nodiscard]] CqHandle FindPoint(const CqSurveyDB& db, const std::string& job,
                                 const std::string& text);

/// As FindPoint, but throws Failure also when there is no such point.
[[nodiscard]] CqHandle RequirePoint(const CqSurveyDB& db, const std::string& job,
                                    const std::string& text);

/// The record of a point that the job has.
[[nodiscard]] CqCoordRec ReadPoint(const CqSurveyDB& db, CqHandle handle);

}  // namespace cqsurvey::cqjob
