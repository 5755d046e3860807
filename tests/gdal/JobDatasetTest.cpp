#include "gdal/JobDataset.h"

#include <filesystem>

#include "gdal/GdalJob.h"

namespace cqsurvey::gdal {
namespace {

class JobDatasetTest : public GdalJob {};

TEST_F(JobDatasetTest, AJobIsKnownByItsHeaderWhateverItIsCalled) {
    DrawSome("plan.dat");
    GDALDriver* driver =
        GDALDriver::FromHandle(GDALIdentifyDriver(Path("plan.dat").c_str(), nullptr));
    ASSERT_NE(driver, nullptr);
    EXPECT_NE(Open({}, "plan.dat"), nullptr);
    std::ofstream(Path("other.job")) << "SQLite format 3 of something else";
    EXPECT_EQ(Open({}, "other.job"), nullptr);
}

TEST_F(JobDatasetTest, ReadingKeepsEveryByteAndLeavesNothingBeside) {
    DrawSome();
    const std::string before = Bytes();
    {
        const Dataset dataset = Open();
        ASSERT_NE(dataset, nullptr);
        for (int i = 0; i < dataset->GetLayerCount(); ++i) {
            OGRLayer* layer = dataset->GetLayer(i);
            OGREnvelope extent;
            layer->SetSpatialFilterRect(0, 0, 1000, 1000);
            EXPECT_EQ(layer->GetExtent(&extent, TRUE) == OGRERR_NONE,
                      layer->GetGeomType() != wkbNone && layer->GetFeatureCount() > 0);
            while (const OGRFeatureUniquePtr feature{layer->GetNextFeature()}) {
            }
            OGRFeature made(layer->GetLayerDefn());
            const Messages quiet;
            EXPECT_NE(layer->CreateFeature(&made), OGRERR_NONE);
            EXPECT_FALSE(layer->TestCapability(OLCSequentialWrite));
        }
    }
    EXPECT_EQ(Bytes(), before);
    int files = 0;
    for ([[maybe_unused]] const auto& entry :
         std::filesystem::directory_iterator(std::filesystem::path(Path()).parent_path())) {
        ++files;
    }
    EXPECT_EQ(files, 1);
}

TEST_F(JobDatasetTest, ItIsInTheSystemOfTheJob) {
    DrawSome();
    const Dataset dataset = Open();
    const OGRSpatialReference* system = dataset->GetLayer(0)->GetSpatialRef();
    ASSERT_NE(system, nullptr);
    EXPECT_STREQ(system->GetAuthorityCode(nullptr), "2230");
    EXPECT_EQ(system->GetDataAxisToSRSAxisMapping(), (std::vector<int>{1, 2}));
    EXPECT_STREQ(dataset->GetMetadataItem("LENGTH_UNIT"), "US survey foot");
}

TEST_F(JobDatasetTest, ASystemThatIsNotKnownIsAWarning) {
    MakeJob([](CqSurveyDB& db) { CqJobSystem(db).SetSystem(u"/etc/passwd"); });
    const Messages messages;
    const Dataset dataset = Open();
    ASSERT_NE(dataset, nullptr);
    EXPECT_EQ(dataset->GetLayer(0)->GetSpatialRef(), nullptr);
    EXPECT_NE(messages.Text().find("not known"), std::string::npos);
}

TEST_F(JobDatasetTest, CountsAndExtentsTakeNoWalk) {
    DrawSome();
    const Dataset dataset = Open();
    OGRLayer* circles = dataset->GetLayerByName("circles");
    EXPECT_TRUE(circles->TestCapability(OLCFastFeatureCount));
    EXPECT_TRUE(circles->TestCapability(OLCFastGetExtent));
    EXPECT_EQ(circles->GetFeatureCount(FALSE), 20);
    OGREnvelope extent;
    ASSERT_EQ(circles->GetExtent(&extent, FALSE), OGRERR_NONE);
    // The box of the whole drawing.
    EXPECT_EQ(extent.MinX, 99);
    EXPECT_EQ(extent.MaxX, 120);
    EXPECT_EQ(extent.MinY, 199);
    EXPECT_EQ(extent.MaxY, 238);
    const Messages quiet;
    EXPECT_NE(dataset->GetLayerByName("texts")->GetExtent(&extent, TRUE), OGRERR_NONE);
}

TEST_F(JobDatasetTest, FeaturesAreReachedByTheirPlaceInTheOrder) {
    DrawSome();
    const Dataset dataset = Open();
    OGRLayer* points = dataset->GetLayer(0);
    ASSERT_EQ(points->SetNextByIndex(7), OGRERR_NONE);
    const OGRFeatureUniquePtr eighth(points->GetNextFeature());
    EXPECT_STREQ(eighth->GetFieldAsString("name"), "P7");
    EXPECT_NE(points->SetNextByIndex(20), OGRERR_NONE);
    EXPECT_EQ(points->GetNextFeature(), nullptr);
    EXPECT_NE(points->SetNextByIndex(-1), OGRERR_NONE);
    points->SetAttributeFilter("height > 10");
    ASSERT_EQ(points->SetNextByIndex(1), OGRERR_NONE);
    const OGRFeatureUniquePtr filtered(points->GetNextFeature());
    EXPECT_STREQ(filtered->GetFieldAsString("name"), "P12");
}

TEST_F(JobDatasetTest, ATransactionIsKeptOrUndoneAsAWhole) {
    DrawSome();
    const Dataset dataset = OpenToWrite();
    ASSERT_NE(dataset, nullptr);
    EXPECT_TRUE(dataset->TestCapability(ODsCTransactions));
    OGRLayer* points = dataset->GetLayer(0);
    const auto add = [&](const char* name) {
        OGRFeature point(points->GetLayerDefn());
        point.SetField("name", name);
        point.SetGeometryDirectly(new OGRPoint(1, 2, 3));
        EXPECT_EQ(points->CreateFeature(&point), OGRERR_NONE);
        return point.GetFID();
    };
    ASSERT_EQ(points->StartTransaction(), OGRERR_NONE);
    const GIntBig undone = add("undone");
    EXPECT_EQ(points->GetFeatureCount(), 21);
    ASSERT_EQ(points->RollbackTransaction(), OGRERR_NONE);
    EXPECT_EQ(points->GetFeatureCount(), 20);
    EXPECT_EQ(points->GetFeature(undone), nullptr);
    ASSERT_EQ(dataset->StartTransaction(), OGRERR_NONE);
    {
        const Messages quiet;
        EXPECT_NE(dataset->StartTransaction(), OGRERR_NONE);
    }
    const GIntBig kept = add("kept");
    ASSERT_EQ(dataset->CommitTransaction(), OGRERR_NONE);
    EXPECT_NE(OGRFeatureUniquePtr(points->GetFeature(kept)), nullptr);
    ASSERT_EQ(points->DeleteFeature(kept), OGRERR_NONE);
    EXPECT_EQ(points->GetFeature(kept), nullptr);
    EXPECT_EQ(points->DeleteFeature(kept), OGRERR_NON_EXISTING_FEATURE);
    const Messages quiet;
    EXPECT_NE(dataset->CommitTransaction(), OGRERR_NONE);
    EXPECT_NE(dataset->RollbackTransaction(), OGRERR_NONE);
}

TEST_F(JobDatasetTest, WhatIsNotCommittedAtTheEndIsUndone) {
    DrawSome();
    {
        const Dataset dataset = OpenToWrite();
        ASSERT_EQ(dataset->StartTransaction(), OGRERR_NONE);
        OGRLayer* points = dataset->GetLayer(0);
        OGRFeature point(points->GetLayerDefn());
        point.SetGeometryDirectly(new OGRPoint(1, 2, 3));
        ASSERT_EQ(points->CreateFeature(&point), OGRERR_NONE);
    }
    EXPECT_EQ(Open()->GetLayer(0)->GetFeatureCount(), 20);
}

TEST_F(JobDatasetTest, AFileInsideAnArchiveIsRefusedInASentence) {
    DrawSome();
    const std::string copy = "/vsimem/site.job";
    ASSERT_EQ(CPLCopyFile(copy.c_str(), Path().c_str()), 0);
    const Messages messages;
    const std::array<const char*, 2> drivers{"CqSurvey", nullptr};
    EXPECT_EQ(GDALDataset::Open(copy.c_str(), GDAL_OF_VECTOR, drivers.data()), nullptr);
    EXPECT_NE(messages.Text().find("as a file of the system"), std::string::npos);
    VSIUnlink(copy.c_str());
}

TEST_F(JobDatasetTest, OptionsThatMakeNoSenseAreRefused) {
    DrawSome();
    const Messages messages;
    EXPECT_EQ(Open({"MISSING_HEIGHT=low"}), nullptr);
    EXPECT_EQ(OpenToWrite({"DUPLICATES=MAYBE"}), nullptr);
    EXPECT_EQ(Create({"UNIT=furlong"}), nullptr);
    EXPECT_FALSE(std::filesystem::exists(Path("new.job")));
    EXPECT_NE(messages.Text().find("UNIT is m, ft or us-ft, not furlong"), std::string::npos);
}

TEST_F(JobDatasetTest, DamagedJobsEndInAMessage) {
    DrawSome();
    std::string bytes = Bytes();
    for (std::size_t at = 4096; at < bytes.size(); at += 4096) {
        bytes[at + 100] = static_cast<char>(bytes[at + 100] ^ 0x55);
    }
    std::ofstream(Path("bad.job"), std::ios::binary) << bytes;
    const Messages messages;
    if (const Dataset dataset = Open({}, "bad.job")) {
        for (int i = 0; i < dataset->GetLayerCount(); ++i) {
            while (const OGRFeatureUniquePtr feature{dataset->GetLayer(i)->GetNextFeature()}) {
            }
        }
    }
    EXPECT_NE(messages.Text().find("0x30000007"), std::string::npos) << messages.Text();
}

}  // namespace
}  // namespace cqsurvey::gdal
