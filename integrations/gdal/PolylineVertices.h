#pragma once

#include <vector>

#include <cqsurvey/cqsurvey.h>

#include "gdal/Curve.h"

namespace cqsurvey::gdal {

/// A vertex of a polyline in the job.
struct JobVertex {
    CqHandle handle = 0;
    ArcVertex shape;
    CqHandle symbol = 0;  ///< the survey-point entity to which it is tied; 0 for none
};

/// The vertices of a polyline in their order; none when there is no such polyline.
[[nodiscard]] std::vector<JobVertex> ReadVertices(const CqSurveyDB& db, CqHandle polyline);

/// Their shapes alone.
[[nodiscard]] std::vector<ArcVertex> ShapeOf(const std::vector<JobVertex>& vertices);

}  // namespace cqsurvey::gdal
