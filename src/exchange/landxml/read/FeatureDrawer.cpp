#include "exchange/landxml/read/FeatureDrawer.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "cqsurvey/Limits.h"
#include "cqsurvey/Text.h"
#include "exchange/drawing/Parcels.h"
#include "exchange/landxml/Names.h"

namespace cqsurvey::exchange::landxml {

namespace {

constexpr std::string_view kUnknownPoint = "it names a point that the file does not have";
constexpr std::string_view kNoPlace = "it has neither coordinates nor the name of a point";

bool IsSamePlace(const TiedVertex& a, const TiedVertex& b) {
    constexpr double kSame = 1e-6;
    if (a.entity != 0 && a.entity == b.entity) {
        return true;
    }
    return std::hypot(b.vertex.at.x - a.vertex.at.x, b.vertex.at.y - a.vertex.at.y) <= kSame &&
           (!a.vertex.hasHeight || !b.vertex.hasHeight ||
            std::fabs(b.vertex.at.z - a.vertex.at.z) <= kSame);
}

/// Turns the path round: bulges belong to the vertex before them.
void Reverse(std::vector<TiedVertex>& path) {
    std::reverse(path.begin(), path.end());
    for (std::size_t i = 0; i + 1 < path.size(); ++i) {
        path[i].vertex.bulge = -path[i + 1].vertex.bulge;
    }
    path.back().vertex.bulge = 0.0;
}

/// Finds the points of a Chain. When one is not known, it returns false and takes none.
bool ResolveNames(Segment& segment, PlaceTable& places) {
    const std::size_t before = segment.between.size();
    std::string_view names = segment.names;
    for (std::string_view name = TakeWord(names); !name.empty(); name = TakeWord(names)) {
        Place place;
        place.ref = name;
        if (!places.Resolve(place)) {
            segment.between.resize(before);
            return false;
        }
        segment.between.push_back({{place.at, 0.0, place.hasHeight}, place.entity});
    }
    segment.names.clear();
    return true;
}

double NumberOf(const Extras& extras, std::string_view key, double fallback) {
    const std::string_view text = extras.Get(key);
    const std::optional<double> number = text.empty() ? std::nullopt : ReadNumber(text);
    return number.value_or(fallback);
}

}  // namespace

FeatureDrawer::FeatureDrawer(const LandXmlReadOptions& options, Drawing& drawing, LayerMap& layers,
                             DrawingReport& report, MemoryLimit& limit)
    : m_options(options), m_drawing(drawing), m_layers(layers), m_report(report), m_limit(limit) {}

bool FeatureDrawer::Resolve(Feature& feature, PlaceTable& places) {
    bool whole = true;
    const auto resolve = [&](std::optional<Place>& place) {
        if (place && !place->known && !place->ref.empty()) {
            whole = places.Resolve(*place) && whole;
        } else if (place && !place->ref.empty() && place->entity == 0) {
            Place named;
            named.ref = place->ref;
            if (places.Resolve(named)) {
                place->entity = named.entity;
            }
        }
    };
    resolve(feature.location);
    for (Segment& segment : feature.segments) {
        resolve(segment.start);
        resolve(segment.end);
        resolve(segment.center);
        whole = ResolveNames(segment, places) && whole;
    }
    return whole;
}

Style FeatureDrawer::StyleOf(const Feature& feature) {
    Style style;
    style.layer = m_layers.Use(feature.layer).name;
    style.color = static_cast<int>(
        std::clamp<std::int64_t>(feature.extras.GetWhole("COLOR", limits::kByLayer),
                                 limits::kLowestColor, limits::kHighestColor));
    style.line = static_cast<int>(std::clamp<std::int64_t>(
        feature.extras.GetWhole("LINE", limits::kByLayer), 0, limits::kHighestLine));
    return style;
}

void FeatureDrawer::Draw(Feature& feature) {
    const DrawingOutcome outcome = DrawFeature(feature);
    m_limit.GiveBack(std::exchange(m_taken, 0));
    m_report.Count(feature.kind, m_layers.Use(feature.layer).shown, outcome, false, feature.line);
}

DrawingOutcome FeatureDrawer::DrawFeature(Feature& feature) {
    m_path.clear();
    m_drawn = 0;
    m_refused = false;
    m_east = m_north = 0.0;
    m_vertices = 0;
    const std::string_view kind = feature.extras.Get(kKindKey);
    if (kind == kCircleKind && feature.segments.size() == 2) {
        return DrawCircle(feature);
    }
    if (kind == kTextKind) {
        return DrawText(feature);
    }
    const std::string& shown = m_layers.Use(feature.layer).shown;
    for (Segment& segment : feature.segments) {
        const auto isMissing = [](const std::optional<Place>& place) {
            return place && !place->known;
        };
        const Place* unknown = isMissing(segment.start)    ? &*segment.start
                               : isMissing(segment.end)    ? &*segment.end
                               : isMissing(segment.center) ? &*segment.center
                                                           : nullptr;
        if (!segment.names.empty() && segment.fault.empty()) {
            segment.fault = kUnknownPoint;
        } else if (unknown != nullptr && segment.fault.empty()) {
            segment.fault = unknown->ref.empty() ? kNoPlace : kUnknownPoint;
        }
        const std::size_t vertices = segment.between.size() + 2;
        Take(vertices);
        const DrawingOutcome outcome = MakePath(segment, m_options.tolerance, m_piece);
        Take(m_piece.size() - std::min(m_piece.size(), vertices));
        segment.between = {};
        m_report.Count(segment.kind, shown, outcome, false, segment.line);
        Add(feature, m_piece);
    }
    Flush(feature);
    const bool titled = WriteTitle(feature);
    if (m_drawn == 0) {
        return m_refused ? LeftOut(kNotFinite)
               : titled  ? Converted("text with its name")
                         : LeftOut("it has no line");
    }
    return m_drawn == 1 ? Taken(titled ? "polyline, and a text with its name" : "polyline")
                        : Converted(titled ? "several polylines, and a text with its name"
                                           : "several polylines");
}

void FeatureDrawer::Take(std::size_t vertices) {
    // A vertex stands in the path, in what is made of that, and as an object in the job's list.
    constexpr std::size_t kVertex = 256;
    m_limit.Take(vertices * kVertex);
    m_taken += vertices * kVertex;
}

/// Joins a segment's path to the one before it, or begins a new polyline.
void FeatureDrawer::Add(const Feature& feature, std::vector<TiedVertex>& piece) {
    if (piece.empty()) {
        return;
    }
    for (const TiedVertex& vertex : piece) {
        m_east += vertex.vertex.at.x;
        m_north += vertex.vertex.at.y;
        ++m_vertices;
    }
    if (!m_path.empty()) {
        // A segment may be written from its end to its start.
        if (IsSamePlace(m_path.back(), piece.back()) &&
            !IsSamePlace(m_path.back(), piece.front())) {
            Reverse(piece);
        } else if (m_path.size() == 2 && !IsSamePlace(m_path.back(), piece.front()) &&
                   (IsSamePlace(m_path.front(), piece.front()) ||
                    IsSamePlace(m_path.front(), piece.back()))) {
            Reverse(m_path);
            if (!IsSamePlace(m_path.back(), piece.front())) {
                Reverse(piece);
            }
        }
        if (IsSamePlace(m_path.back(), piece.front())) {
            const CqHandle entity = m_path.back().entity;
            m_path.pop_back();
            piece.front().entity = piece.front().entity == 0 ? entity : piece.front().entity;
        } else {
            Flush(feature);
        }
    }
    if (m_path.empty()) {
        m_path.swap(piece);
    } else {
        m_path.insert(m_path.end(), piece.begin(), piece.end());
    }
}

void FeatureDrawer::Flush(const Feature& feature) {
    if (m_path.size() < 2) {
        m_path.clear();
        return;
    }
    // A closed line ends exactly where it began. What we wrote is exact anyhow.
    if (m_path.size() > 2 && feature.extras.Get(kLayerKey).empty() &&
        IsSamePlace(m_path.front(), m_path.back()) &&
        m_path.front().vertex.hasHeight == m_path.back().vertex.hasHeight) {
        m_path.back().vertex.at = m_path.front().vertex.at;
    }
    std::vector<PathVertex> path;
    std::vector<CqHandle> ties;
    path.reserve(m_path.size());
    ties.reserve(m_path.size());
    for (const TiedVertex& vertex : m_path) {
        path.push_back(vertex.vertex);
        ties.push_back(vertex.entity);
    }
    path.back().bulge = 0.0;
    if (!m_drawing.Polyline(StyleOf(feature), path, feature.extras, ties)) {
        m_refused = true;
        m_path.clear();
        return;
    }
    ++m_drawn;
    m_path.clear();
}

DrawingOutcome FeatureDrawer::DrawCircle(const Feature& feature) {
    const std::string& shown = m_layers.Use(feature.layer).shown;
    for (const Segment& segment : feature.segments) {
        m_report.Count(segment.kind, shown, Taken("part of a circle"), false, segment.line);
    }
    const std::optional<Place>& center = feature.segments.front().center;
    if (!center || !center->known) {
        return LeftOut("the circle has no centre");
    }
    Extras extras = feature.extras;
    extras.Set("HEIGHT", center->hasHeight ? "" : "NONE");
    const double radius = NumberOf(feature.extras, kRadiusKey, 0.0) * m_report.scale;
    return m_drawing.Circle(StyleOf(feature), center->at, radius, extras) ? Taken("circle")
                                                                          : LeftOut(kNotFinite);
}

DrawingOutcome FeatureDrawer::DrawText(const Feature& feature) {
    if (!feature.location || !feature.location->known) {
        return LeftOut("the text has no place");
    }
    Extras extras = feature.extras;
    extras.Set("HEIGHT", feature.location->hasHeight ? "" : "NONE");
    DrawnText text;
    text.at = feature.location->at;
    text.text = FromUtf8(feature.extras.Get(kTextKey));
    text.style = FromUtf8(feature.extras.Get(kStyleKey));
    text.height = NumberOf(feature.extras, kTextHeightKey, 1.0) * m_report.scale;
    text.rotation = NumberOf(feature.extras, kRotationKey, 0.0);
    return m_drawing.Text(StyleOf(feature), text, extras) ? Taken("text") : LeftOut(kNotFinite);
}

bool FeatureDrawer::WriteTitle(const Feature& feature) {
    if (feature.title.empty()) {
        return false;
    }
    if (feature.location && feature.location->known) {
        return DrawParcelName(m_drawing, m_layers, feature.title, feature.location->at,
                              feature.location->hasHeight, m_options.jobUnit);
    }
    const auto count = static_cast<double>(m_vertices);
    return m_vertices > 0 &&
           DrawParcelName(m_drawing, m_layers, feature.title,
                          {m_east / count, m_north / count, 0.0}, false, m_options.jobUnit);
}

}  // namespace cqsurvey::exchange::landxml
