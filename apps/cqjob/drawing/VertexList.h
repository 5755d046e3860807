#pragma once

#include <cqsurvey/cqsurvey.h>

#include <string>
#include <vector>

#include "cqjob/drawing/PlaceArgument.h"

namespace cqsurvey::cqjob {

/// A vertex as a command line gives it.
struct LineVertex {
    Place place;
    double bulge = 0.0;  ///< of the segment behind it
};

/// Reads the vertices of a line: places, and behind each the shape of the segment to the next one,
/// unless that is straight: "bulge=0.4", or "through=PLACE" for the arc through a third place.
/// Throws UsageError when the words make no line, Failure when an arc cannot be made, and as
/// ReadPlace.
[[nodiscard]] std::vector<LineVertex> ReadVertices(const CqSurveyDB& db, const std::string& job,
                                                   const std::vector<std::string>& words);

/// The number in "bulge=0.4". Throws UsageError when it is none.
[[nodiscard]] double ReadBulge(const std::string& text);

/// The bulge of the arc from p to q through r. Throws Failure with the job's path when there is
/// none, since two of the places are one or r lies in line outside of p and q.
[[nodiscard]] double FindBulge(const std::string& job, const Place& p, const Place& q,
                               const Place& r);

/// What the help of a command says about the vertices of a line.
inline constexpr const char* kVertexArguments =
    "Behind a place, bulge=B makes an arc of the segment to the next one: B is the tangent of a\n"
    "quarter of its angle, above 0 for an arc that turns counter-clockwise. through=PLACE makes\n"
    "it the arc through a third place.\n";

}  // namespace cqsurvey::cqjob
