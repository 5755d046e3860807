#pragma once

#include <vector>

#include "gdal/SharedJob.h"
#include "gdal/write/DrawingPen.h"
#include "gdal/write/EntityEditor.h"
#include "gdal/write/EntityRecorder.h"
#include "gdal/write/FeatureChange.h"
#include "gdal/write/NewHandles.h"
#include "gdal/write/Place.h"
#include "gdal/write/PointRecorder.h"
#include "gdal/write/PolylineEditor.h"
#include "gdal/write/RecordKind.h"
#include "gdal/write/RecordingReport.h"
#include "gdal/write/TableRecorder.h"

namespace cqsurvey::gdal {

/// A record that a feature has become, or one of several.
struct RecordedPart {
    RecordKind kind = RecordKind::Points;
    CqHandle handle = 0;
};

/// Records, changes and deletes features in a job that is open for writing.
///
/// A job gives its own handles. A feature may come with another id, to which features of other
/// layers refer: a vertex names its polyline and its point. So the recorder remembers which handle
/// each id has become.
///
/// All operations throw RecordFailure when the feature is refused, before they have changed
/// anything, and CqSurveyException when the job fails.
class FeatureRecorder {
 public:
    FeatureRecorder(SharedJob& job, Duplicates duplicates);
    FeatureRecorder(const FeatureRecorder&) = delete;
    FeatureRecorder& operator=(const FeatureRecorder&) = delete;

    /// A feature of one of the job's own layers. Only a line of several parts becomes several
    /// records.
    std::vector<RecordedPart> Record(RecordKind kind, const OGRFeature& feature,
                                     const FieldMap& map);

    /// What the points of a foreign layer become.
    enum class Points {
        Auto,  ///< survey points, but texts where there is no name and a text or a label
        Survey,
        Texts
    };
    /// Everything that the geometry of a foreign feature consists of.
    std::vector<RecordedPart> RecordForeign(const OGRFeature& feature, const FieldMap& map,
                                            const CString& layer, Points points);

    /// Why records of a kind cannot be changed; null when they can.
    [[nodiscard]] static const char* WhyNotEdit(RecordKind kind);
    void Edit(RecordKind kind, CqHandle handle, const FeatureChange& change);
    /// Counts a field that a record, read again after a change, does not have as it was written.
    void CountNotKept(const FeatureChange& change, const OGRFeature& read);

    /// Why records of a kind cannot be deleted; null when they can.
    [[nodiscard]] static const char* WhyNotErase(RecordKind kind);
    /// Returns false when there is no such record.
    bool Erase(RecordKind kind, CqHandle handle);

    // What is remembered follows the transactions of the dataset.
    void BeginTransaction();
    void KeepTransaction();
    void UndoTransaction();

 private:
    CqHandle RecordVertex(const FeatureFields& fields);
    std::vector<RecordedPart> RecordPolyline(const FeatureFields& fields);
    [[nodiscard]] const std::vector<JobVertex>& VerticesOf(CqHandle polyline);
    /// Refuses what one of several parts would be refused for.
    void CheckParts(const SingleGeometries& singles, const FeatureFields& fields, bool texts) const;

    SharedJob& m_job;
    RecordingReport m_report;
    DrawingPen m_pen;
    PointRecorder m_points;
    EntityRecorder m_entities;
    EntityEditor m_editor;
    PolylineEditor m_polylines;
    TableRecorder m_tables;
    Duplicates m_duplicates;
    NewHandles m_pointOf;
    NewHandles m_polylineOf;
    CqHandle m_verticesOf = 0;
    std::vector<JobVertex> m_vertices;
};

}  // namespace cqsurvey::gdal
