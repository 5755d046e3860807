#include "gdal/read/EntityLayer.h"

#include <array>
#include <cmath>

namespace cqsurvey::gdal {

namespace {

EntType TypeOf(RecordKind kind) {
    switch (kind) {
        case RecordKind::Polylines:
            return EntPline;
        case RecordKind::Vertices:
            return EntVertex;
        case RecordKind::Texts:
            return EntText;
        case RecordKind::Circles:
            return EntCircle;
        default:
            return EntBitmap;
    }
}

}  // namespace

EntityLayer::EntityLayer(const LayerContext& context, RecordKind kind, const char* name,
                         OGRwkbGeometryType type, std::initializer_list<FieldRole> roles)
    : JobLayer(context, kind, name, type, roles), m_type(TypeOf(kind)) {}

std::vector<CqHandle> EntityLayer::List() {
    return Context().job.Drawing().Get(m_type);
}

GIntBig EntityLayer::Count() {
    SVDB_INFORMATION info;
    // Polylines, vertices, bitmaps, circles and texts.
    constexpr std::uint32_t kKinds = 0xF8;
    if (CqSurveyDB::GetDBInformation(kKinds, CString(), info, &Db()) == 0) {
        return static_cast<GIntBig>(List().size());
    }
    switch (m_type) {
        case EntPline:
            return info.numPlines;
        case EntVertex:
            return info.numVertices;
        case EntText:
            return info.numTexts;
        case EntCircle:
            return info.numCircles;
        default:
            return info.numBitmaps;
    }
}

std::unique_ptr<OGRFeature> EntityLayer::Read(CqHandle handle) {
    const CqCadEntityPtr entity = ReadEntity(Db(), handle, m_type);
    if (!entity) {
        return nullptr;
    }
    const bool hidden = Context().job.Look().IsHidden(*entity);
    if (hidden && !Context().hidden) {
        return nullptr;
    }
    FeatureFiller filler = Fill(handle);
    filler.Set(FieldRole::Layer, entity->GetLayer());
    filler.Set(FieldRole::Color, entity->GetColor());
    filler.Set(FieldRole::Hidden, hidden ? 1 : 0);
    return Fill(filler, *entity) ? filler.Take() : nullptr;
}

std::unique_ptr<OGRPoint> EntityLayer::PlaceOf(const CqCadEntity& entity) const {
    std::array<double, 3> at{};
    entity.GetPoint(at.data());
    if (!std::isfinite(at[0]) || !std::isfinite(at[1])) {
        return nullptr;
    }
    return std::make_unique<OGRPoint>(at[0], at[1], HeightFor(at[2]));
}

double EntityLayer::HeightFor(double height) const {
    return std::isnan(height) ? Context().missingHeight : height;
}

}  // namespace cqsurvey::gdal
