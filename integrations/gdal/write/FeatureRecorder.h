#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <unordered_map>
#include <vector>

#include "gdal/SharedJob.h"
#include "gdal/write/DrawingPen.h"
#include "gdal/write/EntityRecorder.h"
#include "gdal/write/PointRecorder.h"
#include "gdal/write/RecordingReport.h"

namespace cqsurvey::gdal {

/// Records features in a job that is open for writing.
///
/// A job gives its own handles. A feature may come with another id, to which features of other
/// layers refer: a vertex names its polyline and its point. So the recorder remembers which handle
/// each id has become.
///
/// What a job with a drawing says itself stays: its settings, and how its layers look.
///
/// All operations return a handle, and throw RecordFailure when the feature cannot be recorded and
/// CqSurveyException when the job fails.
class FeatureRecorder {
 public:
    FeatureRecorder(SharedJob& job, Duplicates duplicates);
    FeatureRecorder(const FeatureRecorder&) = delete;
    FeatureRecorder& operator=(const FeatureRecorder&) = delete;

    // Features of the job's own layers.
    CqHandle RecordPoint(const OGRFeature& feature, const FieldMap& map);
    CqHandle RecordPolyline(const OGRFeature& feature, const FieldMap& map);
    CqHandle RecordCircle(const OGRFeature& feature, const FieldMap& map);
    CqHandle RecordText(const OGRFeature& feature, const FieldMap& map);
    CqHandle RecordBitmap(const OGRFeature& feature, const FieldMap& map);
    /// Gives a vertex that was recorded with its polyline its exact bulge, and ties it to its
    /// point.
    CqHandle RecordVertex(const OGRFeature& feature, const FieldMap& map);
    /// Adds a layer of the drawing, or changes how it looks.
    CqHandle RecordLayer(const OGRFeature& feature, const FieldMap& map);
    CqHandle RecordGroup(const OGRFeature& feature, const FieldMap& map);
    CqHandle RecordSetting(const OGRFeature& feature, const FieldMap& map);

    /// What the points of a foreign layer become.
    enum class Points {
        Auto,  ///< survey points, but texts where there is no name and a text or a label
        Survey,
        Texts
    };
    /// Everything that the geometry of a foreign feature consists of. Returns the first handle.
    CqHandle RecordForeign(const OGRFeature& feature, const FieldMap& map, const CString& layer,
                           Points points);

    /// Forgets which handles the ids have become, because steps of the job were undone.
    void Forget();

 private:
    [[nodiscard]] const std::vector<CqHandle>& VerticesOf(CqHandle polyline);

    SharedJob& m_job;
    RecordingReport m_report;
    DrawingPen m_pen;
    PointRecorder m_points;
    EntityRecorder m_entities;
    bool m_drawn;
    std::set<CString> m_ownLayers;
    std::unordered_map<GIntBig, CqHandle> m_pointOf;
    std::unordered_map<GIntBig, CqHandle> m_polylineOf;
    CqHandle m_verticesOf = 0;
    std::vector<CqHandle> m_vertices;
};

}  // namespace cqsurvey::gdal
