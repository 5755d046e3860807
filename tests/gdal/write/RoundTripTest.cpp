#include <gdal_utils.h>

#include <sstream>

#include "gdal/GdalJob.h"

namespace cqsurvey::gdal {
namespace {

/// A job that goes through GDAL to another format and back.
class RoundTripTest : public GdalJob {
 protected:
    /// What ogr2ogr does.
    [[nodiscard]] bool Translate(const char* from, const char* to, const char* format) const {
        const Dataset source(GDALDataset::Open(Path(from).c_str(), GDAL_OF_VECTOR));
        std::array<const char*, 3> arguments{"-f", format, nullptr};
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

}  // namespace
}  // namespace cqsurvey::gdal
