#pragma once

#include <set>

#include "gdal/SharedJob.h"
#include "gdal/write/DrawingPen.h"
#include "gdal/write/FeatureChange.h"
#include "gdal/write/FeatureFields.h"
#include "gdal/write/RecordingReport.h"

namespace cqsurvey::gdal {

/// Records and changes the tables of a job: layers, groups, settings, and the background image.
///
/// What a job with a drawing says itself stays when it is recorded: its settings, how its layers
/// look, its background image. A change is asked for by itself, and so made.
///
/// All operations throw RecordFailure, the changes with nothing changed.
class TableRecorder {
 public:
    TableRecorder(SharedJob& job, RecordingReport& report, DrawingPen& pen);

    // These return the handle.
    CqHandle RecordLayer(const FeatureFields& fields);
    CqHandle RecordGroup(const FeatureFields& fields);
    CqHandle RecordSetting(const FeatureFields& fields);
    CqHandle RecordBackground(const FeatureFields& fields);

    void EditLayer(CqHandle handle, const FeatureChange& change);
    void EditGroup(CqHandle handle, const FeatureChange& change);

 private:
    void StoreBackground(const FeatureFields& fields);

    SharedJob& m_job;
    RecordingReport& m_report;
    DrawingPen& m_pen;
    bool m_drawn;
    std::set<CString> m_ownLayers;
};

}  // namespace cqsurvey::gdal
