#include "gdal/read/JobLayer.h"

#include <bit>
#include <cmath>
#include <cstdint>

#include "gdal/DrawingIndex.h"
#include "gdal/GdalJob.h"
#include "gdal/PolylineVertices.h"

namespace cqsurvey::gdal {
namespace {

/// Features that are read, changed and written back, or deleted.
class JobLayerTest : public GdalJob {
 protected:
    void Draw() {
        MakeJob([&](CqSurveyDB& db) {
            m_point = AddPoint(db, u"A", 0, 0, 1, 5);
            AddPoint(db, u"B", 10, 0, kNoHeight, 6);
            ASSERT_EQ(db.AddCoordDescription(m_point, u"TREE oak"), 1);
            m_line = AddLine(db, {{0, 0, 1, 0.3}, {10, 0, kNoHeight, -0.7}, {20, 0, 3, 0}}, 2);
            m_vertex = m_line + 1;
            ASSERT_EQ(
                db.LinkSiPntAndVertex(db.GetCadEntityHandleByCoordRecHandle(m_point), m_vertex), 1);
            const std::array<double, 3> at{5, 6, 7};
            m_circle = db.AddCircle(at.data(), 0.1, 2, 11);
            m_text = db.AddText(at.data(), u"Oak", 1, 2, u"Roman", 3, 45, 12, 5, 6, 7);
            m_bitmap = db.AddBitmap(at.data(), u"north.bmp", CVector(4, 4));
            db.AddGroup(u"Day 1");
        });
    }

    /// Reads a feature, lets `change` change it and writes it.
    template <class Change>
    static OGRErr Edit(GDALDataset& dataset, const char* layerName, CqHandle handle,
                       Change&& change) {
        OGRLayer* layer = dataset.GetLayerByName(layerName);
        const OGRFeatureUniquePtr feature(layer->GetFeature(static_cast<GIntBig>(handle)));
        EXPECT_NE(feature, nullptr) << layerName;
        change(*feature);
        return layer->SetFeature(feature.get());
    }
    static void Move(OGRFeature& feature, const char* wkt) {
        OGRGeometry* geometry = nullptr;
        ASSERT_EQ(OGRGeometryFactory::createFromWkt(wkt, nullptr, &geometry), OGRERR_NONE);
        feature.SetGeometryDirectly(geometry);
    }
    static std::string Shape(GDALDataset& dataset, const char* layer, CqHandle handle) {
        const OGRFeatureUniquePtr feature(
            dataset.GetLayerByName(layer)->GetFeature(static_cast<GIntBig>(handle)));
        return feature != nullptr ? Wkt(*feature) : "gone";
    }
    static std::string Value(GDALDataset& dataset, const char* layer, CqHandle handle,
                             const char* field) {
        const OGRFeatureUniquePtr feature(
            dataset.GetLayerByName(layer)->GetFeature(static_cast<GIntBig>(handle)));
        if (feature == nullptr) {
            return "gone";
        }
        return feature->IsFieldSetAndNotNull(feature->GetFieldIndex(field)) != 0
                   ? feature->GetFieldAsString(field)
                   : "null";
    }

    CqHandle m_point = 0;
    CqHandle m_line = 0;
    CqHandle m_vertex = 0;
    CqHandle m_circle = 0;
    CqHandle m_text = 0;
    CqHandle m_bitmap = 0;
};

TEST_F(JobLayerTest, APointBecomesWhatTheFeatureSays) {
    Draw();
    {
        const Dataset dataset = OpenToWrite();
        EXPECT_TRUE(dataset->GetLayerByName("points")->TestCapability(OLCRandomWrite));
        EXPECT_EQ(Edit(*dataset, "points", m_point,
                       [](OGRFeature& point) {
                           point.SetField("name", "A1");
                           point.SetField("code", 77);
                           point.SetField("description", "ash");
                           point.SetField("group_name", "Day 2");
                           point.SetField("layer", "Trees");
                           point.SetField("color", -4);
                           point.SetField("flags", GIntBig{9});
                           point.SetField("time", "2023/11/14 22:13:20+00");
                           Move(point, "POINT Z (3 4 5)");
                       }),
                  OGRERR_NONE);
    }
    const Dataset dataset = Open();
    const auto value = [&](const char* field) { return Value(*dataset, "points", m_point, field); };
    EXPECT_EQ(value("name"), "A1");
    EXPECT_EQ(value("code"), "77");
    EXPECT_EQ(value("description"), "ash");
    EXPECT_EQ(value("group_name"), "Day 2");
    EXPECT_EQ(value("layer"), "Trees");
    EXPECT_EQ(value("color"), "-4");
    EXPECT_EQ(value("hidden"), "1");
    EXPECT_EQ(value("flags"), "9");
    EXPECT_EQ(value("time"), "2023/11/14 22:13:20+00");
    EXPECT_EQ(value("height"), "5");
    EXPECT_EQ(Shape(*dataset, "points", m_point), "POINT Z (3 4 5)");
}

TEST_F(JobLayerTest, AFieldThatIsNullIsEmptiedAndOneThatIsNotSetStays) {
    Draw();
    const Dataset dataset = OpenToWrite();
    EXPECT_EQ(Edit(*dataset, "points", m_point,
                   [](OGRFeature& point) {
                       point.SetFieldNull(point.GetFieldIndex("description"));
                       point.SetFieldNull(point.GetFieldIndex("height"));
                       point.UnsetField(point.GetFieldIndex("name"));
                       point.UnsetField(point.GetFieldIndex("code"));
                   }),
              OGRERR_NONE);
    EXPECT_EQ(Value(*dataset, "points", m_point, "description"), "null");
    EXPECT_EQ(Value(*dataset, "points", m_point, "height"), "null");
    EXPECT_EQ(Value(*dataset, "points", m_point, "name"), "A");
    EXPECT_EQ(Value(*dataset, "points", m_point, "code"), "5");
}

TEST_F(JobLayerTest, AHeightThatWasNotMeasuredStaysOneWhateverStandsForIt) {
    Draw();
    Dataset dataset = OpenToWrite({"MISSING_HEIGHT=-99"});
    OGRLayer* points = dataset->GetLayerByName("points");
    ASSERT_EQ(points->SetAttributeFilter("name = 'B'"), OGRERR_NONE);
    const OGRFeatureUniquePtr point(points->GetNextFeature());
    EXPECT_EQ(Wkt(*point), "POINT Z (10 0 -99)");
    Move(*point, "POINT Z (11 0 -99)");
    ASSERT_EQ(points->SetFeature(point.get()), OGRERR_NONE);
    EXPECT_EQ(Value(*dataset, "points", static_cast<CqHandle>(point->GetFID()), "height"), "null");
    EXPECT_EQ(
        Edit(*dataset, "polylines", m_line, [](OGRFeature& line) { line.SetField("code", 3); }),
        OGRERR_NONE);
    dataset.reset();
    EXPECT_EQ(Shape(*Open(), "vertices", m_vertex + 1), "POINT Z (10 0 nan)");
}

TEST_F(JobLayerTest, ANameOfAnotherPointIsRefusedAndNothingChanges) {
    Draw();
    const Dataset dataset = OpenToWrite();
    const auto rename = [](OGRFeature& point) {
        point.SetField("name", "B");
        point.SetField("layer", "Trees");
        point.SetField("code", 99);
    };
    for (const bool within : {false, true}) {
        ASSERT_TRUE(!within || dataset->StartTransaction() == OGRERR_NONE);
        const Messages messages;
        EXPECT_NE(Edit(*dataset, "points", m_point, rename), OGRERR_NONE);
        EXPECT_NE(messages.Text().find("a point \"B\" already"), std::string::npos);
        ASSERT_TRUE(!within || dataset->CommitTransaction() == OGRERR_NONE);
        EXPECT_EQ(Value(*dataset, "points", m_point, "name"), "A");
        EXPECT_EQ(Value(*dataset, "points", m_point, "code"), "5");
        EXPECT_EQ(dataset->GetLayerByName("layers")->GetFeatureCount(), 1) << within;
    }
}

TEST_F(JobLayerTest, NumbersThatAJobCannotHoldAreRefusedAndNothingChanges) {
    Draw();
    const Dataset dataset = OpenToWrite();
    ASSERT_EQ(dataset->StartTransaction(), OGRERR_NONE);
    const Messages messages;
    for (const auto& [layer, handle] : {std::pair("points", m_point),
                                        {"polylines", m_line},
                                        {"texts", m_text},
                                        {"circles", m_circle},
                                        {"bitmaps", m_bitmap},
                                        {"vertices", m_vertex}}) {
        EXPECT_NE(Edit(*dataset, layer, handle,
                       [](OGRFeature& feature) {
                           feature.SetField("layer", "Elsewhere");
                           feature.SetField("color", 257);
                       }),
                  OGRERR_NONE);
        EXPECT_EQ(Value(*dataset, layer, handle, "layer"), "0");
        EXPECT_NE(Edit(*dataset, layer, handle,
                       [](OGRFeature& feature) {
                           feature.SetField("color", 3);
                           feature.SetGeometry(nullptr);
                       }),
                  OGRERR_NONE);
        EXPECT_EQ(Value(*dataset, layer, handle, "color"), "256") << layer;
    }
    EXPECT_NE(messages.Text().find("has no colour 257"), std::string::npos) << messages.Text();
    EXPECT_NE(messages.Text().find("has no geometry"), std::string::npos);
    ASSERT_EQ(dataset->CommitTransaction(), OGRERR_NONE);
    EXPECT_EQ(dataset->GetLayerByName("layers")->GetFeatureCount(), 1);
}

TEST_F(JobLayerTest, WhatNobodyChangedOfAPolylineStaysToTheBit) {
    Draw();
    {
        const Dataset dataset = OpenToWrite();
        EXPECT_EQ(Edit(*dataset, "polylines", m_line,
                       [](OGRFeature& line) {
                           line.SetField("line_type", 4);
                           line.SetField("hidden", 1);
                       }),
                  OGRERR_NONE);
    }
    CqSurveyDB db;
    db.OpenReadOnly(FromUtf8(Path()));
    const std::vector<JobVertex> vertices = ReadVertices(db, m_line);
    ASSERT_EQ(vertices.size(), 3U);
    EXPECT_EQ(vertices[0].shape.bulge, 0.3);
    EXPECT_EQ(vertices[1].shape.bulge, -0.7);
    EXPECT_TRUE(std::isnan(vertices[1].shape.height));
    EXPECT_NE(vertices[0].symbol, 0U);
    const CqCadEntityPtr line = ReadEntity(db, m_line, EntPline);
    EXPECT_EQ(line->GetLine(), 4);
    EXPECT_EQ(line->GetColor(), -256);
}

TEST_F(JobLayerTest, AVertexThatMovesLeavesItsPointAndTheOthersKeepTheirHandles) {
    Draw();
    const Dataset dataset = OpenToWrite();
    EXPECT_EQ(Edit(*dataset, "polylines", m_line,
                   [](OGRFeature& line) {
                       Move(line, "COMPOUNDCURVE Z ((100 100 1,10 0 2,15 5 2,20 0 3))");
                   }),
              OGRERR_NONE);
    EXPECT_EQ(Shape(*dataset, "polylines", m_line),
              "COMPOUNDCURVE Z ((100 100 1,10 0 2,15 5 2,20 0 3))");
    EXPECT_EQ(Value(*dataset, "vertices", m_vertex, "point"), "null");
    EXPECT_EQ(Shape(*dataset, "vertices", m_vertex + 1), "POINT Z (10 0 2)");
    EXPECT_EQ(Shape(*dataset, "vertices", m_vertex + 2), "POINT Z (20 0 3)");
    EXPECT_EQ(Value(*dataset, "vertices", m_vertex + 2, "number"), "4");
    // The extents follow.
    OGREnvelope extent;
    ASSERT_EQ(dataset->GetLayerByName("polylines")->GetExtent(&extent, FALSE), OGRERR_NONE);
    EXPECT_EQ(extent.MaxY, 100);
    EXPECT_EQ(Edit(*dataset, "polylines", m_line,
                   [](OGRFeature& line) { Move(line, "LINESTRING Z (10 0 2,20 0 3)"); }),
              OGRERR_NONE);
    EXPECT_EQ(Shape(*dataset, "vertices", m_vertex), "gone");
    EXPECT_EQ(Shape(*dataset, "vertices", m_vertex + 1), "POINT Z (10 0 2)");
    EXPECT_EQ(Edit(*dataset, "polylines", m_line,
                   [](OGRFeature& line) {
                       Move(line,
                            "COMPOUNDCURVE Z ((1 1 1,2 2 2,10 0 2),CIRCULARSTRING Z (10 0 2,15 -5 "
                            "2,20 0 3))");
                   }),
              OGRERR_NONE);
    EXPECT_EQ(
        Shape(*dataset, "polylines", m_line),
        "COMPOUNDCURVE Z ((1 1 1,2 2 2,10 0 2),CIRCULARSTRING Z (10 0 2,15.0 -5 2.5,20 0 3))");
    const Messages messages;
    EXPECT_NE(Edit(*dataset, "polylines", m_line,
                   [](OGRFeature& line) { Move(line, "MULTILINESTRING ((0 0,1 1),(2 2,3 3))"); }),
              OGRERR_NONE);
    EXPECT_NE(messages.Text().find("is not one line"), std::string::npos);
}

TEST_F(JobLayerTest, AVertexIsMovedBentAndTied) {
    Draw();
    const Dataset dataset = OpenToWrite();
    const Messages messages;
    EXPECT_EQ(Edit(*dataset, "vertices", m_vertex + 1,
                   [&](OGRFeature& vertex) {
                       vertex.SetField("bulge", 0.25);
                       vertex.SetField("point", static_cast<GIntBig>(m_point));
                   }),
              OGRERR_NONE);
    EXPECT_EQ(Value(*dataset, "vertices", m_vertex + 1, "bulge"), "0.25");
    EXPECT_EQ(Value(*dataset, "vertices", m_vertex + 1, "point_name"), "A");
    EXPECT_EQ(Edit(*dataset, "vertices", m_vertex,
                   [](OGRFeature& vertex) { vertex.SetFieldNull(vertex.GetFieldIndex("point")); }),
              OGRERR_NONE);
    EXPECT_EQ(Value(*dataset, "vertices", m_vertex, "point"), "null");
    EXPECT_EQ(messages.Text(), "");
    EXPECT_NE(Edit(*dataset, "vertices", m_vertex,
                   [](OGRFeature& vertex) { vertex.SetField("point", 4711); }),
              OGRERR_NONE);
    OGRLayer* vertices = dataset->GetLayerByName("vertices");
    EXPECT_EQ(vertices->DeleteFeature(static_cast<GIntBig>(m_vertex) + 1), OGRERR_NONE);
    EXPECT_EQ(vertices->GetFeatureCount(), 2);
    // A polyline has two vertices at least.
    EXPECT_NE(vertices->DeleteFeature(static_cast<GIntBig>(m_vertex)), OGRERR_NONE);
    EXPECT_NE(messages.Text().find("one of the last two"), std::string::npos) << messages.Text();
    EXPECT_EQ(vertices->GetFeatureCount(), 2);
}

TEST_F(JobLayerTest, TextsCirclesAndBitmapsBecomeWhatTheFeaturesSay) {
    Draw();
    {
        const Dataset dataset = OpenToWrite();
        EXPECT_EQ(Edit(*dataset, "texts", m_text,
                       [](OGRFeature& text) {
                           text.SetField("text", "Elm");
                           text.SetField("rotation", 12.5);
                           Move(text, "POINT Z (1 2 3)");
                       }),
                  OGRERR_NONE);
        EXPECT_EQ(Edit(*dataset, "circles", m_circle,
                       [](OGRFeature& circle) { circle.SetField("radius", 0.3); }),
                  OGRERR_NONE);
        EXPECT_EQ(Edit(*dataset, "bitmaps", m_bitmap,
                       [](OGRFeature& bitmap) {
                           bitmap.SetField("resource", "south.bmp");
                           bitmap.SetField("layer", "Signs");
                       }),
                  OGRERR_NONE);
    }
    Dataset dataset = OpenToWrite();
    EXPECT_EQ(Value(*dataset, "texts", m_text, "text"), "Elm");
    EXPECT_EQ(Value(*dataset, "texts", m_text, "rotation"), "12.5");
    EXPECT_EQ(Value(*dataset, "texts", m_text, "align_across"), "2");
    EXPECT_EQ(Value(*dataset, "texts", m_text, "thickness"), "7");
    EXPECT_EQ(Shape(*dataset, "texts", m_text), "POINT Z (1 2 3)");
    EXPECT_EQ(Value(*dataset, "circles", m_circle, "radius"), "0.3");
    EXPECT_EQ(Value(*dataset, "circles", m_circle, "code"), "11");
    EXPECT_EQ(Value(*dataset, "bitmaps", m_bitmap, "resource"), "south.bmp");
    EXPECT_EQ(Value(*dataset, "bitmaps", m_bitmap, "layer"), "Signs");
    EXPECT_EQ(
        Edit(*dataset, "circles", m_circle,
             [](OGRFeature& circle) { Move(circle, "CIRCULARSTRING Z (0 0 7,8 0 7,0 0 7)"); }),
        OGRERR_NONE);
    EXPECT_EQ(Value(*dataset, "circles", m_circle, "radius"), "4");
    EXPECT_EQ(Value(*dataset, "circles", m_circle, "easting"), "4");
    const Messages messages;
    EXPECT_NE(Edit(*dataset, "circles", m_circle,
                   [](OGRFeature& circle) { Move(circle, "LINESTRING (0 0,9 9,0 9,0 0)"); }),
              OGRERR_NONE);
    EXPECT_NE(messages.Text().find("is no circle"), std::string::npos);
}

TEST_F(JobLayerTest, LayersChangeTheirLookAndGroupsTheirNames) {
    Draw();
    const Dataset dataset = OpenToWrite();
    OGRLayer& layers = *dataset->GetLayerByName("layers");
    const OGRFeatureUniquePtr layer(layers.GetNextFeature());
    layer->SetField("line_type", 3);
    layer->SetField("hidden", 1);
    ASSERT_EQ(layers.SetFeature(layer.get()), OGRERR_NONE);
    EXPECT_EQ(Texts(layers, "line_type"), (std::vector<std::string>{"3"}));
    EXPECT_EQ(Texts(layers, "color"), (std::vector<std::string>{"-1"}));
    EXPECT_EQ(Value(*dataset, "circles", m_circle, "hidden"), "1");
    OGRLayer& groups = *dataset->GetLayerByName("groups");
    const OGRFeatureUniquePtr group(groups.GetNextFeature());
    group->SetField("name", "Day 3");
    ASSERT_EQ(groups.SetFeature(group.get()), OGRERR_NONE);
    EXPECT_EQ(Texts(groups, "name"), (std::vector<std::string>{"Day 3"}));
    EXPECT_EQ(groups.DeleteFeature(group->GetFID()), OGRERR_NONE);
    EXPECT_EQ(groups.GetFeatureCount(), 0);
    const Messages messages;
    layer->SetField("name", "Other");
    EXPECT_NE(layers.SetFeature(layer.get()), OGRERR_NONE);
    EXPECT_NE(messages.Text().find("cqjob layers rename"), std::string::npos);
}

TEST_F(JobLayerTest, WhatCannotBeWrittenSaysWhy) {
    Draw();
    const Dataset dataset = OpenToWrite({"AREAS=YES"});
    const auto reason = [&](const char* name, auto&& act) {
        OGRLayer* layer = dataset->GetLayerByName(name);
        OGRFeature feature(layer->GetLayerDefn());
        feature.SetFID(1);
        const Messages messages;
        EXPECT_NE(act(*layer, feature), OGRERR_NONE);
        return messages.Text();
    };
    const auto set = [](OGRLayer& layer, OGRFeature& feature) {
        EXPECT_FALSE(layer.TestCapability(OLCRandomWrite));
        return layer.SetFeature(&feature);
    };
    const auto erase = [](OGRLayer& layer, OGRFeature& feature) {
        EXPECT_FALSE(layer.TestCapability(OLCDeleteFeature));
        return layer.DeleteFeature(feature.GetFID());
    };
    EXPECT_NE(reason("areas", set).find("those of \"polylines\""), std::string::npos);
    EXPECT_NE(reason("areas", erase).find("those of \"polylines\""), std::string::npos);
    EXPECT_NE(reason("settings", set).find("cqjob settings"), std::string::npos);
    EXPECT_NE(reason("settings", erase).find("cqjob settings"), std::string::npos);
    EXPECT_NE(reason("layers", erase).find("cqjob layers delete"), std::string::npos);
    const Dataset reader = Open();
    OGRLayer* points = reader->GetLayer(0);
    EXPECT_FALSE(points->TestCapability(OLCRandomWrite));
    const Messages messages;
    EXPECT_NE(points->DeleteFeature(static_cast<GIntBig>(m_point)), OGRERR_NONE);
    EXPECT_NE(messages.Text().find("reading only"), std::string::npos);
}

TEST_F(JobLayerTest, ValuesThatFollowFromOthersAreAWarning) {
    Draw();
    const Dataset dataset = OpenToWrite();
    const Messages messages;
    EXPECT_EQ(Edit(*dataset, "points", m_point,
                   [](OGRFeature& point) { point.SetField("code_word", "BIRCH"); }),
              OGRERR_NONE);
    EXPECT_NE(messages.Text().find("\"code_word\" were not kept"), std::string::npos);
    EXPECT_EQ(Value(*dataset, "points", m_point, "code_word"), "TREE");
}

TEST_F(JobLayerTest, AFeatureThatIsNotThereIsNotChanged) {
    Draw();
    const Dataset dataset = OpenToWrite();
    OGRLayer* points = dataset->GetLayerByName("points");
    OGRFeature point(points->GetLayerDefn());
    for (const GIntBig id : {GIntBig{OGRNullFID}, GIntBig{0}, GIntBig{4711}, GIntBig{1} << 40}) {
        point.SetFID(id);
        EXPECT_EQ(points->SetFeature(&point), OGRERR_NON_EXISTING_FEATURE) << id;
    }
}

TEST_F(JobLayerTest, ChangesAndDeletionsBelongToTheTransaction) {
    Draw();
    const Dataset dataset = OpenToWrite();
    const auto change = [&] {
        ASSERT_EQ(dataset->StartTransaction(), OGRERR_NONE);
        EXPECT_EQ(Edit(*dataset, "points", m_point,
                       [](OGRFeature& point) { point.SetField("name", "Z"); }),
                  OGRERR_NONE);
        EXPECT_EQ(dataset->GetLayerByName("texts")->DeleteFeature(static_cast<GIntBig>(m_text)),
                  OGRERR_NONE);
        EXPECT_EQ(Shape(*dataset, "texts", m_text), "gone");
    };
    change();
    ASSERT_EQ(dataset->RollbackTransaction(), OGRERR_NONE);
    EXPECT_EQ(Value(*dataset, "points", m_point, "name"), "A");
    EXPECT_EQ(Value(*dataset, "texts", m_text, "text"), "Oak");
    change();
    ASSERT_EQ(dataset->CommitTransaction(), OGRERR_NONE);
    EXPECT_EQ(Value(*dataset, "points", m_point, "name"), "Z");
    EXPECT_EQ(dataset->GetLayerByName("texts")->GetFeatureCount(), 0);
}

TEST_F(JobLayerTest, WhileOneDatasetHasATransactionAnotherOneDoesNotWriteIntoIt) {
    Draw();
    const Dataset first = OpenToWrite();
    const Dataset second = OpenToWrite();
    ASSERT_EQ(first->StartTransaction(), OGRERR_NONE);
    {
        const Messages messages;
        EXPECT_NE(second->StartTransaction(), OGRERR_NONE);
        EXPECT_NE(
            Edit(*second, "points", m_point, [](OGRFeature& point) { point.SetField("code", 1); }),
            OGRERR_NONE);
        EXPECT_NE(second->CommitTransaction(), OGRERR_NONE);
        EXPECT_NE(messages.Text().find("open already in this program"), std::string::npos);
    }
    ASSERT_EQ(first->CommitTransaction(), OGRERR_NONE);
    EXPECT_EQ(
        Edit(*second, "points", m_point, [](OGRFeature& point) { point.SetField("code", 1); }),
        OGRERR_NONE);
    EXPECT_EQ(Value(*first, "points", m_point, "code"), "1");
}

TEST_F(JobLayerTest, AFilterOnTheNameFindsAPointUnderItsNewNameOnly) {
    Draw();
    const Dataset dataset = OpenToWrite();
    OGRLayer* points = dataset->GetLayerByName("points");
    const auto count = [&](const char* filter) {
        EXPECT_EQ(points->SetAttributeFilter(filter), OGRERR_NONE);
        const GIntBig found = points->GetFeatureCount();
        points->SetAttributeFilter(nullptr);
        return found;
    };
    ASSERT_EQ(count("name = 'A'"), 1);
    ASSERT_EQ(
        Edit(*dataset, "points", m_point, [](OGRFeature& point) { point.SetField("name", "New"); }),
        OGRERR_NONE);
    EXPECT_EQ(count("name = 'A'"), 0);
    EXPECT_EQ(count("name = 'new'"), 1);
    ASSERT_EQ(points->DeleteFeature(static_cast<GIntBig>(m_point)), OGRERR_NONE);
    EXPECT_EQ(count("name = 'new'"), 0);
}

TEST_F(JobLayerTest, AChangeIsWholeThoughTheReaderIgnoresFields) {
    Draw();
    const Dataset dataset = OpenToWrite();
    OGRLayer* lines = dataset->GetLayerByName("polylines");
    const OGRFeatureUniquePtr line(lines->GetFeature(static_cast<GIntBig>(m_line)));
    std::array<const char*, 3> ignored{"OGR_GEOMETRY", "line_type", nullptr};
    ASSERT_EQ(lines->SetIgnoredFields(ignored.data()), OGRERR_NONE);
    line->SetField("code", 8);
    ASSERT_EQ(lines->SetFeature(line.get()), OGRERR_NONE);
    EXPECT_TRUE(lines->GetLayerDefn()->IsGeometryIgnored());
    EXPECT_EQ(Value(*dataset, "vertices", m_vertex, "bulge"), "0.3");
}

}  // namespace
}  // namespace cqsurvey::gdal
