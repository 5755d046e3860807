#include "gdal/read/VertexLayer.h"

#include <utility>

#include "gdal/write/FeatureRecorder.h"

namespace cqsurvey::gdal {

VertexLayer::VertexLayer(const LayerContext& context)
    : EntityLayer(context, "vertices", wkbPoint25D,
                  {FieldRole::Polyline, FieldRole::Number, FieldRole::Bulge, FieldRole::Point,
                   FieldRole::PointName, FieldRole::Layer, FieldRole::Color, FieldRole::Hidden},
                  EntVertex) {}

int VertexLayer::NumberOf(CqHandle vertex) {
    if (m_numbersVersion != Context().job.Version()) {
        m_numbers.clear();
        CqHandle polyline = 0;
        int number = 0;
        for (const CqHandle handle : List()) {
            const CqCadEntityPtr entity = ReadEntity(Db(), handle, EntVertex);
            if (!entity) {
                continue;
            }
            number = entity->GetPlineHandle() == polyline ? number + 1 : 1;
            polyline = entity->GetPlineHandle();
            m_numbers.emplace(handle, number);
        }
        m_numbersVersion = Context().job.Version();
    }
    const auto found = m_numbers.find(vertex);
    return found != m_numbers.end() ? found->second : 0;
}

bool VertexLayer::Fill(FeatureFiller& filler, const CqCadEntity& entity) {
    filler.Set(FieldRole::Polyline, static_cast<GIntBig>(entity.GetPlineHandle()));
    filler.Set(FieldRole::Number, NumberOf(entity.GetHandle()));
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

CqHandle VertexLayer::Record(const OGRFeature& feature) {
    return Context().recorder->RecordVertex(feature, Fields());
}

}  // namespace cqsurvey::gdal
