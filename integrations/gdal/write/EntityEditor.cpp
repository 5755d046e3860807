#include "gdal/write/EntityEditor.h"

#include <algorithm>
#include <array>
#include <initializer_list>

#include "gdal/DrawingIndex.h"
#include "gdal/write/CircleReader.h"

namespace cqsurvey::gdal {

namespace {

std::array<double, 3> PlaceIn(const CqCadEntity& entity) {
    std::array<double, 3> at{};
    entity.GetPoint(at.data());
    return at;
}

bool IsAny(const FeatureChange& change, std::initializer_list<FieldRole> roles) {
    return std::any_of(roles.begin(), roles.end(), [&](FieldRole role) { return change.Is(role); });
}

}  // namespace

CqCadEntityPtr RequireEntity(const CqSurveyDB& db, CqHandle handle, EntType type,
                             const FeatureChange& change) {
    CqCadEntityPtr entity = ReadEntity(db, handle, type);
    if (!entity) {
        throw RecordFailure(change.After().Describe() + " is not in the job");
    }
    return entity;
}

void EntityEditor::EditText(CqHandle handle, const FeatureChange& change) {
    CqSurveyDB& db = m_job.Db();
    const CqCadEntityPtr text = RequireEntity(db, handle, EntText, change);
    const std::array<double, 3> at = change.Place(PlaceIn(*text));
    const auto align = static_cast<std::uint32_t>(text->GetAlign());
    const int along = change.Int(FieldRole::AlignAlong, static_cast<int>(align & 0xFFFFU));
    const int across = change.Int(FieldRole::AlignAcross, static_cast<int>(align >> 16U));
    const CString style = m_pen.Cut(change.Text(FieldRole::Style, text->GetStyle()),
                                    limits::kTextStyle, "Names of text styles");
    const int code = change.Int(FieldRole::Code, text->GetCode());
    const std::uint32_t option = change.Unsigned(FieldRole::OptionStyle, text->GetOptionStyle());
    const int interval = change.Int(FieldRole::Interval, text->GetInterval());
    const int thickness = change.Int(FieldRole::Thickness, text->GetThickness());
    const DrawingPen::Look look = m_pen.Read(change, *text);

    m_pen.Give(look, handle);
    // A long text cannot be read whole, so it is written only when something of it is new.
    if (change.IsGeometry() ||
        IsAny(change,
              {FieldRole::Text, FieldRole::TextHeight, FieldRole::Rotation, FieldRole::AlignAlong,
               FieldRole::AlignAcross, FieldRole::Style, FieldRole::Code, FieldRole::OptionStyle,
               FieldRole::Interval, FieldRole::Thickness})) {
        db.EditText(handle, at.data(), change.Text(FieldRole::Text, text->GetText()), along, across,
                    style, change.Real(FieldRole::TextHeight, text->GetHeight()),
                    change.Real(FieldRole::Rotation, text->GetRot()), code, option, interval,
                    thickness);
    }
}

void EntityEditor::EditCircle(CqHandle handle, const FeatureChange& change) {
    CqSurveyDB& db = m_job.Db();
    const FeatureFields& fields = change.After();
    const CqCadEntityPtr entity = RequireEntity(db, handle, EntCircle, change);
    const std::array<double, 3> before = PlaceIn(*entity);
    std::array<double, 3> at = before;
    double radius = entity->GetRadius();
    if (change.IsGeometry()) {
        const CircleShape circle = ReadCircle(fields, Split(fields));
        const bool flat = fields.Feature().GetGeometryRef()->Is3D() == 0;
        at = {circle.centre.GetX(), circle.centre.GetY(),
              flat ? before[2] : change.Height(before[2], circle.height)};
        radius = circle.radius;
    } else {
        at[0] = change.Real(FieldRole::Easting, at[0]);
        at[1] = change.Real(FieldRole::Northing, at[1]);
        radius = change.Real(FieldRole::Radius, radius);
    }
    const int line = change.Int(FieldRole::Line, entity->GetLine());
    const int code = change.Int(FieldRole::Code, entity->GetCode());
    const DrawingPen::Look look = m_pen.Read(change, *entity);

    m_pen.Give(look, handle);
    db.EditCircle(handle, at.data(), radius, line, code);
}

void EntityEditor::EditBitmap(CqHandle handle, const FeatureChange& change) {
    CqSurveyDB& db = m_job.Db();
    const CqCadEntityPtr entity = RequireEntity(db, handle, EntBitmap, change);
    const std::array<double, 3> at = change.Place(PlaceIn(*entity));
    const double width = change.Real(FieldRole::Width, entity->GetSize().GetX());
    const DrawingPen::Look look = m_pen.Read(change, *entity);

    m_pen.Give(look, handle);
    // A long name cannot be read whole either.
    if (change.IsGeometry() || IsAny(change, {FieldRole::Resource, FieldRole::Width})) {
        db.EditBitmap(handle, at.data(), change.Text(FieldRole::Resource, entity->GetResName()),
                      CVector(width, width));
    }
}

}  // namespace cqsurvey::gdal
