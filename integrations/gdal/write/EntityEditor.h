#pragma once

#include "gdal/SharedJob.h"
#include "gdal/write/DrawingPen.h"
#include "gdal/write/FeatureChange.h"

namespace cqsurvey::gdal {

/// Changes texts, circles and bitmaps. All operations throw RecordFailure, with nothing changed,
/// when the entity cannot become what the feature says.
class EntityEditor {
 public:
    EntityEditor(SharedJob& job, DrawingPen& pen) : m_job(job), m_pen(pen) {}

    void EditText(CqHandle handle, const FeatureChange& change);
    void EditCircle(CqHandle handle, const FeatureChange& change);
    void EditBitmap(CqHandle handle, const FeatureChange& change);

 private:
    SharedJob& m_job;
    DrawingPen& m_pen;
};

/// Reads the entity that a change is about. Throws RecordFailure when it is not there.
[[nodiscard]] CqCadEntityPtr RequireEntity(const CqSurveyDB& db, CqHandle handle, EntType type,
                                           const FeatureChange& change);

}  // namespace cqsurvey::gdal
