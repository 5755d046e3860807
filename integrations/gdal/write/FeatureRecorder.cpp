#include "gdal/write/FeatureRecorder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <string>

#include "gdal/write/Place.h"

namespace cqsurvey::gdal {

namespace {

const CString kFirstLayer = u"0";

/// Whether two coordinates are the same, or both are missing.
bool IsSame(double a, double b) {
    return a == b || (std::isnan(a) && std::isnan(b));
}

/// A circle that came as straight lines, or that is too small for its arcs, is the one of its
/// fields as long as it lies where these say.
bool IsStated(const OGRCurve& curve, const FeatureFields& fields, CircleShape& circle) {
    const std::optional<double> easting = fields.Real(FieldRole::Easting);
    const std::optional<double> northing = fields.Real(FieldRole::Northing);
    const std::optional<double> radius = fields.Real(FieldRole::Radius);
    if (!easting || !northing || !radius) {
        return false;
    }
    OGREnvelope box;
    curve.getEnvelope(&box);
    const double close = 1e-6 + 0.02 * std::abs(*radius);
    const auto isClose = [close](double a, double b) { return std::abs(a - b) <= close; };
    OGRPoint start;
    curve.StartPoint(&start);
    circle = {CVector(*easting, *northing),
              start.Is3D() != 0 ? start.getZ() : std::numeric_limits<double>::quiet_NaN(), *radius};
    return isClose((box.MinX + box.MaxX) / 2, *easting) &&
           isClose((box.MinY + box.MaxY) / 2, *northing) &&
           isClose(box.MaxX - box.MinX, 2 * std::abs(*radius)) &&
           isClose(box.MaxY - box.MinY, 2 * std::abs(*radius));
}

}  // namespace

FeatureRecorder::FeatureRecorder(SharedJob& job, Duplicates duplicates)
    : m_job(job),
      m_pen(job, m_report),
      m_points(job, m_report, m_pen, duplicates),
      m_entities(job, m_report, m_pen),
      m_drawn(job.Db().GetNumCadEntities() > 0) {
    CqSurveyDB& db = job.Db();
    CqHandle next = m_drawn ? db.GetFirstLayerHandle() : 0;
    for (int left = db.GetNumLayers(); left > 0 && next != 0; --left) {
        CString name;
        int color = 0;
        if (db.GetNextLayer(next, name, color) == 0) {
            break;
        }
        m_ownLayers.insert(name);
    }
}

CqHandle FeatureRecorder::RecordPoint(const OGRFeature& feature, const FieldMap& map) {
    const FeatureFields fields(feature, map);
    const SingleGeometries singles = Split(fields);
    if (singles.points.size() != 1 || !singles.curves.empty()) {
        throw RecordFailure(fields.Describe() + " is not one point");
    }
    const CqHandle handle = m_points.Record(*singles.points.front(), fields, kFirstLayer);
    if (feature.GetFID() != OGRNullFID) {
        m_pointOf[feature.GetFID()] = handle;
    }
    return handle;
}

CqHandle FeatureRecorder::RecordPolyline(const OGRFeature& feature, const FieldMap& map) {
    const FeatureFields fields(feature, map);
    const SingleGeometries singles = Split(fields);
    if (singles.curves.empty() || !singles.points.empty()) {
        throw RecordFailure(fields.Describe() + " is no line");
    }
    CqHandle first = 0;
    for (const OGRCurve* curve : singles.curves) {
        const CqHandle handle = m_entities.RecordPolyline(*curve, fields, kFirstLayer);
        first = first == 0 ? handle : first;
    }
    if (feature.GetFID() != OGRNullFID) {
        m_polylineOf[feature.GetFID()] = first;
    }
    return first;
}

CqHandle FeatureRecorder::RecordCircle(const OGRFeature& feature, const FieldMap& map) {
    const FeatureFields fields(feature, map);
    const SingleGeometries singles = Split(fields);
    CircleShape circle;
    if (singles.curves.size() == 1 && singles.points.empty() &&
        (IsCircle(*singles.curves.front(), circle) ||
         IsStated(*singles.curves.front(), fields, circle))) {
        return m_entities.RecordCircle(circle, fields, kFirstLayer);
    }
    const std::optional<double> radius = fields.Real(FieldRole::Radius);
    if (singles.points.size() == 1 && singles.curves.empty() && radius) {
        const std::array<double, 3> at = PlaceOf(*singles.points.front(), fields);
        return m_entities.RecordCircle({CVector(at[0], at[1]), at[2], *radius}, fields,
                                       kFirstLayer);
    }
    throw RecordFailure(fields.Describe() + " is no circle");
}

CqHandle FeatureRecorder::RecordText(const OGRFeature& feature, const FieldMap& map) {
    const FeatureFields fields(feature, map);
    const SingleGeometries singles = Split(fields);
    if (singles.points.size() != 1 || !singles.curves.empty()) {
        throw RecordFailure(fields.Describe() + " is not one point");
    }
    return m_entities.RecordText(*singles.points.front(), fields, kFirstLayer);
}

CqHandle FeatureRecorder::RecordBitmap(const OGRFeature& feature, const FieldMap& map) {
    const FeatureFields fields(feature, map);
    const SingleGeometries singles = Split(fields);
    if (singles.points.size() != 1 || !singles.curves.empty()) {
        throw RecordFailure(fields.Describe() + " is not one point");
    }
    return m_entities.RecordBitmap(*singles.points.front(), fields, kFirstLayer);
}

void FeatureRecorder::Forget() {
    m_pointOf.clear();
    m_polylineOf.clear();
    m_verticesOf = 0;
    m_vertices.clear();
}

const std::vector<CqHandle>& FeatureRecorder::VerticesOf(CqHandle polyline) {
    if (m_verticesOf == polyline) {
        return m_vertices;
    }
    m_vertices.clear();
    m_verticesOf = 0;
    CqSurveyDB& db = m_job.Db();
    CqHandle next = polyline;
    for (int left = db.GetNumCadEntities(); left > 0 && next != 0; --left) {
        CqCadEntity* object = nullptr;
        if (db.GetNextCadEntity(next, object) == 0) {
            break;
        }
        const CqCadEntityPtr entity(object);
        if (entity->GetHandle() == polyline) {
            continue;
        }
        if (entity->GetType() != EntVertex || entity->GetPlineHandle() != polyline) {
            break;
        }
        m_vertices.push_back(entity->GetHandle());
    }
    m_verticesOf = polyline;
    return m_vertices;
}

CqHandle FeatureRecorder::RecordVertex(const OGRFeature& feature, const FieldMap& map) {
    const FeatureFields fields(feature, map);
    CqSurveyDB& db = m_job.Db();
    const std::optional<std::uint32_t> id = fields.Unsigned(FieldRole::Polyline);
    const std::optional<std::int32_t> number = fields.Int(FieldRole::Number);
    const auto polyline = id ? m_polylineOf.find(static_cast<GIntBig>(*id)) : m_polylineOf.end();
    if (polyline == m_polylineOf.end() || !number) {
        m_report.Count("Vertices whose polylines were not recorded before them were left out",
                       fields.Describe());
        return static_cast<CqHandle>(std::max<GIntBig>(feature.GetFID(), 0));
    }
    const std::vector<CqHandle>& vertices = VerticesOf(polyline->second);
    if (*number < 1 || static_cast<std::size_t>(*number) > vertices.size()) {
        throw RecordFailure(fields.Describe() + ": its polyline has " +
                            std::to_string(vertices.size()) + " vertices");
    }
    const CqHandle handle = vertices[static_cast<std::size_t>(*number) - 1];
    const CqCadEntityPtr vertex = ReadEntity(db, handle, EntVertex);
    std::array<double, 3> at{};
    vertex->GetPoint(at.data());
    const std::array<double, 3> wanted = OnlyPlaceOf(fields);
    if (!IsSame(at[0], wanted[0]) || !IsSame(at[1], wanted[1])) {
        throw RecordFailure(fields.Describe() + " does not lie on its polyline");
    }
    const double bulge = fields.Real(FieldRole::Bulge).value_or(vertex->GetBulge());
    if (bulge != vertex->GetBulge() || !IsSame(at[2], wanted[2])) {
        db.MoveVertex(handle, wanted.data(), bulge);
    }
    if (const auto point = fields.Unsigned(FieldRole::Point)) {
        const auto tied = m_pointOf.find(static_cast<GIntBig>(*point));
        if (tied != m_pointOf.end()) {
            db.LinkSiPntAndVertex(db.GetCadEntityHandleByCoordRecHandle(tied->second), handle);
        }
    }
    return handle;
}

CqHandle FeatureRecorder::RecordLayer(const OGRFeature& feature, const FieldMap& map) {
    const FeatureFields fields(feature, map);
    CqSurveyDB& db = m_job.Db();
    const CString name = m_pen.Cut(fields.Text(FieldRole::Name), limits::kLayerName, "Layer names");
    const std::optional<std::int32_t> color = fields.Int(FieldRole::Color);
    const std::optional<std::int32_t> line = fields.Int(FieldRole::Line);
    constexpr int kInk = 7;
    if (db.AddLayer(name, color.value_or(kInk), line.value_or(0)) == 0 &&
        !m_ownLayers.contains(name)) {
        if (color) {
            db.EditLayerColor(name, *color);
        }
        if (line) {
            db.EditLayerLine(name, *line);
        }
    }
    CqHandle next = db.GetFirstLayerHandle();
    for (int left = db.GetNumLayers(); left > 0 && next != 0; --left) {
        const CqHandle handle = next;
        CString found;
        int unused = 0;
        if (db.GetNextLayer(next, found, unused) == 0) {
            break;
        }
        if (found == name) {
            return handle;
        }
    }
    throw RecordFailure(fields.Describe() + ": the job takes no layer \"" + ToUtf8(name) + "\"");
}

CqHandle FeatureRecorder::RecordGroup(const OGRFeature& feature, const FieldMap& map) {
    const FeatureFields fields(feature, map);
    const CString name =
        m_pen.Cut(fields.Text(FieldRole::Name), limits::kGroupName, "Names of groups");
    m_job.Db().AddGroup(name);
    const std::uint16_t id = m_job.Db().GetGroupID(name);
    if (id == 0) {
        throw RecordFailure(fields.Describe() + ": the job takes no group \"" + ToUtf8(name) +
                            "\"");
    }
    return id;
}

CqHandle FeatureRecorder::RecordSetting(const OGRFeature& feature, const FieldMap& map) {
    const FeatureFields fields(feature, map);
    CqSurveyDB& db = m_job.Db();
    const CString section = fields.Text(FieldRole::Section);
    const CString key = fields.Text(FieldRole::Key);
    CString own;
    const bool there = db.GetSettingsString(section, key, own, CString()) != 0;
    if (there && (m_drawn || section == CqJobIdentity::kSection)) {
        if (own != fields.Text(FieldRole::Value)) {
            m_report.Count("Settings of the job stayed as they were", ToUtf8(key));
        }
        return static_cast<CqHandle>(feature.GetFID() > 0 ? feature.GetFID() : 1);
    }
    db.AddSettingsSection(section);
    if (db.WriteSettingsString(section, key, fields.Text(FieldRole::Value)) == 0) {
        throw RecordFailure(fields.Describe() + ": the job takes no setting \"" + ToUtf8(key) +
                            "\"");
    }
    return static_cast<CqHandle>(feature.GetFID() > 0 ? feature.GetFID() : 1);
}

CqHandle FeatureRecorder::RecordForeign(const OGRFeature& feature, const FieldMap& map,
                                        const CString& layer, Points points) {
    const FeatureFields fields(feature, map);
    const SingleGeometries singles = Split(fields);
    if (singles.points.empty() && singles.curves.empty()) {
        throw RecordFailure(fields.Describe() + " has no geometry, so it cannot be drawn");
    }
    const bool texts = points == Points::Texts ||
                       (points == Points::Auto && fields.Text(FieldRole::Name).empty() &&
                        m_entities.HasText(fields));
    CqHandle first = 0;
    const auto note = [&first](CqHandle handle) { first = first == 0 ? handle : first; };
    for (const OGRPoint* point : singles.points) {
        note(texts ? m_entities.RecordText(*point, fields, layer)
                   : m_points.Record(*point, fields, layer));
    }
    for (const OGRCurve* curve : singles.curves) {
        CircleShape circle;
        note(IsCircle(*curve, circle) ? m_entities.RecordCircle(circle, fields, layer)
                                      : m_entities.RecordPolyline(*curve, fields, layer));
    }
    return first;
}

}  // namespace cqsurvey::gdal
