#pragma once

#include <cstddef>
#include <vector>

#include "gdal/PolylineVertices.h"
#include "gdal/SharedJob.h"
#include "gdal/write/DrawingPen.h"
#include "gdal/write/FeatureChange.h"

namespace cqsurvey::gdal {

/// Changes polylines and their vertices. All operations throw RecordFailure, with nothing changed,
/// when the polyline cannot become what the feature says.
///
/// The vertices of a new course are those of the old one that lie where they do, in the same order:
/// they keep their handles, their ties, and their bulges to the bit when nobody bent them. In
/// between, old vertices are moved as long as there are some, and then vertices are added or
/// deleted. A vertex that leaves its point is no longer tied to it.
class PolylineEditor {
 public:
    PolylineEditor(SharedJob& job, DrawingPen& pen) : m_job(job), m_pen(pen) {}

    void EditPolyline(CqHandle handle, const FeatureChange& change);
    void EditVertex(CqHandle handle, const FeatureChange& change);
    /// Deletes a vertex, but not one of the last two. Returns false when there is none.
    bool DeleteVertex(CqHandle handle);

 private:
    static constexpr std::size_t kNew = static_cast<std::size_t>(-1);
    struct Course {
        std::vector<ArcVertex> vertices;
        std::vector<std::size_t> from;  ///< which old vertex each is; kNew for none
    };
    /// Finds the old vertices in a course.
    static void Match(const std::vector<JobVertex>& before, Course& after);
    /// The course of the feature's curve, as it is recorded.
    [[nodiscard]] static Course CourseAfter(const std::vector<JobVertex>& before,
                                            const FeatureChange& change);
    void Follow(CqHandle polyline, const std::vector<JobVertex>& before, const Course& after);
    void Move(const JobVertex& before, const ArcVertex& after);
    void NoteBox(CqHandle polyline);

    SharedJob& m_job;
    DrawingPen& m_pen;
};

}  // namespace cqsurvey::gdal
