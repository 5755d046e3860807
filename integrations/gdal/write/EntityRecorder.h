#pragma once

#include <ogr_geometry.h>

#include "gdal/Curve.h"
#include "gdal/SharedJob.h"
#include "gdal/write/DrawingPen.h"
#include "gdal/write/FeatureFields.h"
#include "gdal/write/RecordingReport.h"

namespace cqsurvey::gdal {

/// Records what is drawn: polylines, circles, texts, bitmaps. All operations return the entity's
/// handle, and throw RecordFailure and CqSurveyException.
class EntityRecorder {
 public:
    EntityRecorder(SharedJob& job, RecordingReport& report, DrawingPen& pen)
        : m_job(job), m_report(report), m_pen(pen) {}

    CqHandle RecordPolyline(const OGRCurve& curve, const FeatureFields& fields,
                            const CString& layer);
    CqHandle RecordCircle(const CircleShape& circle, const FeatureFields& fields,
                          const CString& layer);
    CqHandle RecordText(const OGRPoint& point, const FeatureFields& fields, const CString& layer);
    CqHandle RecordBitmap(const OGRPoint& point, const FeatureFields& fields, const CString& layer);

    /// Whether the feature says what a text reads, in its style or in its field.
    [[nodiscard]] bool HasText(const FeatureFields& fields) const;

 private:
    [[nodiscard]] double MapScale() const;

    SharedJob& m_job;
    RecordingReport& m_report;
    DrawingPen& m_pen;
};

}  // namespace cqsurvey::gdal
