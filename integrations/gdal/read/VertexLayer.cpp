#include "gdal/read/VertexLayer.h"

#include <utility>

#include "gdal/PolylineVertices.h"

namespace cqsurvey::gdal {

VertexLayer::VertexLayer(const LayerContext& context)
    : EntityLayer(context, RecordKind::Vertices, "vertices", wkbPoint25D,
                  {FieldRole::Polyline, FieldRole::Number, FieldRole::Bulge, FieldRole::Point,
                   FieldRole::PointName, FieldRole::Layer, FieldRole::Color, FieldRole::Hidden}) {}

int VertexLayer::NumberOf(CqHandle vertex, CqHandle polyline) {
    if (m_numbered != polyline || m_numbersVersion != Context().job.Version()) {
        m_numbers.clear();
        int number = 0;
        for (const JobVertex& found : ReadVertices(Db(), polyline)) {
            m_numbers.emplace(found.handle, ++number);
        }
        m_numbered = polyline;
        m_numbersVersion = Context().job.Version();
    }
    const auto found = m_numbers.find(vertex);
    return found != m_numbers.end() ? found->second : 0;
}

bool VertexLayer::Fill(FeatureFiller& filler, const CqCadEntity& entity) {
    filler.Set(FieldRole::Polyline, static_cast<GIntBig>(entity.GetPlineHandle()));
    filler.Set(FieldRole::Number, NumberOf(entity.GetHandle(), entity.GetPlineHandle()));
    filler.Set(FieldRole::Bulge, entity.GetBulge());
    const CqHandle symbol = entity.GetMcadSiPointHandle();
    if (const CqCadEntityPtr point =
            symbol != 0 ? ReadEntity(Db(), symbol, EntSiPnt) : CqCadEntityPtr()) {
        filler.Set(FieldRole::Point,
                   static_cast<GIntBig>(Db().GetCoordRecHandleByCadEntityHandle(symbol)));
        filler.Set(FieldRole::PointName, point->GetName());
    }
    if (filler.WantsGeometry()) {
        filler.Set(PlaceOf(entity));
    }
    return true;
}

}  // namespace cqsurvey::gdal
