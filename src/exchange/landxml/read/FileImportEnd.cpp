#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "cqsurvey/CodePage.h"
#include "cqsurvey/Text.h"
#include "cqsurvey/exchange/ExchangeError.h"
#include "exchange/drawing/Names.h"
#include "exchange/landxml/Names.h"
#include "exchange/landxml/read/FileImport.h"
#include "text/Printable.h"

// What happens when an element ends: its text is known then, and all that was in it.

namespace cqsurvey::exchange::landxml {

namespace {

constexpr std::string_view kNoNumbers = "its text is not two or three numbers";
constexpr std::string_view kNotNumbers = "its text is not a list of places";

}  // namespace

void FileImport::Text(std::string_view piece) {
    constexpr std::size_t kMost = 64U << 20U;
    if (m_open.empty() || !m_open.back().takesText) {
        return;
    }
    if (m_text.size() + piece.size() > kMost) {
        m_parser.Fail(m_parser.GetLine(), "the text of an element goes on for too long");
    }
    m_text += piece;
}

void FileImport::End(std::string_view name) {
    const Role role = m_open.back().role;
    m_open.pop_back();
    switch (role) {
        case Role::Points:
            RecordPoints(m_collections.back());
            m_collections.pop_back();
            break;
        case Role::Point:
            EndPoint();
            break;
        case Role::Place:
            EndPlace(name);
            break;
        case Role::List:
        case Role::SurfacePoint:
            EndList(name);
            break;
        case Role::Segment:
            if (m_segment.kind == "Chain") {
                EndList(name);
            }
            m_features.back().segments.push_back(std::move(m_segment));
            break;
        case Role::Ours:
            EndOurs();
            break;
        case Role::Feature:
            EndFeature();
            break;
        case Role::SurfaceLine:
            EndSurfaceLine(name);
            break;
        case Role::Root:
        case Role::Part:
        case Role::LeftOut:
        case Role::Project:
        case Role::Features:
        case Role::Geometry:
        case Role::Surface:
        case Role::Property:
            break;
    }
}

void FileImport::EndPoint() {
    if (const auto place = ReadPlace(m_text, m_report.scale)) {
        const std::string ref = std::move(m_point.place.ref);
        m_point.place = *place;
        m_point.place.ref = ref;
    } else {
        m_point.sound =
            m_text.find_first_not_of(" \t\r\n") == std::string::npos && !m_point.place.ref.empty();
    }
    m_collections.back().points.push_back(std::move(m_point));
}

void FileImport::EndPlace(std::string_view name) {
    if (const auto place = ReadPlace(m_text, m_report.scale)) {
        const std::string ref = std::move(m_place.ref);
        m_place = *place;
        m_place.ref = ref;
    }
    if (m_open.back().role == Role::Feature) {
        if (name != "Start") {
            m_features.back().location = m_place;
        }
    } else if (name == "Start") {
        m_segment.start = m_place;
    } else if (name == "End") {
        m_segment.end = m_place;
    } else if (name == "Center") {
        m_segment.center = m_place;
    }
}

void FileImport::EndList(std::string_view name) {
    if (name == "Chain") {
        // The names of its points, between blanks.
        std::string_view rest = m_text;
        while (true) {
            const std::size_t begin = rest.find_first_not_of(" \t\r\n");
            if (begin == std::string_view::npos) {
                break;
            }
            rest.remove_prefix(begin);
            const std::string_view word = rest.substr(0, rest.find_first_of(" \t\r\n"));
            rest.remove_prefix(word.size());
            Place place;
            place.ref = word;
            m_segment.between.push_back(std::move(place));
        }
        return;
    }
    if (name == "P") {
        const auto place = ReadPlace(m_text, m_report.scale);
        m_point.place = place.value_or(Place());
        m_point.sound = place.has_value();
        Collection collection;
        collection.extras.Set(std::string(kLayerKey), m_surface);
        m_report.Count("P", m_surface, RecordPoint(m_point, collection), false, m_point.line);
        return;
    }
    const auto places = ReadPlaces(m_text, name == "PntList2D" ? 2 : 3, m_report.scale);
    const Role around = m_open.back().role;
    if (around == Role::Segment) {
        m_segment.fault = places ? std::string_view() : kNotNumbers;
        m_segment.between = places.value_or(std::vector<Place>());
    } else if (around == Role::SurfaceLine) {
        Segment segment;
        segment.kind = name;
        segment.line = m_surfaceLine.line;
        segment.fault = places ? std::string_view() : kNotNumbers;
        segment.between = places.value_or(std::vector<Place>());
        segment.kind = "IrregularLine";
        m_surfaceLine.segments.push_back(std::move(segment));
    } else if (places) {
        Collection collection;
        collection.extras.Set(std::string(kLayerKey), m_surface);
        std::uint64_t recorded = 0;
        for (const Place& place : *places) {
            m_point.place = place;
            recorded += RecordPoint(m_point, collection).fate == DrawingFate::LeftOut ? 0 : 1;
        }
        m_report.Count(name, m_surface,
                       recorded == places->size() ? Taken("survey points")
                                                  : Converted("survey points, but not all"),
                       false, m_point.line);
    } else {
        m_report.Count(name, m_surface, LeftOut(kNotNumbers), false, m_point.line);
    }
}

void FileImport::EndOurs() {
    const Role around = m_open.back().role;
    if (around == Role::Points) {
        m_collections.back().extras = std::move(m_ours);
    } else if (around == Role::Feature) {
        Feature& feature = m_features.back();
        if (const std::string_view layer = m_ours.Get(kLayerKey); !layer.empty()) {
            feature.layer = layer;
        }
        feature.extras = std::move(m_ours);
    } else if (around == Role::Project && !m_ours.Get(kLayerKey).empty()) {
        constexpr int kInk = 7;
        m_layers.Define(
            m_ours.Get(kLayerKey),
            static_cast<int>(std::clamp<std::int64_t>(m_ours.GetWhole("COLOR", kInk), -255, 255)),
            static_cast<int>(std::clamp<std::int64_t>(m_ours.GetWhole("LINE"), 0, 0xFFFF)));
    }
    m_ours = Extras();
}

void FileImport::EndFeature() {
    Feature feature = std::move(m_features.back());
    m_features.pop_back();
    const bool whole = FeatureDrawer::Resolve(feature, m_places);
    if (whole && m_waiting.empty()) {
        m_drawer.Draw(feature);
    } else {
        m_waiting.push_back(std::move(feature));
    }
}

void FileImport::EndSurfaceLine(std::string_view name) {
    for (Segment& segment : m_surfaceLine.segments) {
        if (m_hasContour) {
            for (Place& place : segment.between) {
                place.at.z = m_contour;
                place.hasHeight = true;
            }
        }
        if (name == "Boundary" && segment.between.size() > 2) {
            segment.between.push_back(segment.between.front());
        }
    }
    m_drawer.Draw(m_surfaceLine);
}

DrawingOutcome FileImport::RecordPoint(WaitingPoint& point, const Collection& collection) {
    if (!point.sound) {
        return LeftOut(kNoNumbers);
    }
    point.details.noHeight = !point.place.hasHeight;
    point.details.group = collection.name;
    Style style;
    const std::string_view layer = collection.extras.Get(kLayerKey);
    style.layer = layer.empty() ? m_drawing.GetLayerBefore() : m_layers.Use(layer).name;
    style.color = static_cast<int>(
        std::clamp<std::int64_t>(collection.extras.GetWhole("COLOR", 256), -256, 256));
    return m_points.Add(style, point.place.at, point.details, collection.extras);
}

void FileImport::RecordPoints(Collection& collection) {
    for (WaitingPoint& point : collection.points) {
        if (point.sound && !point.place.known && !m_places.Resolve(point.place)) {
            m_places.Add(point.name, point.place);
            m_late.emplace_back(Collection{collection.name, {}, collection.extras},
                                std::move(point));
            continue;
        }
        const DrawingOutcome outcome = RecordPoint(point, collection);
        m_report.Count("CgPoint", ToUtf8(m_drawing.GetJob().GetCurrentLayer()), outcome, false,
                       point.line);
        if (point.sound && !point.name.empty()) {
            point.place.entity = m_points.GetLastEntity();
            point.place.ref.clear();
            m_places.Add(point.name, point.place);
        }
    }
}

void FileImport::RecordLatePoints() {
    for (auto& [collection, point] : m_late) {
        const DrawingOutcome outcome = m_places.Resolve(point.place)
                                           ? RecordPoint(point, collection)
                                           : LeftOut(
                                                 "it names a point that the file does not have, "
                                                 "or itself");
        m_report.Count("CgPoint", ToUtf8(m_drawing.GetJob().GetCurrentLayer()), outcome, false,
                       point.line);
    }
}

void FileImport::Finish() {
    const std::string encoding = Upper(m_parser.GetEncoding());
    constexpr int kUtf16 = 1200;
    constexpr int kLatin = 28591;
    m_report.codePage = encoding == "UTF-8"        ? CqCodePage::kUtf8
                        : encoding == "UTF-16"     ? kUtf16
                        : encoding == "ISO-8859-1" ? kLatin
                                                   : 0;
    if (m_report.codePage == 0) {
        m_report.Note(fmt::format("the file's encoding is {}", Printable(encoding)));
    }
    m_meaning.Decide();
    RecordLatePoints();
    for (Feature& feature : m_waiting) {
        static_cast<void>(FeatureDrawer::Resolve(feature, m_places));
        m_drawer.Draw(feature);
    }
    for (const auto& [element, attributes] : m_lost) {
        std::string list;
        for (const std::string& attribute : attributes) {
            list += (list.empty() ? "" : ", ") + attribute;
        }
        m_report.Note(fmt::format("of {}, these attributes were left out: {}", Printable(element),
                                  Printable(list)));
    }
    m_drawing.Finish();
}

}  // namespace cqsurvey::exchange::landxml
