#include "exchange/landxml/read/FileImport.h"

#include <fmt/format.h>

#include <algorithm>
#include <initializer_list>
#include <utility>

#include "cqsurvey/CodePage.h"
#include "cqsurvey/Text.h"
#include "cqsurvey/exchange/ExchangeError.h"
#include "exchange/drawing/Names.h"
#include "exchange/drawing/Parcels.h"
#include "exchange/landxml/Names.h"
#include "text/NumberText.h"
#include "text/Printable.h"

namespace cqsurvey::exchange::landxml {

namespace {

constexpr std::string_view kNothingLikeIt = "a job has nothing like it";
constexpr std::string_view kNoSurfacePoints = "points of surfaces were not asked for";
constexpr std::string_view kNoSurfaceLines = "lines of surfaces were not asked for";

bool IsOneOf(std::string_view name, std::initializer_list<std::string_view> names) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

std::optional<double> Scaled(std::optional<double> length, double scale) {
    return length ? std::optional(*length * scale) : std::nullopt;
}

}  // namespace

FileImport::FileImport(TextSource& source, const LandXmlReadOptions& options, CqSurveyDB& db,
                       DrawingReport& report)
    : m_source(source),
      m_options(options),
      m_report(report),
      m_parser(source, *this),
      m_meaning(db, m_options, report),
      m_drawing(db, report),
      m_layers(
          db, [](std::string_view bytes) { return FromUtf8(bytes); }, report),
      m_points(m_drawing, report, options.duplicates, options.origin, options.group,
               options.jobName),
      m_drawer(m_options, m_drawing, m_layers, report),
      m_collections(m_drawing, m_layers, m_points, m_places, report),
      m_surfaces(m_collections, m_drawer, report) {}

void FileImport::Run() {
    m_parser.Run();
    Finish();
}

void FileImport::Begin(const XmlElement& element) {
    m_takesText = false;
    Open open = BeginInside(element);
    open.takesText = m_takesText;
    if (open.takesText) {
        m_text.clear();
    }
    m_open.push_back(open);
    ++m_elements;
    if (m_options.progress) {
        m_options.progress(m_elements, m_source.GetBytes(), m_source.GetSize());
    }
}

FileImport::Open FileImport::LeaveOut(const XmlElement& element, std::string_view reason) {
    m_report.Count(element.name, "", LeftOut(reason), false, element.line);
    return {Role::LeftOut, reason};
}

void FileImport::ReadRoot(const XmlElement& element) {
    if (element.name != "LandXML") {
        m_parser.Fail(element.line, fmt::format("this is no LandXML file: its first element is {}",
                                                Quoted(element.name)));
    }
    const std::size_t dash = element.space.rfind('-');
    const std::string_view of =
        dash == std::string_view::npos ? "" : element.space.substr(dash + 1);
    const std::string_view said = element.Get("version");
    m_report.version = of.empty() ? said : of;
    if (!of.empty() && !said.empty() && of != said) {
        m_report.Note(fmt::format("the file says its version is {}, and names the schema of {}",
                                  Printable(said), Printable(of)));
    }
    if (!IsOneOf(m_report.version, {"1.0", "1.1", "1.2", "2.0"})) {
        m_report.Note(
            fmt::format("version {} is not known; it was read as 1.2", Quoted(m_report.version)));
    }
}

FileImport::Open FileImport::BeginInside(const XmlElement& element) {
    if (m_open.empty()) {
        ReadRoot(element);
        return {Role::Root};
    }
    const Open& around = m_open.back();
    if (around.role == Role::LeftOut) {
        return LeaveOut(element, around.reason);
    }
    if (element.foreign) {
        return LeaveOut(element, "it is of another namespace");
    }
    switch (around.role) {
        case Role::Root:
            return BeginInRoot(element);
        case Role::Points:
            return BeginInPoints(element);
        case Role::Features:
            return IsOneOf(element.name, {"PlanFeature", "Alignment", "Parcel"})
                       ? BeginFeature(element)
                       : BeginOther(element);
        case Role::Feature:
            return BeginInFeature(element);
        case Role::Geometry:
            return BeginSegment(element);
        case Role::Segment:
            return BeginInSegment(element);
        case Role::Surface:
        case Role::SurfaceLine:
            return BeginInSurface(element);
        case Role::Ours:
            if (element.name == "Property") {
                m_ours.Set(std::string(element.Get("label")), element.Get("value"));
                return {Role::Property};
            }
            return BeginOther(element);
        case Role::Part:
            if (IsOneOf(element.name, {"Metric", "Imperial"})) {
                m_meaning.SetUnit(element.Get("linearUnit"));
                m_report.Count(element.name, "", Taken("the unit of lengths"), false, element.line);
                return {Role::Property};
            }
            return BeginOther(element);
        case Role::Project:
        case Role::Point:
        case Role::Place:
        case Role::List:
        case Role::SurfacePoint:
        case Role::Property:
        case Role::LeftOut:
            break;
    }
    return BeginOther(element);
}

FileImport::Open FileImport::BeginInRoot(const XmlElement& element) {
    if (element.name == "Units") {
        if (m_meaning.IsDecided()) {
            m_parser.Fail(element.line, "the file tells its unit after the first coordinates");
        }
        return {Role::Part};
    }
    if (element.name == "CoordinateSystem") {
        m_meaning.SetSystem(element.Get("epsgCode"));
        const bool known = ParseWholeNumber(element.Get("epsgCode")).value_or(0) > 0;
        m_report.Count(element.name, "",
                       known ? Taken("the coordinate system") : LeftOut("it has no EPSG code"),
                       false, element.line);
        return {Role::Property};
    }
    if (element.name == "Project") {
        m_report.Count(element.name, "", LeftOut("a job has no place for it"), false, element.line);
        return {Role::Project};
    }
    if (IsOneOf(element.name, {"CgPoints", "PlanFeatures", "Alignments", "Parcels", "Surfaces"})) {
        m_meaning.Decide();
        m_options.jobUnit = m_meaning.GetJobUnit();
        m_container = element.Get("name");
        if (element.name == "CgPoints") {
            m_collections.Begin(element.Get("name"));
            return {Role::Points};
        }
        return {element.name == "Surfaces" ? Role::Surface : Role::Features};
    }
    return BeginOther(element);
}

FileImport::Open FileImport::BeginInPoints(const XmlElement& element) {
    if (element.name == "CgPoints") {
        m_collections.Begin(element.Get("name"));
        return {Role::Points};
    }
    if (element.name != "CgPoint") {
        return BeginOther(element);
    }
    m_lost.Look(element, {"name", "desc", "code", "pntRef"});
    m_takesText = true;
    m_collections.BeginPoint(element);
    return {Role::Point};
}

FileImport::Open FileImport::BeginFeature(const XmlElement& element) {
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
        for (const std::string_view name : {element.Get("desc"), element.Get("name"),
                                            std::string_view(m_container), kPlanFeatures}) {
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
    m_features.push_back(std::move(feature));
    return {Role::Feature};
}

FileImport::Open FileImport::BeginInFeature(const XmlElement& element) {
    if (element.name == "CoordGeom") {
        return {Role::Geometry};
    }
    if (IsOneOf(element.name, {"Center", "Location", "Start"})) {
        m_takesText = true;
        m_place = Place();
        m_place.ref = element.Get("pntRef");
        return {Role::Place};
    }
    if (element.name == "Parcels") {
        return {Role::Features};
    }
    return BeginOther(element);
}

FileImport::Open FileImport::BeginSegment(const XmlElement& element) {
    if (!IsOneOf(element.name, {"Line", "Curve", "Spiral", "IrregularLine", "Chain"})) {
        return BeginOther(element);
    }
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
    m_takesText = element.name == "Chain";
    return {Role::Segment};
}

FileImport::Open FileImport::BeginInSegment(const XmlElement& element) {
    if (IsOneOf(element.name, {"Start", "End", "Center", "PI"})) {
        m_takesText = true;
        m_place = Place();
        m_place.ref = element.Get("pntRef");
        return {Role::Place};
    }
    if (IsOneOf(element.name, {"PntList2D", "PntList3D"})) {
        m_takesText = true;
        return {Role::List};
    }
    return BeginOther(element);
}

FileImport::Open FileImport::BeginInSurface(const XmlElement& element) {
    const std::string_view name = element.name;
    if (name == "Surface") {
        m_surfaces.Begin(element);
        return {Role::Surface};
    }
    if (IsOneOf(name, {"SourceData", "Definition", "Pnts", "DataPoints", "Breaklines", "Boundaries",
                       "Contours", "PointFiles"})) {
        return {Role::Surface};
    }
    if (IsOneOf(name, {"Breakline", "Boundary", "Contour"})) {
        if (!m_options.surfaceLines) {
            return LeaveOut(element, kNoSurfaceLines);
        }
        m_surfaces.BeginLine(element);
        return {Role::SurfaceLine};
    }
    const bool list = IsOneOf(name, {"PntList2D", "PntList3D"});
    if (list && m_open.back().role == Role::SurfaceLine) {
        m_takesText = true;
        return {Role::List};
    }
    if (name == "P" || list) {
        if (!m_options.surfacePoints) {
            return LeaveOut(element, kNoSurfacePoints);
        }
        m_takesText = true;
        m_surfaces.BeginPoints(element);
        return {Role::SurfacePoint};
    }
    return LeaveOut(element, kNothingLikeIt);
}

FileImport::Open FileImport::BeginOther(const XmlElement& element) {
    if (element.name == "Feature" && element.Get("code") == kApplication) {
        m_ours = Extras();
        return {Role::Ours};
    }
    return LeaveOut(element, kNothingLikeIt);
}

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
            m_collections.End();
            break;
        case Role::Point:
            m_collections.EndPoint(m_text);
            break;
        case Role::Place:
            EndPlace(name);
            break;
        case Role::List:
            EndList(name);
            break;
        case Role::SurfacePoint:
            m_surfaces.EndPoints(name, m_text);
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
            m_surfaces.EndLine(name);
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
    if (m_open.back().role == Role::SurfaceLine) {
        m_surfaces.AddPlaces(name, m_text);
        return;
    }
    const auto places = ReadPlaces(m_text, name == "PntList2D" ? 2 : 3, m_report.scale);
    m_segment.fault = places ? std::string_view() : kNotPlaces;
    m_segment.between = places.value_or(std::vector<Place>());
}

void FileImport::EndOurs() {
    const Role around = m_open.back().role;
    if (around == Role::Points) {
        m_collections.SetExtras(std::move(m_ours));
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
    m_collections.Finish();
    for (Feature& feature : m_waiting) {
        static_cast<void>(FeatureDrawer::Resolve(feature, m_places));
        m_drawer.Draw(feature);
    }
    m_lost.Report(m_report);
    m_drawing.Finish();
}

}  // namespace cqsurvey::exchange::landxml
