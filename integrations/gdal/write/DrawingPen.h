#pragma once

#include <cstddef>

#include "gdal/SharedJob.h"
#include "gdal/write/FeatureFields.h"
#include "gdal/write/RecordingReport.h"

namespace cqsurvey::gdal {

/// Chooses the layer and the colour of the entities that are recorded next.
class DrawingPen {
 public:
    DrawingPen(SharedJob& job, RecordingReport& report) : m_job(job), m_report(report) {}

    /// The feature's own layer and colour come first; without them the layer `otherwise`, and the
    /// colour of the style or of the layer. A layer that the job does not have is added.
    void Choose(const FeatureFields& fields, const CString& otherwise);

    /// The text cut to `length` code units as the job would, which is counted.
    [[nodiscard]] CString Cut(const CString& text, std::size_t length, const char* what);

 private:
    SharedJob& m_job;
    RecordingReport& m_report;
};

}  // namespace cqsurvey::gdal
