#include "gdal/write/FeatureRecorder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <string>

#include "gdal/write/CircleReader.h"

namespace cqsurvey::gdal {

namespace {

const CString kFirstLayer = u"0";

/// Whether two coordinates are the same, or both are missing.
bool IsSame(double a, double b) {
    return a == b || (std::isnan(a) && std::isnan(b));
}

const OGRPoint& OnlyPointOf(const FeatureFields& fields) {
    const SingleGeometries singles = Split(fields);
    if (singles.points.size() != 1 || !singles.curves.empty()) {
        throw RecordFailure(fields.Describe() + " is not one point");
    }
    return *singles.points.front();
}

}  // namespace

FeatureRecorder::FeatureRecorder(SharedJob& job, Duplicates duplicates)
    : m_job(job),
      m_pen(job, m_report),
      m_points(job, m_report, m_pen, duplicates),
      m_entities(job, m_report, m_pen),
      m_editor(job, m_pen),
      m_polylines(job, m_pen),
      m_tables(job, m_report, m_pen),
      m_duplicates(duplicates) {}

std::vector<RecordedPart> FeatureRecorder::Record(RecordKind kind, const OGRFeature& feature,
                                                  const FieldMap& map) {
    const FeatureFields fields(feature, map);
    CqHandle handle = 0;
    switch (kind) {
        case RecordKind::Points:
            handle = m_points.Record(OnlyPointOf(fields), fields, kFirstLayer);
            if (feature.GetFID() != OGRNullFID) {
                m_pointOf.Set(feature.GetFID(), handle);
            }
            break;
        case RecordKind::Polylines:
            return RecordPolyline(fields);
        case RecordKind::Vertices:
            handle = RecordVertex(fields);
            break;
        case RecordKind::Texts:
            handle = m_entities.RecordText(OnlyPointOf(fields), fields, kFirstLayer);
            break;
        case RecordKind::Circles:
            handle =
                m_entities.RecordCircle(ReadCircle(fields, Split(fields)), fields, kFirstLayer);
            break;
        case RecordKind::Bitmaps:
            handle = m_entities.RecordBitmap(OnlyPointOf(fields), fields, kFirstLayer);
            break;
        case RecordKind::Layers:
            handle = m_tables.RecordLayer(fields);
            break;
        case RecordKind::Groups:
            handle = m_tables.RecordGroup(fields);
            break;
        case RecordKind::Settings:
            handle = m_tables.RecordSetting(fields);
            break;
        case RecordKind::Background:
            handle = m_tables.RecordBackground(fields);
            break;
    }
    return {{kind, handle}};
}

std::vector<RecordedPart> FeatureRecorder::RecordPolyline(const FeatureFields& fields) {
    const SingleGeometries singles = Split(fields);
    if (singles.curves.empty() || !singles.points.empty()) {
        throw RecordFailure(fields.Describe() + " is no line");
    }
    CheckParts(singles, fields, false);
    std::vector<RecordedPart> parts;
    for (const OGRCurve* curve : singles.curves) {
        parts.push_back(
            {RecordKind::Polylines, m_entities.RecordPolyline(*curve, fields, kFirstLayer)});
    }
    if (fields.Feature().GetFID() != OGRNullFID) {
        m_polylineOf.Set(fields.Feature().GetFID(), parts.front().handle);
    }
    return parts;
}

void FeatureRecorder::CheckParts(const SingleGeometries& singles, const FeatureFields& fields,
                                 bool texts) const {
    for (const OGRPoint* point : singles.points) {
        (void)PlaceOf(*point, fields);
    }
    for (const OGRCurve* curve : singles.curves) {
        (void)RequireCourse(*curve, fields);
    }
    (void)fields.Time(FieldRole::Time);
    (void)fields.Unsigned(FieldRole::Flags);
    for (const FieldRole role : {FieldRole::Line, FieldRole::Color, FieldRole::Origin}) {
        (void)fields.Int(role);
    }
    if (!singles.curves.empty()) {
        (void)fields.Int(FieldRole::Code);
    }
    if (!texts && singles.points.size() > 1 && m_duplicates == Duplicates::Refuse &&
        !fields.Text(FieldRole::Name).empty()) {
        throw RecordFailure(fields.Describe() + ": several points cannot have the same name");
    }
}

const std::vector<JobVertex>& FeatureRecorder::VerticesOf(CqHandle polyline) {
    if (m_verticesOf != polyline) {
        m_verticesOf = 0;
        m_vertices = ReadVertices(m_job.Db(), polyline);
        m_verticesOf = polyline;
    }
    return m_vertices;
}

CqHandle FeatureRecorder::RecordVertex(const FeatureFields& fields) {
    CqSurveyDB& db = m_job.Db();
    const std::optional<std::uint32_t> id = fields.Unsigned(FieldRole::Polyline);
    const std::optional<std::int32_t> number = fields.Int(FieldRole::Number);
    const std::optional<CqHandle> polyline =
        id ? m_polylineOf.Find(static_cast<GIntBig>(*id)) : std::nullopt;
    if (!polyline || !number) {
        m_report.Count("Vertices whose polylines were not recorded before them were left out",
                       fields.Describe());
        return static_cast<CqHandle>(std::max<GIntBig>(fields.Feature().GetFID(), 0));
    }
    const std::vector<JobVertex>& vertices = VerticesOf(*polyline);
    if (*number < 1 || static_cast<std::size_t>(*number) > vertices.size()) {
        throw RecordFailure(fields.Describe() + ": its polyline has " +
                            std::to_string(vertices.size()) + " vertices");
    }
    const CqHandle handle = vertices[static_cast<std::size_t>(*number) - 1].handle;
    const CqCadEntityPtr vertex = ReadEntity(db, handle, EntVertex);
    if (!vertex) {
        throw RecordFailure(fields.Describe() + ": the vertex was deleted meanwhile");
    }
    std::array<double, 3> at{};
    vertex->GetPoint(at.data());
    const std::array<double, 3> wanted = OnlyPlaceOf(fields);
    if (!IsSame(at[0], wanted[0]) || !IsSame(at[1], wanted[1])) {
        throw RecordFailure(fields.Describe() + " does not lie on its polyline");
    }
    const std::optional<std::uint32_t> point = fields.Unsigned(FieldRole::Point);
    const double bulge = fields.Real(FieldRole::Bulge).value_or(vertex->GetBulge());
    if (bulge != vertex->GetBulge() || !IsSame(at[2], wanted[2])) {
        db.MoveVertex(handle, wanted.data(), bulge);
    }
    if (const auto tied = point ? m_pointOf.Find(static_cast<GIntBig>(*point)) : std::nullopt) {
        db.LinkSiPntAndVertex(db.GetCadEntityHandleByCoordRecHandle(*tied), handle);
    }
    return handle;
}

std::vector<RecordedPart> FeatureRecorder::RecordForeign(const OGRFeature& feature,
                                                         const FieldMap& map, const CString& layer,
                                                         Points points) {
    const FeatureFields fields(feature, map);
    const SingleGeometries singles = Split(fields);
    if (singles.points.empty() && singles.curves.empty()) {
        throw RecordFailure(fields.Describe() + " has no geometry, so it cannot be drawn");
    }
    const bool texts = points == Points::Texts ||
                       (points == Points::Auto && fields.Text(FieldRole::Name).empty() &&
                        m_entities.HasText(fields));
    CheckParts(singles, fields, texts);
    std::vector<RecordedPart> parts;
    for (const OGRPoint* point : singles.points) {
        if (texts) {
            parts.push_back({RecordKind::Texts, m_entities.RecordText(*point, fields, layer)});
        } else {
            parts.push_back({RecordKind::Points, m_points.Record(*point, fields, layer)});
        }
    }
    for (const OGRCurve* curve : singles.curves) {
        CircleShape circle;
        if (IsCircle(*curve, circle)) {
            parts.push_back({RecordKind::Circles,
                             m_entities.RecordCircle(Sharpen(circle, fields), fields, layer)});
        } else {
            parts.push_back(
                {RecordKind::Polylines, m_entities.RecordPolyline(*curve, fields, layer)});
        }
    }
    return parts;
}

const char* FeatureRecorder::WhyNotEdit(RecordKind kind) {
    switch (kind) {
        case RecordKind::Settings:
            return "settings have rules, which cqjob settings knows";
        case RecordKind::Background:
            return "the background image is replaced with cqjob image";
        default:
            return nullptr;
    }
}

void FeatureRecorder::Edit(RecordKind kind, CqHandle handle, const FeatureChange& change) {
    m_verticesOf = 0;
    switch (kind) {
        case RecordKind::Points:
            m_points.Edit(handle, change);
            break;
        case RecordKind::Polylines:
            m_polylines.EditPolyline(handle, change);
            break;
        case RecordKind::Vertices:
            m_polylines.EditVertex(handle, change);
            break;
        case RecordKind::Texts:
            m_editor.EditText(handle, change);
            break;
        case RecordKind::Circles:
            m_editor.EditCircle(handle, change);
            break;
        case RecordKind::Bitmaps:
            m_editor.EditBitmap(handle, change);
            break;
        case RecordKind::Layers:
            m_tables.EditLayer(handle, change);
            break;
        case RecordKind::Groups:
            m_tables.EditGroup(handle, change);
            break;
        case RecordKind::Settings:
        case RecordKind::Background:
            throw RecordFailure(WhyNotEdit(kind));
    }
}

void FeatureRecorder::CountNotKept(const FeatureChange& change, const OGRFeature& read) {
    if (const char* field = change.FindFieldNotKept(read)) {
        m_report.Count(std::string("Values of \"") + field +
                           "\" were not kept as they were written, since they follow from other "
                           "fields or do not fit",
                       change.After().Describe());
    }
}

const char* FeatureRecorder::WhyNotErase(RecordKind kind) {
    switch (kind) {
        case RecordKind::Layers:
            return "what is on a layer has to go somewhere; cqjob layers delete asks where";
        case RecordKind::Settings:
            return "settings have rules, which cqjob settings knows";
        default:
            return nullptr;
    }
}

bool FeatureRecorder::Erase(RecordKind kind, CqHandle handle) {
    CqSurveyDB& db = m_job.Db();
    m_verticesOf = 0;
    switch (kind) {
        case RecordKind::Points:
            return db.DelCoordRec(handle) != 0;
        case RecordKind::Polylines:
            return db.DeletePline(handle) != 0;
        case RecordKind::Vertices:
            return m_polylines.DeleteVertex(handle);
        case RecordKind::Texts:
            return db.DeleteText(handle) != 0;
        case RecordKind::Circles:
            return db.DeleteCircle(handle) != 0;
        case RecordKind::Bitmaps:
            return db.DeleteBitmap(handle) != 0;
        case RecordKind::Groups:
            return db.DelGroup(static_cast<std::uint16_t>(handle)) != 0;
        case RecordKind::Background:
            return db.DeleteBackgroundImageFile() != 0;
        case RecordKind::Layers:
        case RecordKind::Settings:
            break;
    }
    throw RecordFailure(WhyNotErase(kind));
}

void FeatureRecorder::BeginTransaction() {
    m_pointOf.BeginTransaction();
    m_polylineOf.BeginTransaction();
}

void FeatureRecorder::KeepTransaction() {
    m_pointOf.KeepTransaction();
    m_polylineOf.KeepTransaction();
}

void FeatureRecorder::UndoTransaction() {
    m_pointOf.UndoTransaction();
    m_polylineOf.UndoTransaction();
    m_verticesOf = 0;
}

}  // namespace cqsurvey::gdal
