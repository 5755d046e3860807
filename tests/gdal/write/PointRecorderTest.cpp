#include "gdal/write/PointRecorder.h"

#include "gdal/EditedJob.h"

namespace cqsurvey::gdal {
namespace {

class PointRecorderTest : public EditedJob {};

TEST_F(PointRecorderTest, APointBecomesWhatTheFeatureSays) {
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

TEST_F(PointRecorderTest, AFieldThatIsNullIsEmptiedAndOneThatIsNotSetStays) {
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

TEST_F(PointRecorderTest, AHeightThatWasNotMeasuredStaysOneWhateverStandsForIt) {
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

TEST_F(PointRecorderTest, ANameOfAnotherPointIsRefusedAndNothingChanges) {
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

}  // namespace
}  // namespace cqsurvey::gdal
