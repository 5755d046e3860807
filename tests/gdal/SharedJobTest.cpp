#include "gdal/SharedJob.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>

#include "gdal/GdalJob.h"

namespace cqsurvey::gdal {
namespace {

class SharedJobTest : public GdalJob {};

TEST_F(SharedJobTest, SeveralDatasetsOfOneFileAreOpenAtATime) {
    DrawSome();
    Dataset first = Open();
    const Dataset second = Open();
    ASSERT_TRUE(first && second);
    first.reset();
    EXPECT_EQ(second->GetLayer(0)->GetFeatureCount(), 20);
}

TEST_F(SharedJobTest, AJobIsHeldForWritingFromTheFirstChangeToTheEndOfItsDataset) {
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

TEST_F(SharedJobTest, AWriterThatComesBesideAnotherProcessIsRefusedAndReadsOn) {
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

TEST_F(SharedJobTest, LooksFromOutsideDoNotLetAnotherProcessWrite) {
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

TEST_F(SharedJobTest, ThreadsReadTheSameJobThroughTheirOwnDatasets) {
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

}  // namespace
}  // namespace cqsurvey::gdal
