#include "gdal/read/JobLayer.h"

#include "gdal/EditedJob.h"

namespace cqsurvey::gdal {
namespace {

class JobLayerTest : public EditedJob {};

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
