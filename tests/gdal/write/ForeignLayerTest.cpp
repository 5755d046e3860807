#include "gdal/write/ForeignLayer.h"

#include <cmath>

#include "gdal/GdalJob.h"

namespace cqsurvey::gdal {
namespace {

class ForeignLayerTest : public GdalJob {
 protected:
    static OGRErr Add(OGRLayer& layer, const char* wkt,
                      const std::vector<std::pair<const char*, const char*>>& fields = {},
                      const char* style = nullptr, GIntBig id = OGRNullFID) {
        OGRFeature feature(layer.GetLayerDefn());
        if (wkt != nullptr) {
            OGRGeometry* geometry = nullptr;
            EXPECT_EQ(OGRGeometryFactory::createFromWkt(wkt, nullptr, &geometry), OGRERR_NONE);
            feature.SetGeometryDirectly(geometry);
        }
        for (const auto& [name, value] : fields) {
            feature.SetField(name, value);
        }
        if (style != nullptr) {
            feature.SetStyleString(style);
        }
        feature.SetFID(id);
        return layer.CreateFeature(&feature);
    }
    static void AddFields(OGRLayer& layer, const std::vector<const char*>& names) {
        for (const char* name : names) {
            OGRFieldDefn field(name, OFTString);
            ASSERT_EQ(layer.CreateField(&field), OGRERR_NONE);
        }
    }
    /// The job that was made, as a person would look at it.
    void Look(CqSurveyDB& db) const { db.OpenReadOnly(FromUtf8(Path("new.job"))); }
};

TEST_F(ForeignLayerTest, PointsAreRecordedWithTheFieldsOfTheirNames) {
    {
        const Dataset dataset = Create();
        ASSERT_NE(dataset, nullptr);
        OGRLayer* layer = dataset->CreateLayer("Trees", nullptr, wkbPoint25D);
        ASSERT_NE(layer, nullptr);
        AddFields(*layer, {"Name", "CODE", "remark", "group", "datetime", "species"});
        const Messages messages;
        EXPECT_EQ(Add(*layer, "POINT Z (1 2 3)",
                      {{"Name", "T1"},
                       {"CODE", "17"},
                       {"remark", "old oak"},
                       {"group", "Day 2"},
                       {"datetime", "2023/11/14 23:13:20+01"},
                       {"species", "Quercus"}}),
                  OGRERR_NONE);
        EXPECT_EQ(Add(*layer, "POINT (4 5)", {{"CODE", "BIRCH"}, {"remark", "young"}}),
                  OGRERR_NONE);
        EXPECT_NE(messages.Text().find("left out: species"), std::string::npos) << messages.Text();
    }
    CqSurveyDB db;
    Look(db);
    const CqHandle handle = db.GetCoordRecHandleByPtName(u"T1");
    CqCoordRec record;
    ASSERT_EQ(db.GetCoordRec(handle, record), 1);
    std::array<double, 3> at{};
    record.GetPoint(at.data());
    EXPECT_EQ(at, (std::array<double, 3>{1, 2, 3}));
    EXPECT_EQ(record.GetCode(), 17);
    EXPECT_EQ(record.GetRecTime(), 1700000000U);
    EXPECT_EQ(db.GetGroupName(record.GetGroup()), u"Day 2");
    CString text;
    ASSERT_EQ(db.GetCoordDescription(handle, text), 1);
    EXPECT_EQ(text, u"old oak");
    const CqCadEntityPtr symbol =
        ReadEntity(db, db.GetCadEntityHandleByCoordRecHandle(handle), EntSiPnt);
    EXPECT_EQ(symbol->GetLayer(), u"Trees");
    // The other one: a code that is a word, and no height.
    CqHandle next = handle;
    db.GetNextCoordRec(next, record);
    ASSERT_EQ(db.GetCoordRec(next, record), 1);
    record.GetPoint(at.data());
    EXPECT_TRUE(std::isnan(at[2]));
    ASSERT_EQ(db.GetCoordDescription(next, text), 1);
    EXPECT_EQ(text, u"BIRCH young");
}

TEST_F(ForeignLayerTest, OptionsNameFieldsAndTheLayer) {
    {
        const Dataset dataset = Create();
        std::array<const char*, 4> options{"NAME_FIELD=Bezeichnung", "LAYER=Plan", "HEIGHT_FIELD=H",
                                           nullptr};
        OGRLayer* layer =
            dataset->CreateLayer("x", nullptr, wkbPoint, const_cast<char**>(options.data()));
        ASSERT_NE(layer, nullptr);
        AddFields(*layer, {"name", "Bezeichnung", "H"});
        const Messages quiet;
        EXPECT_EQ(
            Add(*layer, "POINT (1 2)", {{"name", "wrong"}, {"Bezeichnung", "right"}, {"H", "9.5"}}),
            OGRERR_NONE);
    }
    CqSurveyDB db;
    Look(db);
    CqCoordRec record;
    ASSERT_EQ(db.GetCoordRec(db.GetCoordRecHandleByPtName(u"right"), record), 1);
    std::array<double, 3> at{};
    record.GetPoint(at.data());
    EXPECT_EQ(at[2], 9.5);
    EXPECT_EQ(db.GetLayerColor(u"Plan"), 7);
}

TEST_F(ForeignLayerTest, LinesPolygonsAndCollectionsBecomePolylinesAndCircles) {
    {
        const Dataset dataset = Create();
        OGRLayer* layer = dataset->CreateLayer("Road", nullptr, wkbUnknown);
        EXPECT_EQ(Add(*layer, "LINESTRING Z (0.1 0.2 0.3,1.1 1.2 1.3)", {}, "PEN(c:#00FF00)"),
                  OGRERR_NONE);
        EXPECT_EQ(Add(*layer, "POLYGON ((0 0,9 0,9 9,0 0),(1 1,2 1,2 2,1 1))"), OGRERR_NONE);
        EXPECT_EQ(Add(*layer, "COMPOUNDCURVE (CIRCULARSTRING (0 0,5 -5,10 0),(10 0,20 0))"),
                  OGRERR_NONE);
        EXPECT_EQ(Add(*layer, "CURVEPOLYGON (CIRCULARSTRING (0 0,10 0,0 0))"), OGRERR_NONE);
        EXPECT_EQ(Add(*layer, "GEOMETRYCOLLECTION (POINT (7 7),MULTILINESTRING ((0 0,1 1)))"),
                  OGRERR_NONE);
    }
    const Dataset dataset = Open({}, "new.job");
    ASSERT_NE(dataset, nullptr);
    OGRLayer* lines = dataset->GetLayerByName("polylines");
    std::vector<std::string> shapes;
    for (const auto& feature : lines) {
        OGRGeometry* flat = feature->GetGeometryRef();
        flat->flattenTo2D();
        shapes.push_back(flat->exportToWkt());
    }
    EXPECT_EQ(shapes, (std::vector<std::string>{
                          "COMPOUNDCURVE ((0.1 0.2,1.1 1.2))", "COMPOUNDCURVE ((0 0,9 0,9 9,0 0))",
                          "COMPOUNDCURVE ((1 1,2 1,2 2,1 1))",
                          "COMPOUNDCURVE (CIRCULARSTRING (0 0,5.0 -5,10 0),(10 0,20 0))",
                          "COMPOUNDCURVE ((0 0,1 1))"}));
    EXPECT_EQ(Texts(*lines, "color")[0], "3");
    EXPECT_EQ(Texts(*lines, "layer")[0], "Road");
    EXPECT_EQ(Texts(*dataset->GetLayerByName("circles"), "radius"),
              (std::vector<std::string>{"5"}));
    EXPECT_EQ(dataset->GetLayerByName("points")->GetFeatureCount(), 1);
}

TEST_F(ForeignLayerTest, TextsComeFromLabelsOrFromAField) {
    {
        const Dataset dataset = Create();
        OGRLayer* layer = dataset->CreateLayer("Labels", nullptr, wkbPoint);
        EXPECT_EQ(Add(*layer, "POINT (1 2)", {},
                      "LABEL(f:\"Arial\",t:\"Oak\",a:30,s:2.5g,c:#0000FF,p:5)"),
                  OGRERR_NONE);
        OGRLayer* named = dataset->CreateLayer("More", nullptr, wkbPoint);
        AddFields(*named, {"text"});
        EXPECT_EQ(Add(*named, "POINT (3 4)", {{"text", "Elm"}}), OGRERR_NONE);
    }
    const Dataset dataset = Open({}, "new.job");
    OGRLayer& texts = *dataset->GetLayerByName("texts");
    EXPECT_EQ(Texts(texts, "text"), (std::vector<std::string>{"Oak", "Elm"}));
    // 2.5 mm at the scale of a new job, 1:500.
    EXPECT_EQ(Texts(texts, "text_height"), (std::vector<std::string>{"2.5", "1.25"}));
    EXPECT_EQ(Texts(texts, "rotation"), (std::vector<std::string>{"30", "0"}));
    EXPECT_EQ(Texts(texts, "align_along"), (std::vector<std::string>{"1", "0"}));
    EXPECT_EQ(Texts(texts, "align_across"), (std::vector<std::string>{"2", "0"}));
    EXPECT_EQ(Texts(texts, "color"), (std::vector<std::string>{"5", "256"}));
    EXPECT_EQ(Texts(texts, "style"), (std::vector<std::string>{"Arial", ""}));
}

TEST_F(ForeignLayerTest, DuplicatesAndCutNamesAreWarningsWithCounts) {
    const Messages messages;
    {
        const Dataset dataset = Create();
        OGRLayer* layer = dataset->CreateLayer("Survey", nullptr, wkbPoint);
        AddFields(*layer, {"name"});
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(Add(*layer, "POINT (1 2)", {{"name", "P1"}}), OGRERR_NONE);
        }
        EXPECT_EQ(Add(*layer, "POINT (1 2)", {{"name", "a name of more than 19"}}), OGRERR_NONE);
    }
    EXPECT_NE(messages.Text().find("such as: P1 became P1_2"), std::string::npos);
    EXPECT_NE(messages.Text().find("got other names: 2 in all"), std::string::npos)
        << messages.Text();
    EXPECT_NE(messages.Text().find("Names of points were cut to 19 characters"), std::string::npos);
    EXPECT_EQ(Texts(*Open({}, "new.job")->GetLayer(0), "name"),
              (std::vector<std::string>{"P1", "P1_2", "P1_3", "a name of more than"}));
}

TEST_F(ForeignLayerTest, DuplicatesAreSkippedOrRefusedWhenAskedTo) {
    MakeJob([](CqSurveyDB& db) { AddPoint(db, u"P1", 0, 0); });
    for (const auto& [option, result] :
         {std::pair("DUPLICATES=SKIP", OGRERR_NONE), {"DUPLICATES=REFUSE", OGRERR_FAILURE}}) {
        const Messages messages;
        const Dataset dataset = OpenToWrite({option});
        OGRLayer* points = dataset->GetLayer(0);
        EXPECT_EQ(Add(*points, "POINT (1 2)", {{"name", "P1"}}), result) << option;
        EXPECT_EQ(points->GetFeatureCount(), 1);
        EXPECT_FALSE(messages.Text().empty());
    }
}

TEST_F(ForeignLayerTest, WhatCannotBeRecordedFailsWithItsReason) {
    const Dataset dataset = Create();
    OGRLayer* layer = dataset->CreateLayer("Mixed", nullptr, wkbUnknown);
    AddFields(*layer, {"code", "time"});
    const auto reason = [&](const char* wkt,
                            const std::vector<std::pair<const char*, const char*>>& fields) {
        const Messages messages;
        EXPECT_EQ(Add(*layer, wkt, fields), OGRERR_FAILURE);
        return messages.Text();
    };
    EXPECT_NE(reason(nullptr, {}).find("has no geometry"), std::string::npos);
    EXPECT_NE(reason("POINT EMPTY", {}).find("has no geometry"), std::string::npos);
    EXPECT_NE(reason("LINESTRING (0 0)", {}).find("two vertices"), std::string::npos);
    EXPECT_NE(reason("LINESTRING (0 0,1 1)", {{"code", "99999999999"}}).find("cannot hold"),
              std::string::npos);
    // What was refused leaves nothing behind, and the next one is recorded.
    EXPECT_EQ(Add(*layer, "LINESTRING (0 0,1 1)"), OGRERR_NONE);
}

TEST_F(ForeignLayerTest, TheFirstSystemIsStatedAndAnotherIsRefused) {
    OGRSpatialReference feet;
    feet.importFromEPSG(2230);
    OGRSpatialReference utm;
    utm.importFromEPSG(32633);
    OGRSpatialReference degrees;
    degrees.importFromEPSG(4326);
    {
        const Dataset dataset = Create();
        const Messages messages;
        EXPECT_EQ(dataset->CreateLayer("world", &degrees, wkbPoint), nullptr);
        EXPECT_NE(messages.Text().find("-t_srs"), std::string::npos);
        EXPECT_NE(dataset->CreateLayer("site", &feet, wkbPoint), nullptr);
        EXPECT_NE(dataset->CreateLayer("more", &feet, wkbPoint), nullptr);
        EXPECT_EQ(dataset->CreateLayer("away", &utm, wkbPoint), nullptr);
    }
    CqSurveyDB db;
    Look(db);
    EXPECT_EQ(CqJobSystem(db).GetSystem(), u"EPSG:2230");
    EXPECT_EQ(CqJobSystem(db).GetUnit(), CqLengthUnit::UsSurveyFoot);
}

TEST_F(ForeignLayerTest, VerticesGivePolylinesTheirExactBulgesAndTies) {
    constexpr double kBulge = 0.123456789012345678;
    {
        const Dataset dataset = Create();
        OGRLayer* points = dataset->CreateLayer("points", nullptr, wkbPoint25D);
        AddFields(*points, {"name"});
        OGRLayer* lines = dataset->CreateLayer("polylines", nullptr, wkbCompoundCurveZ);
        AddFields(*lines, {"layer"});
        OGRLayer* vertices = dataset->CreateLayer("vertices", nullptr, wkbPoint25D);
        AddFields(*vertices, {"polyline", "number", "bulge", "point"});
        ASSERT_EQ(Add(*points, "POINT Z (10 0 1)", {{"name", "A"}}, nullptr, 501), OGRERR_NONE);
        ASSERT_EQ(Add(*lines, "COMPOUNDCURVE Z (CIRCULARSTRING Z (0 0 1,5 -0.6172839 1,10 0 1))",
                      {}, nullptr, 901),
                  OGRERR_NONE);
        const std::string bulge = CPLSPrintf("%.17g", kBulge);
        EXPECT_EQ(Add(*vertices, "POINT Z (0 0 1)",
                      {{"polyline", "901"}, {"number", "1"}, {"bulge", bulge.c_str()}}),
                  OGRERR_NONE);
        EXPECT_EQ(Add(*vertices, "POINT Z (10 0 1)",
                      {{"polyline", "901"}, {"number", "2"}, {"bulge", "0"}, {"point", "501"}}),
                  OGRERR_NONE);
        const Messages messages;
        EXPECT_EQ(Add(*vertices, "POINT Z (0 0 1)", {{"polyline", "77"}, {"number", "1"}}),
                  OGRERR_NONE);
        EXPECT_NE(messages.Text().find("left out"), std::string::npos);
        EXPECT_NE(Add(*vertices, "POINT Z (3 3 1)", {{"polyline", "901"}, {"number", "1"}}),
                  OGRERR_NONE);
        EXPECT_NE(Add(*vertices, "POINT Z (0 0 1)", {{"polyline", "901"}, {"number", "3"}}),
                  OGRERR_NONE);
    }
    const Dataset dataset = Open({}, "new.job");
    OGRLayer* vertices = dataset->GetLayerByName("vertices");
    const OGRFeatureUniquePtr first(vertices->GetNextFeature());
    EXPECT_EQ(first->GetFieldAsDouble("bulge"), kBulge);
    const OGRFeatureUniquePtr second(vertices->GetNextFeature());
    EXPECT_STREQ(second->GetFieldAsString("point_name"), "A");
}

TEST_F(ForeignLayerTest, AFileThatExistsIsNotOverwritten) {
    MakeJob([](CqSurveyDB& db) { AddPoint(db, u"P1", 0, 0); }, "new.job");
    const std::string before = Bytes("new.job");
    const Messages messages;
    EXPECT_EQ(Create(), nullptr);
    EXPECT_EQ(Bytes("new.job"), before);
}

TEST_F(ForeignLayerTest, AJobIsNotOverwrittenByAnotherDriverEither) {
    MakeJob([](CqSurveyDB& db) { AddPoint(db, u"P1", 0, 0); });
    const std::string before = Bytes();
    const Messages messages;
    GDALDriver* other = GetGDALDriverManager()->GetDriverByName("GPKG");
    ASSERT_NE(other, nullptr);
    EXPECT_EQ(Dataset(other->Create(Path().c_str(), 0, 0, 0, GDT_Unknown, nullptr)), nullptr);
    EXPECT_EQ(Bytes(), before);
    EXPECT_NE(messages.Text().find("is a job, which is not overwritten"), std::string::npos);
}

TEST_F(ForeignLayerTest, WhatWasWrittenIsReadInTheSameSession) {
    const Dataset dataset = Create();
    OGRLayer* trees = dataset->CreateLayer("Trees", nullptr, wkbPoint);
    AddFields(*trees, {"name", "code", "species"});
    EXPECT_TRUE(trees->TestCapability(OLCRandomRead));
    EXPECT_EQ(trees->GetFeatureCount(), 0);
    EXPECT_EQ(Add(*trees, "POINT (1 2)", {{"name", "T1"}, {"code", "17"}, {"species", "Oak"}},
                  nullptr, 901),
              OGRERR_NONE);
    EXPECT_EQ(Add(*trees, "POINT (3 4)", {{"name", "T2"}}), OGRERR_NONE);
    EXPECT_EQ(trees->GetFeatureCount(), 2);
    const OGRFeatureUniquePtr first(trees->GetFeature(901));
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first->GetFID(), 901);
    EXPECT_EQ(Wkt(*first), "POINT (1 2)");
    EXPECT_STREQ(first->GetFieldAsString("code"), "17");
    // The job has no place for this.
    EXPECT_EQ(first->IsFieldSetAndNotNull(2), 0);
    EXPECT_EQ(trees->GetFeature(902), nullptr);
    EXPECT_EQ(Texts(*trees, "name"), (std::vector<std::string>{"T1", "T2"}));
    trees->SetAttributeFilter("name = 'T2'");
    EXPECT_EQ(trees->GetFeatureCount(), 1);
    trees->SetAttributeFilter(nullptr);
    trees->SetSpatialFilterRect(0, 0, 2, 3);
    EXPECT_EQ(trees->GetFeatureCount(), 1);
    OGREnvelope extent;
    trees->SetSpatialFilter(nullptr);
    EXPECT_EQ(trees->GetExtent(&extent, TRUE), OGRERR_NONE);
    EXPECT_EQ(extent.MaxX, 3);
}

TEST_F(ForeignLayerTest, GeometriesAreReadInTheTypeOfTheirLayer) {
    const Dataset dataset = Create();
    const auto read = [&](const char* name, OGRwkbGeometryType type, const char* wkt) {
        OGRLayer* layer = dataset->CreateLayer(name, nullptr, type);
        EXPECT_EQ(Add(*layer, wkt, {}, nullptr, 7), OGRERR_NONE) << wkt;
        const OGRFeatureUniquePtr feature(layer->GetFeature(7));
        return feature != nullptr ? Wkt(*feature) : "gone";
    };
    for (const auto& [name, type, wkt] :
         {std::tuple("a", wkbLineString, "LINESTRING (0 0,9 9)"),
          {"b", wkbLineString25D, "LINESTRING Z (0 0 1,9 9 2)"},
          {"c", wkbPolygon, "POLYGON ((0 0,9 0,9 9,0 0),(5 1,6 1,6 2,5 1))"},
          {"d", wkbMultiPoint, "MULTIPOINT ((0 0),(1 1))"},
          {"e", wkbMultiLineString, "MULTILINESTRING ((0 0,1 1),(2 2,3 3))"},
          {"f", wkbCompoundCurve,
           "COMPOUNDCURVE (CIRCULARSTRING (0 0,5.0 -5,10 0),(10 0,20 0))"}}) {
        EXPECT_EQ(read(name, type, wkt), wkt) << name;
    }
}

TEST_F(ForeignLayerTest, TheJobsOwnLayersAreReadAsTheyAreMade) {
    const Dataset dataset = Create();
    OGRLayer* points = dataset->CreateLayer("points", nullptr, wkbPoint25D);
    AddFields(*points, {"name", "layer"});
    EXPECT_EQ(Add(*points, "POINT Z (1 2 3)", {{"name", "A"}, {"layer", "Trees"}}), OGRERR_NONE);
    OGRLayer* groups = dataset->CreateLayer("groups", nullptr, wkbNone);
    AddFields(*groups, {"name"});
    EXPECT_EQ(Add(*groups, nullptr, {{"name", "Day 1"}}), OGRERR_NONE);
    EXPECT_EQ(Texts(*points, "layer"), (std::vector<std::string>{"Trees"}));
    EXPECT_EQ(Texts(*groups, "name"), (std::vector<std::string>{"Day 1"}));
}

TEST_F(ForeignLayerTest, WhatIsUndoneIsNotRead) {
    const Dataset dataset = Create();
    OGRLayer* layer = dataset->CreateLayer("Trees", nullptr, wkbPoint);
    AddFields(*layer, {"name"});
    EXPECT_EQ(Add(*layer, "POINT (1 2)", {{"name", "kept"}}), OGRERR_NONE);
    ASSERT_EQ(dataset->StartTransaction(), OGRERR_NONE);
    EXPECT_EQ(Add(*layer, "POINT (3 4)", {{"name", "undone"}}, nullptr, 77), OGRERR_NONE);
    EXPECT_EQ(layer->GetFeatureCount(), 2);
    ASSERT_EQ(dataset->RollbackTransaction(), OGRERR_NONE);
    // The next record has the handle of the one that was undone.
    EXPECT_EQ(Add(*layer, "POINT (5 6)", {{"name", "next"}}, nullptr, 78), OGRERR_NONE);
    EXPECT_EQ(Texts(*layer, "name"), (std::vector<std::string>{"kept", "next"}));
    EXPECT_EQ(layer->GetFeature(77), nullptr);
}

TEST_F(ForeignLayerTest, ASystemThatWasStatedInAnUndoneTransactionIsGone) {
    OGRSpatialReference utm;
    utm.importFromEPSG(32633);
    const Dataset dataset = Create();
    ASSERT_EQ(dataset->StartTransaction(), OGRERR_NONE);
    OGRLayer* layer = dataset->CreateLayer("Trees", &utm, wkbPoint);
    ASSERT_NE(layer, nullptr);
    EXPECT_NE(layer->GetSpatialRef(), nullptr);
    ASSERT_EQ(dataset->RollbackTransaction(), OGRERR_NONE);
    EXPECT_EQ(layer->GetSpatialRef(), nullptr);
}

TEST_F(ForeignLayerTest, ACollectionOfWhichAPartIsRefusedLeavesNothingInATransaction) {
    const Dataset dataset = Create({"DUPLICATES=REFUSE"});
    OGRLayer* layer = dataset->CreateLayer("Mixed", nullptr, wkbUnknown);
    AddFields(*layer, {"name", "line_type"});
    ASSERT_EQ(dataset->StartTransaction(), OGRERR_NONE);
    const Messages quiet;
    EXPECT_NE(Add(*layer, "GEOMETRYCOLLECTION (POINT (1 2),LINESTRING (0 0))"), OGRERR_NONE);
    EXPECT_NE(Add(*layer, "GEOMETRYCOLLECTION (POINT (1 2),LINESTRING (0 0,1 1))",
                  {{"line_type", "99999999999"}}),
              OGRERR_NONE);
    EXPECT_NE(Add(*layer, "MULTIPOINT ((1 2),(3 4))", {{"name", "twice"}}), OGRERR_NONE);
    ASSERT_EQ(dataset->CommitTransaction(), OGRERR_NONE);
    EXPECT_EQ(layer->GetFeatureCount(), 0);
    EXPECT_EQ(Open({}, "new.job")->GetLayerByName("points")->GetFeatureCount(), 0);
}

TEST_F(ForeignLayerTest, AnUndoneFeatureDoesNotTakeTheTiesOfOthers) {
    {
        const Dataset dataset = Create({"DUPLICATES=REFUSE"});
        OGRLayer* points = dataset->CreateLayer("points", nullptr, wkbPoint25D);
        AddFields(*points, {"name"});
        OGRLayer* lines = dataset->CreateLayer("polylines", nullptr, wkbCompoundCurveZ);
        AddFields(*lines, {"layer"});
        OGRLayer* vertices = dataset->CreateLayer("vertices", nullptr, wkbPoint25D);
        AddFields(*vertices, {"polyline", "number", "bulge", "point"});
        ASSERT_EQ(Add(*points, "POINT Z (0 0 1)", {{"name", "A"}}, nullptr, 501), OGRERR_NONE);
        ASSERT_EQ(Add(*lines, "LINESTRING Z (0 0 1,9 9 1)", {}, nullptr, 901), OGRERR_NONE);
        {
            // As ogr2ogr -skipfailures does.
            const Messages quiet;
            ASSERT_EQ(dataset->StartTransaction(), OGRERR_NONE);
            EXPECT_NE(Add(*points, "POINT Z (5 5 1)", {{"name", "A"}}, nullptr, 502), OGRERR_NONE);
            ASSERT_EQ(dataset->RollbackTransaction(), OGRERR_NONE);
        }
        EXPECT_EQ(Add(*vertices, "POINT Z (0 0 1)",
                      {{"polyline", "901"}, {"number", "1"}, {"bulge", "0"}, {"point", "501"}}),
                  OGRERR_NONE);
    }
    EXPECT_EQ(Texts(*Open({}, "new.job")->GetLayerByName("vertices"), "point_name"),
              (std::vector<std::string>{"A", ""}));
}

}  // namespace
}  // namespace cqsurvey::gdal
