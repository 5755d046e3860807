#include <gdal_utils.h>

#include <cstdlib>
#include <sstream>

#include "gdal/GdalJob.h"

namespace cqsurvey::gdal {
namespace {

/// A job that goes through GDAL to another format and back.
class RoundTripTest : public GdalJob {
 protected:
    /// What ogr2ogr does.
    [[nodiscard]] bool Translate(const char* from, const char* to, const char* format,
                                 const std::vector<const char*>& layers = {}) const {
        const Dataset source(GDALDataset::Open(Path(from).c_str(), GDAL_OF_VECTOR));
        std::vector<const char*> arguments{"-f", format};
        arguments.insert(arguments.end(), layers.begin(), layers.end());
        arguments.push_back(nullptr);
        GDALVectorTranslateOptions* options =
            GDALVectorTranslateOptionsNew(const_cast<char**>(arguments.data()), nullptr);
        GDALDatasetH handle = source.get();
        const Dataset target(GDALDataset::FromHandle(
            GDALVectorTranslate(Path(to).c_str(), nullptr, 1, &handle, options, nullptr)));
        GDALVectorTranslateOptionsFree(options);
        return source && target;
    }

    /// All features of the layers, without their ids, which a job gives anew.
    [[nodiscard]] std::string Contents(const char* name) const {
        std::ostringstream out;
        const Dataset dataset = Open({}, name);
        for (const char* layerName :
             {"points", "polylines", "vertices", "texts", "circles", "bitmaps"}) {
            OGRLayer* layer = dataset->GetLayerByName(layerName);
            for (const auto& feature : layer) {
                out << layerName;
                for (int i = 0; i < feature->GetFieldCount(); ++i) {
                    const std::string field = feature->GetFieldDefnRef(i)->GetNameRef();
                    if (field == "polyline" || field == "point") {
                        continue;
                    }
                    out << " | ";
                    if (feature->IsFieldSetAndNotNull(i) == 0) {
                        out << "-";
                    } else if (feature->GetFieldDefnRef(i)->GetType() == OFTReal) {
                        out << CPLSPrintf("%.17g", feature->GetFieldAsDouble(i));
                    } else {
                        out << feature->GetFieldAsString(i);
                    }
                }
                out << " | " << Wkt(*feature) << "\n";
            }
        }
        return out.str();
    }
};

TEST_F(RoundTripTest, AGeoPackageGivesTheSameJobBack) {
    MakeJob([](CqSurveyDB& db) {
        CqJobSystem(db).SetSystem(u"EPSG:32633");
        CqJobSystem(db).SetUnit(CqLengthUnit::Metre);
        db.AddLayer(u"Straße", 3, 2);
        db.AddGroup(u"empty");
        db.AddGroup(u"Day 2");
        db.SetCurrentGroup(u"Day 2");
        const CqHandle first = AddPoint(db, u"A 桜", 431000.1, 5412000.2, 300.3, -7);
        ASSERT_EQ(db.AddCoordDescription(first, u"TR \"oak\", 12\""), 1);
        db.EditCoordRecFlags(first, 0x80000000U);
        AddPoint(db, u"", 431010.1, 5412010.2, kNoHeight);
        db.SetCurrentLayer(u"Straße");
        db.SetCurrentColor(-40);
        const CqHandle line = AddLine(db,
                                      {{431000.1, 5412000.2, 300.3, 0.1},
                                       {431010.7, 5412010.9, kNoHeight, -2.7182818284590452},
                                       {431020.3, 5412000.1, 4, 0}},
                                      256);
        ASSERT_EQ(db.LinkSiPntAndVertex(db.GetCadEntityHandleByCoordRecHandle(first), line + 1), 1);
        db.SetCurrentColor(256);
        AddLine(db, {{0, 0, 1, 1}, {10, 0, 1, 1}, {0, 0, 1, 0}});
        const std::array<double, 3> at{431000.123, 5412000.456, 300.789};
        db.AddCircle(at.data(), 0.1, 3, 5);
        db.AddText(at.data(), u"Say \"hi\"\nthere", 2, 3, u"Roman S", 2.5, 33.3, 1, 0xFFFFFFFFU, -3,
                   4);
        db.AddBitmap(at.data(), u"north.bmp", CVector(12.5, 12.5));
    });
    ASSERT_TRUE(Translate("site.job", "site.gpkg", "GPKG"));
    ASSERT_TRUE(Translate("site.gpkg", "back.job", "CqSurvey"));
    EXPECT_EQ(Contents("back.job"), Contents("site.job"));
    CqSurveyDB db;
    db.OpenReadOnly(FromUtf8(Path("back.job")));
    EXPECT_EQ(CqJobSystem(db).GetSystem(), u"EPSG:32633");
    EXPECT_EQ(db.GetLayerColor(u"Straße"), 3);
    EXPECT_EQ(db.GetLayerLine(u"Straße"), 2);
    EXPECT_NE(db.GetGroupID(u"empty"), 0);
    EXPECT_EQ(CqJobCheck(db).GetCount(), 0U);
}

TEST_F(RoundTripTest, LayersKeepTheirOrderWhenTheirTableGoesFirst) {
    MakeJob([](CqSurveyDB& db) {
        for (const char16_t* name : {u"C", u"A", u"B"}) {
            db.AddLayer(name, 3, 0);
        }
        for (const char16_t* name : {u"B", u"A"}) {
            db.SetCurrentLayer(name);
            AddPoint(db, name, 1, 2);
        }
    });
    ASSERT_TRUE(Translate("site.job", "site.gpkg", "GPKG"));
    ASSERT_TRUE(Translate("site.gpkg", "back.job", "CqSurvey", {"layers", "points"}));
    EXPECT_EQ(Texts(*Open({}, "back.job")->GetLayerByName("layers"), "name"),
              (std::vector<std::string>{"0", "C", "A", "B"}));
}

TEST_F(RoundTripTest, TheBackgroundImageTravelsWithItsPlaceAndItsSettings) {
    const std::string image("\x89PNG\r\n\x1a\n\0 and so on", 18);
    std::ofstream(Path("image.png"), std::ios::binary) << image;
    MakeJob([&](CqSurveyDB& db) {
        AddPoint(db, u"A", 0, 0);
        ASSERT_EQ(
            db.StoreBackgroundImageFile(FromUtf8(Path("image.png")), 3,
                                        CVector(431000.125, 5412000.25), CVector(200, 100), 12.5),
            1);
        ASSERT_EQ(db.SetBackgroundImageSettings(-20, 150, 1), 1);
        ASSERT_EQ(db.WriteSettingsString(u"SETTINGS", u"Mapscale", u"250"), 1);
    });
    ASSERT_TRUE(Translate("site.job", "site.gpkg", "GPKG"));
    ASSERT_TRUE(Translate("site.gpkg", "back.job", "CqSurvey"));
    CqSurveyDB db;
    db.OpenReadOnly(FromUtf8(Path("back.job")));
    std::uint8_t* data = nullptr;
    std::uint32_t length = 0;
    int type = 0;
    CVector centre;
    CVector size;
    double rotation = 0.0;
    ASSERT_EQ(db.ReadBackgroundImageFile(data, length, type, centre, size, rotation), 1);
    EXPECT_EQ(std::string(data, data + length), image);
    std::free(data);
    EXPECT_EQ(type, 3);
    const auto setting = [&](const char16_t* section, const char16_t* key) {
        CString text;
        db.GetSettingsString(section, key, text, CString());
        return text;
    };
    EXPECT_EQ(setting(u"BACKGROUND", u"CenterX"), u"431000.125");
    EXPECT_EQ(setting(u"BACKGROUND", u"CenterY"), u"5412000.250");
    EXPECT_EQ(setting(u"BACKGROUND", u"SizeX"), u"200.000");
    EXPECT_EQ(setting(u"BACKGROUND", u"SizeY"), u"100.000");
    EXPECT_EQ(setting(u"BACKGROUND", u"Rotation"), u"12.500");
    int brightness = 0;
    int contrast = 0;
    int monotone = 0;
    db.GetBackgroundImageSettings(brightness, contrast, monotone);
    EXPECT_EQ(brightness, -20);
    EXPECT_EQ(contrast, 150);
    EXPECT_EQ(monotone, 1);
    EXPECT_EQ(setting(u"SETTINGS", u"Mapscale"), u"250");
}

}  // namespace
}  // namespace cqsurvey::gdal
