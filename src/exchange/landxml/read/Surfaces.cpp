#include "exchange/landxml/read/Surfaces.h"

#include <cstddef>
#include <optional>
#include <utility>

#include "exchange/landxml/Names.h"
#include "text/NumberText.h"

namespace cqsurvey::exchange::landxml {

void Surfaces::Begin(const XmlElement& surface) {
    m_name = surface.Get("name").empty() ? kSurfaces : surface.Get("name");
}

void Surfaces::EndPoints(std::string_view name, std::string_view text) {
    if (name == "P") {
        const Place place = ReadPlace(text, m_report.scale).value_or(Place());
        m_report.Count("P", m_name, m_points.Record(place, m_name), false, m_pointLine);
        return;
    }
    const int size = name == "PntList2D" ? 2 : 3;
    const std::optional<std::size_t> count = CountPlaces(text, size);
    if (!count) {
        m_report.Count(name, m_name, LeftOut(kNotPlaces), false, m_pointLine);
        return;
    }
    std::size_t recorded = 0;
    for (std::size_t i = 0; i < *count; ++i) {
        const DrawingOutcome outcome =
            m_points.Record(TakePlace(text, size, m_report.scale), m_name);
        recorded += outcome.fate == DrawingFate::LeftOut ? 0 : 1;
    }
    m_report.Count(
        name, m_name,
        recorded == *count ? Taken("survey points") : Converted("survey points, but not all"),
        false, m_pointLine);
}

void Surfaces::BeginLine(const XmlElement& line) {
    const auto elevation = ReadNumber(line.Get("elev"));
    m_hasContour = line.name == "Contour" && elevation.has_value();
    m_contour = elevation.value_or(0.0) * m_report.scale;
    m_line = Feature();
    m_line.kind = line.name;
    m_line.line = line.line;
    m_line.layer = m_name;
}

void Surfaces::AddPlaces(std::string_view name, std::string_view text) {
    Segment segment;
    segment.kind = "IrregularLine";
    segment.line = m_line.line;
    // The list of segments doubles when it is full.
    segment.bytes = 2 * sizeof segment;
    m_limit.Take(segment.bytes);
    ReadList(segment, name, text, m_report.scale, m_limit);
    m_line.bytes += segment.bytes;
    m_line.segments.push_back(std::move(segment));
}

void Surfaces::EndLine(std::string_view name) {
    for (Segment& segment : m_line.segments) {
        if (m_hasContour) {
            for (TiedVertex& tied : segment.between) {
                tied.vertex.at.z = m_contour;
                tied.vertex.hasHeight = true;
            }
        }
        if (name == "Boundary" && segment.between.size() > 2) {
            segment.between.push_back(segment.between.front());
        }
    }
    m_drawer.Draw(m_line);
    m_limit.GiveBack(m_line.bytes);
    m_line = Feature();
}

}  // namespace cqsurvey::exchange::landxml
