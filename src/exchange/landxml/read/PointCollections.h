#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "exchange/drawing/LayerMap.h"
#include "exchange/drawing/MemoryLimit.h"
#include "exchange/drawing/Outcomes.h"
#include "exchange/drawing/SurveyPoints.h"
#include "exchange/landxml/read/Places.h"
#include "exchange/xml/XmlParser.h"

namespace cqsurvey::exchange::landxml {

/// Makes survey points of the points of a file. A collection, which may hold others, is recorded
/// when it ends: what only a job has is at its end. A point that names one which comes later waits
/// until the end of the file. Counts each CgPoint.
class PointCollections {
 public:
    /// `places` learns where each point is. Both count for the limit.
    PointCollections(Drawing& drawing, LayerMap& layers, SurveyPoints& points, PlaceTable& places,
                     DrawingReport& report, MemoryLimit& limit);

    void Begin(std::string_view name);
    void BeginPoint(const XmlElement& element);
    /// `text` is what stands in the point.
    void EndPoint(std::string_view text);
    /// What LandXmlWriter keeps for the points of the collection that is open.
    void SetExtras(Extras extras);
    void End();

    /// Records a point without a name on a layer.
    DrawingOutcome Record(const Place& place, std::string_view layer);

    /// Records the points that waited, at the end of the file.
    void Finish();

 private:
    struct Point {
        std::string name;
        std::string description;
        Place place;
        std::uint64_t line = 0;
        std::int32_t code = 0;
        bool sound = true;
    };
    struct Collection {
        CString name;
        std::deque<Point> points;
        Extras extras;
    };

    [[nodiscard]] static std::size_t BytesOf(const Point& point);
    DrawingOutcome Record(const Point& point, const CString& group, const Extras& extras);
    void Count(const Point& point, const DrawingOutcome& outcome);

    Drawing& m_drawing;
    LayerMap& m_layers;
    SurveyPoints& m_points;
    PlaceTable& m_places;
    DrawingReport& m_report;
    MemoryLimit& m_limit;
    std::vector<Collection> m_open;
    Point m_point;
    std::vector<Collection> m_late;  // with their points that wait
};

}  // namespace cqsurvey::exchange::landxml
