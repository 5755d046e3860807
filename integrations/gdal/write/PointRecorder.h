#pragma once

#include "gdal/SharedJob.h"
#include "gdal/write/DrawingPen.h"
#include "gdal/write/FeatureChange.h"
#include "gdal/write/FeatureFields.h"
#include "gdal/write/RecordingReport.h"

namespace cqsurvey::gdal {

/// What to do with a point whose name the job already has.
enum class Duplicates {
    Rename,  ///< it is recorded under the first free name of P1_2, P1_3 ...
    Skip,    ///< it is left out
    Refuse   ///< the feature fails
};

/// Records and changes survey points.
class PointRecorder {
 public:
    PointRecorder(SharedJob& job, RecordingReport& report, DrawingPen& pen, Duplicates duplicates)
        : m_job(job), m_report(report), m_pen(pen), m_duplicates(duplicates) {}

    /// Returns the point's handle; that of the point in the job when this one was left out. Throws
    /// RecordFailure and CqSurveyException.
    CqHandle Record(const OGRPoint& point, const FeatureFields& fields, const CString& layer);

    /// Throws RecordFailure, with nothing changed, when the point cannot become what the feature
    /// says, such as when another one has its name.
    void Edit(CqHandle handle, const FeatureChange& change);

 private:
    [[nodiscard]] CString NameAfter(CqHandle handle, const CString& before,
                                    const FeatureChange& change);
    void Describe(CqHandle handle, const CString& text);
    [[nodiscard]] CString FreeName(const CString& name) const;
    /// Makes sure that there is the group that the feature names, and returns its name.
    [[nodiscard]] CString GroupOf(const FeatureFields& fields);
    [[nodiscard]] CString DescriptionOf(const FeatureFields& fields, int& code) const;

    SharedJob& m_job;
    RecordingReport& m_report;
    DrawingPen& m_pen;
    Duplicates m_duplicates;
};

}  // namespace cqsurvey::gdal
