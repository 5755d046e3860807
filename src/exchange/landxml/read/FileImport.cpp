#include "exchange/landxml/read/FileImport.h"

#include <fmt/format.h>

#include <algorithm>
#include <initializer_list>
#include <utility>

#include "cqsurvey/Text.h"
#include "cqsurvey/exchange/ExchangeError.h"
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
      m_drawer(m_options, m_drawing, m_layers, report) {}

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
            m_collections.push_back({FromUtf8(element.Get("name")), {}, {}});
            return {Role::Points};
        }
        return {element.name == "Surfaces" ? Role::Surface : Role::Features};
    }
    return BeginOther(element);
}

FileImport::Open FileImport::BeginInPoints(const XmlElement& element) {
    if (element.name == "CgPoints") {
        m_collections.push_back({FromUtf8(element.Get("name")), {}, {}});
        return {Role::Points};
    }
    if (element.name != "CgPoint") {
        return BeginOther(element);
    }
    NoteLost(element, {"name", "desc", "code", "pntRef"});
    m_takesText = true;
    m_point = WaitingPoint();
    m_point.line = element.line;
    m_point.name = element.Get("name");
    m_point.place.ref = element.Get("pntRef");
    m_point.details.name = FromUtf8(m_point.name);
    m_point.details.description = FromUtf8(element.Get("desc"));
    if (const std::string_view code = element.Get("code"); !code.empty()) {
        if (const auto number = ParseWholeNumber(code)) {
            m_point.details.code = *number;
        } else {
            CString& description = m_point.details.description;
            description = FromUtf8(code) + (description.empty() ? u"" : u" ") + description;
        }
    }
    return {Role::Point};
}

FileImport::Open FileImport::BeginFeature(const XmlElement& element) {
    Feature feature;
    feature.kind = element.name;
    feature.line = element.line;
    if (element.name == "PlanFeature") {
        NoteLost(element, {"name", "desc", "code"});
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
        NoteLost(element, {"name"});
        feature.layer = kParcels;
        feature.title = element.Get("name");
    } else {
        NoteLost(element, {});
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
        m_surface = element.Get("name").empty() ? kSurfaces : element.Get("name");
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
        const auto elevation = ReadNumber(element.Get("elev"));
        m_hasContour = name == "Contour" && elevation.has_value();
        m_contour = elevation.value_or(0.0) * m_report.scale;
        m_surfaceLine = Feature();
        m_surfaceLine.kind = name;
        m_surfaceLine.line = element.line;
        m_surfaceLine.layer = m_surface;
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
        m_point = WaitingPoint();
        m_point.line = element.line;
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

void FileImport::NoteLost(const XmlElement& element,
                          std::initializer_list<std::string_view> known) {
    constexpr std::size_t kMost = 100;
    for (const XmlElement::Attribute& attribute : element.attributes) {
        if (!IsOneOf(attribute.name, known)) {
            auto place = m_lost.find(element.name);
            if (place == m_lost.end()) {
                place = m_lost.try_emplace(std::string(element.name)).first;
            }
            if (place->second.size() < kMost) {
                place->second.emplace(attribute.name);
            }
        }
    }
}

}  // namespace cqsurvey::exchange::landxml
