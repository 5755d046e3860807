#include "gdal/read/BitmapLayer.h"

namespace cqsurvey::gdal {

BitmapLayer::BitmapLayer(const LayerContext& context)
    : EntityLayer(context, RecordKind::Bitmaps, "bitmaps", wkbPoint25D,
                  {FieldRole::Resource, FieldRole::Width, FieldRole::Layer, FieldRole::Color,
                   FieldRole::Hidden}) {}

bool BitmapLayer::Fill(FeatureFiller& filler, const CqCadEntity& entity) {
    filler.Set(FieldRole::Resource, entity.GetResName());
    filler.Set(FieldRole::Width, entity.GetSize().GetX());
    if (filler.WantsGeometry()) {
        filler.Set(PlaceOf(entity));
    }
    return true;
}

}  // namespace cqsurvey::gdal
