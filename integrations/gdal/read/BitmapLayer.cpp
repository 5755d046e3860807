#include "gdal/read/BitmapLayer.h"

#include "gdal/write/FeatureRecorder.h"

namespace cqsurvey::gdal {

BitmapLayer::BitmapLayer(const LayerContext& context)
    : EntityLayer(context, "bitmaps", wkbPoint25D,
                  {FieldRole::Resource, FieldRole::Width, FieldRole::Layer, FieldRole::Color,
                   FieldRole::Hidden},
                  EntBitmap) {}

bool BitmapLayer::Fill(FeatureFiller& filler, const CqCadEntity& entity) {
    filler.Set(FieldRole::Resource, entity.GetResName());
    filler.Set(FieldRole::Width, entity.GetSize().GetX());
    if (filler.WantsGeometry()) {
        filler.Set(PlaceOf(entity));
    }
    return true;
}

CqHandle BitmapLayer::Record(const OGRFeature& feature) {
    return Context().recorder->RecordBitmap(feature, Fields());
}

bool BitmapLayer::Erase(CqHandle handle) {
    return Db().DeleteBitmap(handle) != 0;
}

}  // namespace cqsurvey::gdal
