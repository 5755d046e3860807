#include "gdal/read/EntityLayer.h"

#include "gdal/GdalJob.h"

namespace cqsurvey::gdal {
namespace {

class EntityLayerTest : public GdalJob {
 protected:
    void DrawAll() {
        MakeJob([&](CqSurveyDB& db) {
            AddPoint(db, u"A", 0, 0, 0);
            m_point = AddPoint(db, u"B", 10, 0, 2);
            m_line = AddLine(db, {{0, 0, 0, 0}, {10, 0, 2, -1}, {20, 0, 4, 0}}, 1);
            m_area = AddLine(db, {{0, 0, 1, 0}, {4, 0, 1, 1}, {4, 4, 1, 0}, {0, 0, 1, 0}});
            const std::array<double, 3> at{5, 6, 7};
            m_circle = db.AddCircle(at.data(), 2.5, 2, 11);
            m_text = db.AddText(at.data(), u"Say \"hi\"", 1, 2, u"Roman", 3, 45, 12, 5, 6, 7);
            m_bitmap = db.AddBitmap(at.data(), u"north.bmp", CVector(4, 4));
            CqHandle next = m_line;
            CqCadEntity* object = nullptr;
            db.GetNextCadEntity(next, object);
            CqSurveyDB::DeleteCqCadEntityObject(object);
            m_vertex = next + 1;
            ASSERT_EQ(
                db.LinkSiPntAndVertex(db.GetCadEntityHandleByCoordRecHandle(m_point), m_vertex), 1);
        });
    }

    CqHandle m_point = 0;
    CqHandle m_line = 0;
    CqHandle m_area = 0;
    CqHandle m_circle = 0;
    CqHandle m_text = 0;
    CqHandle m_bitmap = 0;
    CqHandle m_vertex = 0;
};

TEST_F(EntityLayerTest, PolylinesHaveTrueArcs) {
    DrawAll();
    const Dataset dataset = Open();
    const OGRFeatureUniquePtr line(dataset->GetLayerByName("polylines")->GetFeature(m_line));
    ASSERT_NE(line, nullptr);
    EXPECT_EQ(Wkt(*line),
              "COMPOUNDCURVE Z ((0 0 0,10 0 2),CIRCULARSTRING Z (10 0 2,15 5 3,20 0 4))");
    EXPECT_EQ(line->GetFieldAsInteger("closed"), 0);
    EXPECT_EQ(line->GetFieldAsInteger("line_type"), 1);
    EXPECT_STREQ(line->GetFieldAsString("layer"), "0");
    // The first layer of a job is red.
    EXPECT_STREQ(line->GetStyleString(), "PEN(c:#ff0000,p:\"3mm 1.5mm\",id:\"ogr-pen-2\")");
}

TEST_F(EntityLayerTest, ClosedPolylinesAreAreasWhenAskedFor) {
    DrawAll();
    EXPECT_EQ(Open()->GetLayerByName("areas"), nullptr);
    const Dataset dataset = Open({"AREAS=YES"});
    OGRLayer* areas = dataset->GetLayerByName("areas");
    ASSERT_NE(areas, nullptr);
    EXPECT_EQ(areas->GetFeatureCount(), 1);
    EXPECT_EQ(areas->GetFeature(m_line), nullptr);
    const OGRFeatureUniquePtr area(areas->GetNextFeature());
    EXPECT_EQ(area->GetFID(), m_area);
    EXPECT_EQ(Wkt(*area),
              "CURVEPOLYGON Z (COMPOUNDCURVE Z ((0 0 1,4 0 1),CIRCULARSTRING Z (4 0 1,6 2 1,4 4 "
              "1),(4 4 1,0 0 1)))");
}

TEST_F(EntityLayerTest, VerticesNameTheirPolylineAndTheirPoint) {
    DrawAll();
    const Dataset dataset = Open();
    OGRLayer* layer = dataset->GetLayerByName("vertices");
    EXPECT_EQ(layer->GetFeatureCount(), 7);
    const OGRFeatureUniquePtr vertex(layer->GetFeature(m_vertex));
    ASSERT_NE(vertex, nullptr);
    EXPECT_EQ(vertex->GetFieldAsInteger64("polyline"), m_line);
    EXPECT_EQ(vertex->GetFieldAsInteger("number"), 2);
    EXPECT_EQ(vertex->GetFieldAsDouble("bulge"), -1);
    EXPECT_EQ(vertex->GetFieldAsInteger64("point"), m_point);
    EXPECT_STREQ(vertex->GetFieldAsString("point_name"), "B");
    EXPECT_EQ(Wkt(*vertex), "POINT Z (10 0 2)");
    const OGRFeatureUniquePtr free(layer->GetFeature(m_vertex + 1));
    EXPECT_TRUE(free->IsFieldSetAndNotNull(free->GetFieldIndex("point")) == 0);
}

TEST_F(EntityLayerTest, TextsHaveALabel) {
    DrawAll();
    const Dataset dataset = Open();
    const OGRFeatureUniquePtr text(dataset->GetLayerByName("texts")->GetFeature(m_text));
    ASSERT_NE(text, nullptr);
    EXPECT_STREQ(text->GetFieldAsString("text"), "Say \"hi\"");
    EXPECT_EQ(text->GetFieldAsInteger("align_along"), 1);
    EXPECT_EQ(text->GetFieldAsInteger("align_across"), 2);
    EXPECT_EQ(text->GetFieldAsInteger64("option_style"), 5);
    EXPECT_STREQ(text->GetStyleString(),
                 "LABEL(f:\"Roman\",t:\"Say \\\"hi\\\"\",a:45,s:3g,c:#ff0000,p:5)");
}

TEST_F(EntityLayerTest, CirclesAndBitmapsAreAtTheirPlaces) {
    DrawAll();
    const Dataset dataset = Open();
    const OGRFeatureUniquePtr circle(dataset->GetLayerByName("circles")->GetFeature(m_circle));
    ASSERT_NE(circle, nullptr);
    EXPECT_EQ(circle->GetFieldAsDouble("radius"), 2.5);
    EXPECT_EQ(circle->GetFieldAsInteger("code"), 11);
    EXPECT_EQ(Wkt(*circle), "CIRCULARSTRING Z (7.5 6.0 7,5.0 8.5 7,2.5 6.0 7,5.0 3.5 7,7.5 6.0 7)");
    const OGRFeatureUniquePtr bitmap(dataset->GetLayerByName("bitmaps")->GetFeature(m_bitmap));
    ASSERT_NE(bitmap, nullptr);
    EXPECT_STREQ(bitmap->GetFieldAsString("resource"), "north.bmp");
    EXPECT_EQ(bitmap->GetFieldAsDouble("width"), 4);
}

TEST_F(EntityLayerTest, AHandleOfAnotherKindIsNoFeature) {
    DrawAll();
    const Dataset dataset = Open();
    EXPECT_EQ(dataset->GetLayerByName("circles")->GetFeature(m_text), nullptr);
    EXPECT_EQ(dataset->GetLayerByName("texts")->GetFeature(1), nullptr);
    EXPECT_EQ(dataset->GetLayerByName("texts")->GetFeature(0), nullptr);
    EXPECT_EQ(dataset->GetLayerByName("texts")->GetFeature(-1), nullptr);
    EXPECT_EQ(dataset->GetLayerByName("texts")->GetFeature(5000000000), nullptr);
}

TEST_F(EntityLayerTest, HiddenEntitiesAreMarkedAndCanBeLeftOut) {
    MakeJob([](CqSurveyDB& db) {
        const std::array<double, 3> at{0, 0, 0};
        db.AddCircle(at.data(), 1, 0, 1);
        db.SetCurrentColor(-3);
        db.AddCircle(at.data(), 1, 0, 2);
        db.SetCurrentColor(256);
        db.AddLayer(u"Hidden", 4, 0);
        db.SetCurrentLayer(u"Hidden");
        db.AddCircle(at.data(), 1, 0, 3);
        AddPoint(db, u"P", 0, 0);
        db.ShowLayer(u"Hidden", 0);
    });
    const Dataset all = Open();
    EXPECT_EQ(Texts(*all->GetLayerByName("circles"), "hidden"),
              (std::vector<std::string>{"0", "1", "1"}));
    const Dataset shown = Open({"HIDDEN=NO"});
    OGRLayer* circles = shown->GetLayerByName("circles");
    EXPECT_EQ(Texts(*circles, "code"), (std::vector<std::string>{"1"}));
    EXPECT_EQ(circles->GetFeatureCount(), 1);
    EXPECT_FALSE(circles->TestCapability(OLCFastFeatureCount));
    EXPECT_EQ(shown->GetLayerByName("points")->GetFeatureCount(), 0);
}

TEST_F(EntityLayerTest, ASpatialFilterFindsArcsThatOnlyBendIntoIt) {
    DrawAll();
    const Dataset dataset = Open();
    OGRLayer& lines = *dataset->GetLayerByName("polylines");
    lines.SetSpatialFilterRect(14, 4.5, 16, 5.5);
    EXPECT_EQ(lines.GetFeatureCount(), 1);
    lines.SetSpatialFilterRect(14, 6, 16, 7);
    EXPECT_EQ(lines.GetFeatureCount(), 0);
    lines.SetSpatialFilter(nullptr);
    EXPECT_EQ(lines.GetFeatureCount(), 2);
}

TEST_F(EntityLayerTest, TablesShowLayersGroupsAndSettings) {
    MakeJob([](CqSurveyDB& db) {
        db.AddLayer(FromUtf8(std::string(51, 'L')), -5, 3);
        db.AddGroup(u"Day 2");
        ASSERT_EQ(db.WriteSettingsString(u"SETTINGS", u"Mapscale", u"250"), 1);
    });
    const Dataset dataset = Open();
    OGRLayer& layers = *dataset->GetLayerByName("layers");
    EXPECT_EQ(Texts(layers, "name"), (std::vector<std::string>{"0", std::string(51, 'L')}));
    EXPECT_EQ(Texts(layers, "color"), (std::vector<std::string>{"1", "-5"}));
    EXPECT_EQ(Texts(layers, "hidden"), (std::vector<std::string>{"0", "1"}));
    EXPECT_EQ(layers.GetFeature(99), nullptr);
    EXPECT_EQ(Texts(*dataset->GetLayerByName("groups"), "name"),
              (std::vector<std::string>{"Day 2"}));
    OGRLayer& settings = *dataset->GetLayerByName("settings");
    settings.SetAttributeFilter("key = 'Mapscale'");
    EXPECT_EQ(Texts(settings, "value"), (std::vector<std::string>{"250"}));
}

}  // namespace
}  // namespace cqsurvey::gdal
