#include "gdal/read/BackgroundTable.h"

#include <cpl_conv.h>

#include <cstdlib>
#include <string>

namespace cqsurvey::gdal {

namespace {

constexpr CqHandle kOnly = 1;

/// A number of the image's placement. The settings have more digits of it than the operation that
/// reads the image hands out.
double Placement(CqSurveyDB& db, const char16_t* key, double read) {
    CString text;
    if (db.GetSettingsString(CqSurveyDB::m_BGSettingsSection, key, text, CString()) == 0) {
        return read;
    }
    const std::string number = ToUtf8(text);
    char* end = nullptr;
    const double value = CPLStrtod(number.c_str(), &end);
    return end != number.c_str() ? value : read;
}

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
    FeatureFiller filler = Fill(handle);
    filler.SetBytes(FieldRole::Image, data, length);
    filler.Set(FieldRole::ImageType, type);
    filler.Set(FieldRole::Easting, Placement(Db(), u"CenterX", centre.GetX()));
    filler.Set(FieldRole::Northing, Placement(Db(), u"CenterY", centre.GetY()));
    filler.Set(FieldRole::Width, Placement(Db(), u"SizeX", size.GetX()));
    filler.Set(FieldRole::ImageHeight, Placement(Db(), u"SizeY", size.GetY()));
    filler.Set(FieldRole::Rotation, Placement(Db(), u"Rotation", rotation));
    return filler.Take();
}

}  // namespace cqsurvey::gdal
