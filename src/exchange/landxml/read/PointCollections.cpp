#include "exchange/landxml/read/PointCollections.h"

#include <algorithm>
#include <utility>

#include "cqsurvey/Limits.h"
#include "cqsurvey/Text.h"
#include "exchange/landxml/Names.h"
#include "text/NumberText.h"

namespace cqsurvey::exchange::landxml {

PointCollections::PointCollections(Drawing& drawing, LayerMap& layers, SurveyPoints& points,
                                   PlaceTable& places, DrawingReport& report)
    : m_drawing(drawing), m_layers(layers), m_points(points), m_places(places), m_report(report) {}

void PointCollections::Begin(std::string_view name) {
    m_open.push_back({FromUtf8(name), {}, {}});
}

void PointCollections::BeginPoint(const XmlElement& element) {
    m_point = Point();
    m_point.line = element.line;
    m_point.name = element.Get("name");
    m_point.place.ref = element.Get("pntRef");
    m_point.details.name = FromUtf8(m_point.name);
    m_point.details.description = FromUtf8(element.Get("desc"));
    const std::string_view code = element.Get("code");
    if (const auto number = ParseWholeNumber(code)) {
        m_point.details.code = *number;
    } else if (!code.empty()) {
        CString& description = m_point.details.description;
        description = FromUtf8(code) + (description.empty() ? u"" : u" ") + description;
    }
}

void PointCollections::EndPoint(std::string_view text) {
    if (const auto place = ReadPlace(text, m_report.scale)) {
        const std::string ref = std::move(m_point.place.ref);
        m_point.place = *place;
        m_point.place.ref = ref;
    } else {
        m_point.sound = text.find_first_not_of(" \t\r\n") == std::string_view::npos &&
                        !m_point.place.ref.empty();
    }
    m_open.back().points.push_back(std::move(m_point));
}

DrawingOutcome PointCollections::Record(Point& point, const CString& group, const Extras& extras) {
    if (!point.sound) {
        return LeftOut("its text is not two or three numbers");
    }
    point.details.noHeight = !point.place.hasHeight;
    point.details.group = group;
    Style style;
    const std::string_view layer = extras.Get(kLayerKey);
    style.layer = layer.empty() ? m_drawing.GetLayerBefore() : m_layers.Use(layer).name;
    style.color =
        static_cast<int>(std::clamp<std::int64_t>(extras.GetWhole("COLOR", limits::kHighestColor),
                                                  limits::kLowestColor, limits::kHighestColor));
    return m_points.Add(style, point.place.at, point.details, extras);
}

DrawingOutcome PointCollections::Record(const Place& place, std::string_view layer) {
    Point point;
    point.place = place;
    point.sound = place.known;
    Extras extras;
    extras.Set(std::string(kLayerKey), layer);
    return Record(point, {}, extras);
}

void PointCollections::Count(const Point& point, const DrawingOutcome& outcome) {
    m_report.Count("CgPoint", ToUtf8(m_drawing.GetJob().GetCurrentLayer()), outcome, false,
                   point.line);
}

void PointCollections::End() {
    Collection& collection = m_open.back();
    for (Point& point : collection.points) {
        if (point.sound && !point.place.known && !m_places.Resolve(point.place)) {
            m_places.Add(point.name, point.place);
            m_late.push_back({std::move(point), collection.name, collection.extras});
            continue;
        }
        Count(point, Record(point, collection.name, collection.extras));
        if (point.sound && !point.name.empty()) {
            point.place.entity = m_points.GetLastEntity();
            point.place.ref.clear();
            m_places.Add(point.name, point.place);
        }
    }
    m_open.pop_back();
}

void PointCollections::Finish() {
    for (LatePoint& late : m_late) {
        Count(late.point, m_places.Resolve(late.point.place)
                              ? Record(late.point, late.group, late.extras)
                              : LeftOut("it names a point that the file does not have, or itself"));
    }
}

}  // namespace cqsurvey::exchange::landxml
