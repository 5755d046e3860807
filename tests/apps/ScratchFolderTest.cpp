#include "cqjob/ScratchFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "cqjob/Failure.h"
#include "support/TempDir.h"

namespace cqsurvey::cqjob {
namespace {

TEST(ScratchFolderTest, LiesBesideTheFileAndGoesWithAllThatIsInIt) {
    const TempDir folder;
    std::string path;
    {
        const ScratchFolder scratch(folder.Utf8("site.gpkg"));
        path = scratch.PathOf("a");
        std::ofstream(path) << "a";
        std::filesystem::create_directory(scratch.PathOf("b"));
        EXPECT_TRUE(std::filesystem::exists(path));
        const auto beside = std::filesystem::path(path).parent_path().parent_path();
        EXPECT_TRUE(std::filesystem::equivalent(beside, folder.Utf8(".")));
    }
    EXPECT_FALSE(std::filesystem::exists(std::filesystem::path(path).parent_path()));
}

TEST(ScratchFolderTest, AFolderThatIsMissingIsAFailureThatNamesTheFile) {
    const TempDir folder;
    try {
        const ScratchFolder scratch(folder.Utf8("nowhere/site.gpkg"));
        FAIL() << "nothing was thrown";
    } catch (const Failure& failure) {
        EXPECT_NE(std::string(failure.what()).find("site.gpkg"), std::string::npos);
    }
}

}  // namespace
}  // namespace cqsurvey::cqjob
