#include "gdal/read/BackgroundTable.h"

#include <cqsurvey/CqImagePlace.h>

#include <cstdlib>

namespace cqsurvey::gdal {

namespace {

constexpr CqHandle kOnly = 1;

}  // namespace

BackgroundTable::BackgroundTable(const LayerContext& context)
    : JobLayer(context, RecordKind::Background, "background", wkbNone,
               {FieldRole::Image, FieldRole::ImageType, FieldRole::Easting, FieldRole::Northing,
                FieldRole::Width, FieldRole::ImageHeight, FieldRole::Rotation}) {}

bool BackgroundTable::IsThere(CqSurveyDB& db) {
    return db.IsBackgroundImageFile() != 0;
}

std::vector<CqHandle> BackgroundTable::List() {
    return IsThere(Db()) ? std::vector<CqHandle>{kOnly} : std::vector<CqHandle>{};
}

GIntBig BackgroundTable::Count() {
    return IsThere(Db()) ? 1 : 0;
}

std::unique_ptr<OGRFeature> BackgroundTable::Read(CqHandle handle) {
    std::uint8_t* data = nullptr;
    std::uint32_t length = 0;
    int type = 0;
    CVector centre;
    CVector size;
    double rotation = 0.0;
    if (handle != kOnly || !IsThere(Db()) ||
        Db().ReadBackgroundImageFile(data, length, type, centre, size, rotation) == 0) {
        return nullptr;
    }
    const std::unique_ptr<std::uint8_t, void (*)(void*)> bytes(data, std::free);
    const CqImagePlace rounded{centre.GetX(), centre.GetY(), size.GetX(), size.GetY(), rotation};
    const CqImagePlace place = CqImagePlace::Of(Db()).value_or(rounded);
    FeatureFiller filler = Fill(handle);
    filler.SetBytes(FieldRole::Image, data, length);
    filler.Set(FieldRole::ImageType, type);
    filler.Set(FieldRole::Easting, place.east);
    filler.Set(FieldRole::Northing, place.north);
    filler.Set(FieldRole::Width, place.width);
    filler.Set(FieldRole::ImageHeight, place.height);
    filler.Set(FieldRole::Rotation, place.rotation);
    return filler.Take();
}

}  // namespace cqsurvey::gdal
