#pragma once

#include <cstddef>
#include <filesystem>
#include <span>

#include "Survey.h"
#include "cqsurvey/cqsurvey.h"

namespace cqsurvey::bench {

/// A closed job with points of the survey and a file of the rival with the same.
struct Originals {
    std::filesystem::path job;
    std::filesystem::path bare;
};

/// Those of the first `size` points, made once; to be copied by whoever changes them.
[[nodiscard]] const Originals& OriginalsOf(std::size_t size);

CqHandle Record(CqSurveyDB& db, const SurveyPoint& point);

/// Records the points as one batch.
void RecordAll(CqSurveyDB& db, std::span<const SurveyPoint> points);

/// Draws points, polylines with arcs, texts and circles as one batch, until the drawing has `size`
/// entities: half of them points, a third vertices.
void Draw(CqSurveyDB& db, std::size_t size);

/// Throws std::runtime_error: a benchmark that does not do its work measures nothing.
void Require(bool done);

}  // namespace cqsurvey::bench
