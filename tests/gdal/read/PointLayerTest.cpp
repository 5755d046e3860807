#include "gdal/read/PointLayer.h"

#include <cmath>

#include "gdal/GdalJob.h"

namespace cqsurvey::gdal {
namespace {

class PointLayerTest : public GdalJob {};

TEST_F(PointLayerTest, APointHasItsAttributesAndItsHandle) {
    CqHandle handle = 0;
    MakeJob([&](CqSurveyDB& db) {
        AddPoint(db, u"first", 0, 0);
        db.AddGroup(u"Day 2");
        db.SetCurrentGroup(u"Day 2");
        db.AddLayer(u"Trees", 3, 0);
        db.SetCurrentLayer(u"Trees");
        const std::array<double, 3> at{2000.25, 5000.5, 312.125};
        handle = db.AddCoordRec(at.data(), u"P7 桜", 12, SurveyCoordType{4}, 0xFFFFFFFFU);
        db.EditCoordRecTime(handle, 1700000000);
        ASSERT_EQ(db.AddCoordDescription(handle, u"TR oak, bent"), 1);
    });
    const Dataset dataset = Open();
    ASSERT_NE(dataset, nullptr);
    OGRLayer* layer = dataset->GetLayerByName("points");
    const OGRFeatureUniquePtr point(layer->GetFeature(handle));
    ASSERT_NE(point, nullptr);
    EXPECT_EQ(point->GetFID(), handle);
    EXPECT_STREQ(point->GetFieldAsString("name"), "P7 桜");
    EXPECT_EQ(point->GetFieldAsInteger("code"), 12);
    EXPECT_STREQ(point->GetFieldAsString("code_word"), "TR");
    EXPECT_STREQ(point->GetFieldAsString("description"), "TR oak, bent");
    EXPECT_STREQ(point->GetFieldAsString("group_name"), "Day 2");
    EXPECT_STREQ(point->GetFieldAsString("layer"), "Trees");
    EXPECT_STREQ(point->GetFieldAsString("time"), "2023/11/14 22:13:20+00");
    EXPECT_EQ(point->GetFieldAsDouble("height"), 312.125);
    EXPECT_EQ(point->GetFieldAsInteger("origin"), 4);
    EXPECT_EQ(point->GetFieldAsInteger64("flags"), 0xFFFFFFFFLL);
    EXPECT_EQ(Wkt(*point), "POINT Z (2000.25 5000.5 312.125)");
    EXPECT_STREQ(point->GetStyleString(), "SYMBOL(c:#00ff00,id:\"ogr-sym-3\",s:5pt)");
}

TEST_F(PointLayerTest, AHeightThatWasNotMeasuredIsNullAndWhatTheReaderWantsInGeometries) {
    MakeJob([](CqSurveyDB& db) { AddPoint(db, u"P", 1, 2, kNoHeight); });
    {
        const Dataset dataset = Open();
        const OGRFeatureUniquePtr point(dataset->GetLayer(0)->GetNextFeature());
        EXPECT_TRUE(point->IsFieldNull(point->GetFieldIndex("height")));
        EXPECT_TRUE(std::isnan(point->GetGeometryRef()->toPoint()->getZ()));
    }
    const Dataset dataset = Open({"MISSING_HEIGHT=-99"});
    const OGRFeatureUniquePtr point(dataset->GetLayer(0)->GetNextFeature());
    EXPECT_TRUE(point->IsFieldNull(point->GetFieldIndex("height")));
    EXPECT_EQ(Wkt(*point), "POINT Z (1 2 -99)");
}

TEST_F(PointLayerTest, APointThatIsNotAtAPlaceHasNoGeometry) {
    MakeJob([](CqSurveyDB& db) { AddPoint(db, u"P", kNoHeight, 2); });
    const Dataset dataset = Open();
    const OGRFeatureUniquePtr point(dataset->GetLayer(0)->GetNextFeature());
    ASSERT_NE(point, nullptr);
    EXPECT_EQ(point->GetGeometryRef(), nullptr);
}

TEST_F(PointLayerTest, FiltersOnTheNameFindWhatAWalkFinds) {
    MakeJob([](CqSurveyDB& db) {
        for (int i = 0; i < 50; ++i) {
            AddPoint(db, FromUtf8("P" + std::to_string(i)), i, i, 0, i % 3);
        }
        AddPoint(db, u"p7", 100, 100);
        AddPoint(db, u"", 101, 101);
    });
    const Dataset dataset = Open();
    OGRLayer& layer = *dataset->GetLayer(0);
    const auto found = [&](const char* filter) {
        EXPECT_EQ(layer.SetAttributeFilter(filter), OGRERR_NONE) << filter;
        return Texts(layer, "name");
    };
    using Names = std::vector<std::string>;
    // OGR makes no difference between the cases of letters.
    EXPECT_EQ(found("name = 'p7'"), (Names{"P7", "p7"}));
    EXPECT_EQ(found("name IN ('P3', 'P2', 'P3', 'nobody')"), (Names{"P2", "P3"}));
    EXPECT_EQ(found("code = 1 AND name = 'P4'"), (Names{"P4"}));
    EXPECT_EQ(found("code = 2 AND name = 'P4'"), Names{});
    EXPECT_EQ(found("name = 'P4' OR code = 99"), (Names{"P4"}));
    EXPECT_EQ(found("NOT name = 'P4'").size(), 51U);
    EXPECT_EQ(found("name IS NULL"), (Names{""}));
    layer.SetSpatialFilterRect(6.5, 6.5, 7.5, 7.5);
    EXPECT_EQ(found("name = 'P7'"), (Names{"P7"}));
    EXPECT_EQ(found("name = 'P8'"), Names{});
    EXPECT_EQ(found(nullptr), (Names{"P7"}));
    EXPECT_EQ(layer.GetFeatureCount(), 1);
}

TEST_F(PointLayerTest, FieldsAndGeometriesThatAreIgnoredAreNotReadButStylesAre) {
    MakeJob([](CqSurveyDB& db) { AddPoint(db, u"P", 1, 2); });
    const Dataset dataset = Open();
    OGRLayer& layer = *dataset->GetLayer(0);
    std::array<const char*, 4> ignored{"name", "OGR_GEOMETRY", "OGR_STYLE", nullptr};
    ASSERT_EQ(layer.SetIgnoredFields(ignored.data()), OGRERR_NONE);
    const OGRFeatureUniquePtr point(layer.GetNextFeature());
    EXPECT_FALSE(point->IsFieldSet(point->GetFieldIndex("name")));
    EXPECT_TRUE(point->IsFieldSet(point->GetFieldIndex("code")));
    EXPECT_EQ(point->GetGeometryRef(), nullptr);
    // QGIS ignores styles and draws with them.
    EXPECT_NE(point->GetStyleString(), nullptr);
}

TEST_F(PointLayerTest, APointInAGroupThatIsNotThereIsReadAsOneInNone) {
    MakeJob([](CqSurveyDB& db) {
        for (const std::uint16_t group : {std::uint16_t{77}, std::uint16_t{0}}) {
            const CqHandle point = AddPoint(db, group == 0 ? u"B" : u"A", 0, 0);
            ASSERT_EQ(db.EditCoordRecGroup(point, group), 1);
        }
    });
    const Dataset dataset = Open();
    const Messages messages;
    EXPECT_EQ(Texts(*dataset->GetLayer(0), "name"), (std::vector<std::string>{"A", "B"}));
    EXPECT_EQ(Texts(*dataset->GetLayer(0), "group_name"), (std::vector<std::string>{"", ""}));
    EXPECT_EQ(messages.Text(), "");
}

}  // namespace
}  // namespace cqsurvey::gdal
