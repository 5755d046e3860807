#include "exchange/landxml/read/FileImport.h"

#include <fmt/format.h>

#include <algorithm>
#include <initializer_list>
#include <utility>

#include "cqsurvey/CodePage.h"
#include "cqsurvey/Limits.h"
#include "cqsurvey/Text.h"
#include "cqsurvey/exchange/ExchangeError.h"
#include "exchange/drawing/Names.h"
#include "exchange/landxml/Names.h"
#include "text/NumberText.h"
#include "text/Printable.h"

namespace cqsurvey::exchange::landxml {

namespace {

constexpr std::string_view kNoSurfacePoints = "points of surfaces were not asked for";
constexpr std::string_view kNoSurfaceLines = "lines of surfaces were not asked for";

bool IsOneOf(std::string_view name, std::initializer_list<std::string_view> names) {
    return std::find(names.begin(), names.end(), name) != names.end();
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
      m_pointLimit(options.mostPointBytes,
                   [this] {
                       m_parser.Fail(m_parser.GetLine(),
                                     "the points whose collection goes on, or that wait for points "
                                     "which come later, and the names of all of them take too much "
                                     "memory");
                   }),
      m_lineLimit(options.mostLineBytes,
                  [this] {
                      m_parser.Fail(m_parser.GetLine(),
                                    "the lines whose feature goes on, or that wait for points "
                                    "which come later, take too much memory");
                  }),
      m_drawer(m_options, m_drawing, m_layers, report, m_lineLimit),
      m_features(m_drawer, m_places, m_lost, report, m_lineLimit),
      m_collections(m_drawing, m_layers, m_points, m_places, report, m_pointLimit),
      m_surfaces(m_collections, m_drawer, report, m_lineLimit) {}

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
            if (IsOneOf(element.name, {"PlanFeature", "Alignment", "Parcel"})) {
                m_features.Begin(element, m_container);
                return {Role::Feature};
            }
            return BeginOther(element);
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

FileImport::Open FileImport::BeginInFeature(const XmlElement& element) {
    if (element.name == "CoordGeom") {
        return {Role::Geometry};
    }
    if (IsOneOf(element.name, {"Center", "Location", "Start"})) {
        m_takesText = true;
        m_features.BeginPlace(element);
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
    m_features.BeginSegment(element);
    m_takesText = element.name == "Chain";
    return {Role::Segment};
}

FileImport::Open FileImport::BeginInSegment(const XmlElement& element) {
    if (IsOneOf(element.name, {"Start", "End", "Center", "PI"})) {
        m_takesText = true;
        m_features.BeginPlace(element);
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
            if (m_open.back().role == Role::Feature) {
                m_features.EndPlaceOfFeature(name, m_text);
            } else {
                m_features.EndPlaceOfSegment(name, m_text);
            }
            break;
        case Role::List:
            if (m_open.back().role == Role::SurfaceLine) {
                m_surfaces.AddPlaces(name, m_text);
            } else {
                m_features.AddPlaces(name, m_text);
            }
            break;
        case Role::SurfacePoint:
            m_surfaces.EndPoints(name, m_text);
            break;
        case Role::Segment:
            m_features.EndSegment(m_text);
            break;
        case Role::Ours:
            EndOurs();
            break;
        case Role::Feature:
            m_features.End();
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

void FileImport::EndOurs() {
    const Role around = m_open.back().role;
    if (around == Role::Points) {
        m_collections.SetExtras(std::move(m_ours));
    } else if (around == Role::Feature) {
        m_features.SetExtras(std::move(m_ours));
    } else if (around == Role::Project && !m_ours.Get(kLayerKey).empty()) {
        constexpr int kInk = 7;
        m_layers.Define(m_ours.Get(kLayerKey),
                        static_cast<int>(std::clamp<std::int64_t>(m_ours.GetWhole("COLOR", kInk),
                                                                  -limits::kHighestPaletteColor,
                                                                  limits::kHighestPaletteColor)),
                        static_cast<int>(std::clamp<std::int64_t>(m_ours.GetWhole("LINE"), 0,
                                                                  limits::kHighestLine)));
    }
    m_ours = Extras();
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
    m_features.Finish();
    m_lost.Report(m_report);
    m_drawing.Finish();
}

}  // namespace cqsurvey::exchange::landxml
