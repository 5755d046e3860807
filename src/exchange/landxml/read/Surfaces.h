#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "exchange/landxml/read/FeatureDrawer.h"
#include "exchange/landxml/read/PointCollections.h"
#include "exchange/xml/XmlParser.h"

namespace cqsurvey::exchange::landxml {

/// Makes survey points and polylines of the points and lines of surfaces, on a layer that is called
/// by the surface. Counts each of them.
class Surfaces {
 public:
    Surfaces(PointCollections& points, FeatureDrawer& drawer, DrawingReport& report,
             MemoryLimit& limit)
        : m_points(points), m_drawer(drawer), m_report(report), m_limit(limit) {}

    void Begin(const XmlElement& surface);

    /// A point, or a list of points, whose line a report names.
    void BeginPoints(const XmlElement& points) { m_pointLine = points.line; }
    /// `text` has the coordinates of a point, or of points, two or three each as `name` says.
    void EndPoints(std::string_view name, std::string_view text);

    /// A breakline, a boundary, or a contour, which has one height.
    void BeginLine(const XmlElement& line);
    void AddPlaces(std::string_view name, std::string_view text);
    void EndLine(std::string_view name);

 private:
    PointCollections& m_points;
    FeatureDrawer& m_drawer;
    DrawingReport& m_report;
    MemoryLimit& m_limit;
    std::string m_name;
    std::uint64_t m_pointLine = 0;
    Feature m_line;
    double m_contour = 0.0;
    bool m_hasContour = false;
};

}  // namespace cqsurvey::exchange::landxml
