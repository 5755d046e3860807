#include "gdal/JobDataset.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <thread>

#include "gdal/GdalJob.h"

namespace cqsurvey::gdal {
namespace {

class JobDatasetTest : public GdalJob {
 protected:
    void DrawSome(const char* name = "site.job") {
        MakeJob(
            [](CqSurveyDB& db) {
                CqJobSystem(db).SetSystem(u"EPSG:2230");
                CqJobSystem(db).SetUnit(CqLengthUnit::UsSurveyFoot);
                for (int i = 0; i < 20; ++i) {
                    AddPoint(db, FromUtf8("P" + std::to_string(i)), 100 + i, 200 + 2 * i, i);
                    const std::array<double, 3> at{100.0 + i, 200, 0};
                    db.AddCircle(at.data(), 1, 0, i);
                }
            },
            name);
    }
};

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

TEST_F(JobDatasetTest, SeveralDatasetsOfOneFileAreOpenAtATime) {
    DrawSome();
    Dataset first = Open();
    const Dataset second = Open();
    ASSERT_TRUE(first && second);
    first.reset();
    EXPECT_EQ(second->GetLayer(0)->GetFeatureCount(), 20);
}

TEST_F(JobDatasetTest, AJobIsHeldForWritingFromTheFirstChangeToTheEndOfItsDataset) {
    DrawSome();
    const std::string before = Bytes();
    const auto isHeld = [this] {
        // Another process, because a process has a job open once.
        const std::string command =
            "sqlite3 'file:" + Path() + "?mode=ro' 'SELECT COUNT(*) FROM _Layer' >/dev/null 2>&1";
        return std::system(command.c_str()) != 0;
    };
    if (std::system("command -v sqlite3 >/dev/null") != 0) {
        GTEST_SKIP() << "sqlite3 is not there";
    }
    const Dataset reader = Open();
    Dataset writer = OpenToWrite();
    ASSERT_TRUE(reader && writer);
    EXPECT_FALSE(isHeld());
    OGRLayer* points = writer->GetLayer(0);
    OGRFeature point(points->GetLayerDefn());
    point.SetGeometryDirectly(new OGRPoint(1, 2, 3));
    ASSERT_EQ(points->CreateFeature(&point), OGRERR_NONE);
    EXPECT_TRUE(isHeld());
    EXPECT_EQ(reader->GetLayer(0)->GetFeatureCount(), 21);
    writer.reset();
    EXPECT_FALSE(isHeld());
    EXPECT_EQ(reader->GetLayer(0)->GetFeatureCount(), 21);
    EXPECT_NE(Bytes(), before);
}

TEST_F(JobDatasetTest, AWriterThatComesBesideAnotherProcessIsRefusedAndReadsOn) {
    DrawSome();
    const Dataset dataset = OpenToWrite();
    ASSERT_NE(dataset, nullptr);
    if (std::system("command -v sqlite3 >/dev/null") != 0) {
        GTEST_SKIP() << "sqlite3 is not there";
    }
    // A reader in another process until its input ends.
    FILE* reader = popen(("sqlite3 '" + Path() + "' >" + Path("out")).c_str(), "w");
    ASSERT_NE(reader, nullptr);
    (void)fputs("BEGIN; SELECT COUNT(*) FROM _Layer;\n", reader);
    (void)fflush(reader);
    while (Bytes("out").empty()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    {
        const Messages messages;
        OGRLayer* points = dataset->GetLayer(0);
        OGRFeature point(points->GetLayerDefn());
        point.SetGeometryDirectly(new OGRPoint(1, 2, 3));
        EXPECT_NE(points->CreateFeature(&point), OGRERR_NONE);
        EXPECT_NE(messages.Text().find("0x30000008"), std::string::npos) << messages.Text();
        EXPECT_EQ(points->GetFeatureCount(), 20);
    }
    pclose(reader);
}

TEST_F(JobDatasetTest, LooksFromOutsideDoNotLetAnotherProcessWrite) {
    DrawSome();
    const Dataset dataset = Open();
    ASSERT_NE(dataset, nullptr);
    for (int i = 0; i < 3; ++i) {
        EXPECT_NE(Open(), nullptr);
    }
    // The locks of a process count for other processes only.
    const std::string command =
        "sqlite3 '" + Path() + "' 'BEGIN IMMEDIATE; DELETE FROM _Layer; COMMIT' 2>/dev/null";
    if (std::system("command -v sqlite3 >/dev/null") != 0) {
        GTEST_SKIP() << "sqlite3 is not there";
    }
    EXPECT_NE(std::system(command.c_str()), 0);
}

TEST_F(JobDatasetTest, ThreadsReadTheSameJobThroughTheirOwnDatasets) {
    DrawSome();
    std::vector<std::thread> threads;
    std::array<int, 4> counts{};
    for (int& count : counts) {
        threads.emplace_back([&] {
            for (int round = 0; round < 20; ++round) {
                const Dataset dataset = Open();
                for (const auto& feature : *dataset->GetLayer(0)) {
                    count += feature->GetGeometryRef() != nullptr ? 1 : 0;
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(counts, (std::array<int, 4>{400, 400, 400, 400}));
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
