#include "exchange/landxml/read/Features.h"

#include <cstddef>
#include <optional>
#include <string>
#include <utility>

#include "exchange/drawing/Parcels.h"
#include "exchange/landxml/Names.h"
#include "text/NumberText.h"

namespace cqsurvey::exchange::landxml {

namespace {

std::optional<double> Scaled(std::optional<double> length, double scale) {
    return length ? std::optional(*length * scale) : std::nullopt;
}

/// What a segment takes beside its list.
std::size_t BytesOf(const Segment& segment) {
    // The list of segments doubles when it is full.
    std::size_t bytes = 2 * sizeof segment + segment.spiral.size() + segment.names.size();
    for (const auto* place : {&segment.start, &segment.end, &segment.center}) {
        bytes += *place ? (*place)->ref.size() : 0;
    }
    std::string_view names = segment.names;
    while (!TakeWord(names).empty()) {
        bytes += sizeof(TiedVertex);
    }
    return bytes;
}

}  // namespace

void Features::Begin(const XmlElement& element, std::string_view collection) {
    Feature feature;
    feature.kind = element.name;
    feature.line = element.line;
    if (element.name == "PlanFeature") {
        m_lost.Look(element, {"name", "desc", "code"});
        const std::string_view code = element.Get("code");
        if (const auto number = ParseWholeNumber(code)) {
            feature.extras.SetWhole("CODE", *number);
        } else {
            feature.layer = code;
        }
        for (const std::string_view name :
             {element.Get("desc"), element.Get("name"), collection, kPlanFeatures}) {
            feature.layer = feature.layer.empty() ? name : std::string_view(feature.layer);
        }
    } else if (element.name == "Parcel") {
        m_lost.Look(element, {"name"});
        feature.layer = kParcels;
        feature.title = element.Get("name");
    } else {
        m_lost.Look(element, {});
        feature.layer = kAlignments;
    }
    const std::size_t bytes = sizeof feature + feature.layer.size() + feature.title.size();
    m_open.push_back(std::move(feature));
    Take(bytes);
}

void Features::Take(std::size_t bytes) {
    m_limit.Take(bytes);
    m_open.back().bytes += bytes;
}

void Features::SetExtras(Extras extras) {
    Feature& feature = m_open.back();
    if (const std::string_view layer = extras.Get(kLayerKey); !layer.empty()) {
        feature.layer = layer;
    }
    feature.extras = std::move(extras);
    Take(feature.extras.GetBytes());
}

void Features::End() {
    Feature feature = std::move(m_open.back());
    m_open.pop_back();
    const bool whole = FeatureDrawer::Resolve(feature, m_places);
    if (whole && m_waiting.empty()) {
        m_drawer.Draw(feature);
        m_limit.GiveBack(feature.bytes);
    } else {
        m_waiting.push_back(std::move(feature));
    }
}

void Features::BeginSegment(const XmlElement& element) {
    const double scale = m_report.scale;
    m_segment = Segment();
    m_segment.kind = element.name;
    m_segment.line = element.line;
    if (const std::string_view rotation = element.Get("rot"); !rotation.empty()) {
        m_segment.counterClockwise = rotation == "ccw";
    }
    m_segment.radius = Scaled(ReadNumber(element.Get("radius")), scale);
    m_segment.radiusStart = Scaled(ReadNumber(element.Get("radiusStart")), scale);
    m_segment.radiusEnd = Scaled(ReadNumber(element.Get("radiusEnd")), scale);
    m_segment.length = Scaled(ReadNumber(element.Get("length")), scale);
    m_segment.spiral = element.Get("spiType");
}

void Features::EndSegment(std::string_view text) {
    if (m_segment.kind == "Chain") {
        m_segment.names = text;
    }
    Take(BytesOf(m_segment));
    Feature& feature = m_open.back();
    feature.bytes += m_segment.bytes;
    feature.segments.push_back(std::move(m_segment));
}

void Features::BeginPlace(const XmlElement& element) {
    m_place = Place();
    m_place.ref = element.Get("pntRef");
}

void Features::ReadPlaceText(std::string_view text) {
    if (const auto place = ReadPlace(text, m_report.scale)) {
        const std::string ref = std::move(m_place.ref);
        m_place = *place;
        m_place.ref = ref;
    }
}

void Features::EndPlaceOfSegment(std::string_view name, std::string_view text) {
    ReadPlaceText(text);
    if (name == "Start") {
        m_segment.start = m_place;
    } else if (name == "End") {
        m_segment.end = m_place;
    } else if (name == "Center") {
        m_segment.center = m_place;
    }
}

void Features::EndPlaceOfFeature(std::string_view name, std::string_view text) {
    ReadPlaceText(text);
    if (name != "Start") {
        m_open.back().location = m_place;
    }
}

void Features::AddPlaces(std::string_view name, std::string_view text) {
    ReadList(m_segment, name, text, m_report.scale, m_limit);
}

void Features::Finish() {
    for (Feature& feature : m_waiting) {
        static_cast<void>(FeatureDrawer::Resolve(feature, m_places));
        m_drawer.Draw(feature);
        m_limit.GiveBack(feature.bytes);
        feature = Feature();
    }
}

}  // namespace cqsurvey::exchange::landxml
