#include "gdal/read/BackgroundTable.h"

#include "gdal/GdalJob.h"

namespace cqsurvey::gdal {
namespace {

class BackgroundTableTest : public GdalJob {
 protected:
    void MakeWithImage(const std::string& bytes) {
        std::ofstream(Path("image"), std::ios::binary) << bytes;
        MakeJob([&](CqSurveyDB& db) {
            AddPoint(db, u"A", 0, 0);
            ASSERT_EQ(db.StoreBackgroundImageFile(FromUtf8(Path("image")), 1, CVector(1, 2),
                                                  CVector(3, 4), 5),
                      1);
        });
    }
    static std::string ImageOf(OGRLayer& layer) {
        const OGRFeatureUniquePtr feature(layer.GetFeature(1));
        int count = 0;
        const GByte* bytes = feature->GetFieldAsBinary(feature->GetFieldIndex("image"), &count);
        return {bytes, bytes + count};
    }
};

TEST_F(BackgroundTableTest, AJobWithoutAnImageHasNoSuchTable) {
    MakeJob([](CqSurveyDB& db) { AddPoint(db, u"A", 0, 0); });
    EXPECT_EQ(Open()->GetLayerByName("background"), nullptr);
}

TEST_F(BackgroundTableTest, TheImageIsOneRowWithItsBytes) {
    const std::string bytes("\0\1\2 of it", 9);
    MakeWithImage(bytes);
    const Dataset dataset = Open();
    OGRLayer* table = dataset->GetLayerByName("background");
    ASSERT_NE(table, nullptr);
    EXPECT_EQ(table->GetFeatureCount(), 1);
    EXPECT_EQ(ImageOf(*table), bytes);
    const OGRFeatureUniquePtr feature(table->GetNextFeature());
    EXPECT_EQ(feature->GetFieldAsDouble("easting"), 1);
    EXPECT_EQ(feature->GetFieldAsDouble("image_height"), 4);
    EXPECT_EQ(feature->GetFieldAsDouble("rotation"), 5);
    EXPECT_EQ(table->GetFeature(2), nullptr);
}

TEST_F(BackgroundTableTest, TheImageOfADrawnJobStaysAndCanBeDeleted) {
    MakeWithImage("own");
    const Dataset dataset = OpenToWrite();
    OGRLayer* table = dataset->GetLayerByName("background");
    OGRFeature other(table->GetLayerDefn());
    other.SetField(other.GetFieldIndex("image"), 5, "other");
    {
        const Messages messages;
        EXPECT_EQ(table->CreateFeature(&other), OGRERR_NONE);
        EXPECT_NE(messages.Text().find("background image stayed"), std::string::npos);
    }
    EXPECT_EQ(ImageOf(*table), "own");
    ASSERT_EQ(table->DeleteFeature(1), OGRERR_NONE);
    EXPECT_EQ(table->GetFeatureCount(), 0);
    EXPECT_EQ(table->CreateFeature(&other), OGRERR_NONE);
    EXPECT_EQ(ImageOf(*table), "other");
    OGRFeature none(table->GetLayerDefn());
    ASSERT_EQ(table->DeleteFeature(1), OGRERR_NONE);
    const Messages messages;
    EXPECT_NE(table->CreateFeature(&none), OGRERR_NONE);
    EXPECT_NE(messages.Text().find("has no image"), std::string::npos);
}

}  // namespace
}  // namespace cqsurvey::gdal
