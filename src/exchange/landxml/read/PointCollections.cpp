#include "exchange/landxml/read/PointCollections.h"

#include <algorithm>
#include <utility>

#include "cqsurvey/Limits.h"
#include "cqsurvey/Text.h"
#include "exchange/landxml/Names.h"
#include "text/NumberText.h"

namespace cqsurvey::exchange::landxml {

PointCollections::PointCollections(Drawing& drawing, LayerMap& layers, SurveyPoints& points,
                                   PlaceTable& places, DrawingReport& report, MemoryLimit& limit)
    : m_drawing(drawing),
      m_layers(layers),
      m_points(points),
      m_places(places),
      m_report(report),
      m_limit(limit) {}

std::size_t PointCollections::BytesOf(const Point& point) {
    return sizeof point + point.name.size() + point.description.size() + point.place.ref.size();
}

void PointCollections::Begin(std::string_view name) {
    m_open.push_back({FromUtf8(name), {}, {}});
}

void PointCollections::BeginPoint(const XmlElement& element) {
    m_point = Point();
    m_point.line = element.line;
    m_point.name = element.Get("name");
    m_point.place.ref = element.Get("pntRef");
    const std::string_view code = element.Get("code");
    const std::string_view description = element.Get("desc");
    const auto number = ParseWholeNumber(code);
    m_point.code = number.value_or(0);
    m_point.description = number ? "" : code;
    if (!m_point.description.empty() && !description.empty()) {
        m_point.description += ' ';
    }
    m_point.description += description;
}

void PointCollections::SetExtras(Extras extras) {
    m_limit.Take(extras.GetBytes());
    m_limit.GiveBack(m_open.back().extras.GetBytes());
    m_open.back().extras = std::move(extras);
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
    m_limit.Take(BytesOf(m_point));
    m_open.back().points.push_back(std::move(m_point));
}

DrawingOutcome PointCollections::Record(const Point& point, const CString& group,
                                        const Extras& extras) {
    if (!point.sound) {
        return LeftOut("its text is not two or three numbers");
    }
    PointDetails details;
    details.name = FromUtf8(point.name);
    details.code = point.code;
    details.description = FromUtf8(point.description);
    details.noHeight = !point.place.hasHeight;
    details.group = group;
    Style style;
    const std::string_view layer = extras.Get(kLayerKey);
    style.layer = layer.empty() ? m_drawing.GetLayerBefore() : m_layers.Use(layer).name;
    style.color =
        static_cast<int>(std::clamp<std::int64_t>(extras.GetWhole("COLOR", limits::kHighestColor),
                                                  limits::kLowestColor, limits::kHighestColor));
    return m_points.Add(style, point.place.at, details, extras);
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
    std::deque<Point> late;
    for (; !collection.points.empty(); collection.points.pop_front()) {
        Point& point = collection.points.front();
        if (point.sound && !point.place.known && !m_places.Resolve(point.place)) {
            m_limit.Take(m_places.Add(point.name, point.place));
            late.push_back(std::move(point));
            continue;
        }
        m_limit.GiveBack(BytesOf(point));
        Count(point, Record(point, collection.name, collection.extras));
        if (point.sound && !point.name.empty()) {
            point.place.entity = m_points.GetLastEntity();
            point.place.ref.clear();
            m_limit.Take(m_places.Add(point.name, point.place));
        }
    }
    if (late.empty()) {
        m_limit.GiveBack(collection.extras.GetBytes());
    } else {
        // With the first piece of its list.
        constexpr std::size_t kCollection = 1024;
        m_limit.Take(kCollection);
        collection.points = std::move(late);
        m_late.push_back(std::move(collection));
    }
    m_open.pop_back();
}

void PointCollections::Finish() {
    for (Collection& late : m_late) {
        for (Point& point : late.points) {
            Count(point, m_places.Resolve(point.place)
                             ? Record(point, late.name, late.extras)
                             : LeftOut("it names a point that the file does not have, or itself"));
        }
    }
}

}  // namespace cqsurvey::exchange::landxml
