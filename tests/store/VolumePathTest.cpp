#include "store/VolumePath.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "store/StoreTesting.h"

namespace cqsurvey {
namespace {

/// Runs a test in a folder of its own, to try relative paths.
class WorkingFolder {
 public:
    explicit WorkingFolder(const std::string& path) : m_before(std::filesystem::current_path()) {
        std::filesystem::current_path(path);
    }
    WorkingFolder(const WorkingFolder&) = delete;
    WorkingFolder& operator=(const WorkingFolder&) = delete;
    ~WorkingFolder() { std::filesystem::current_path(m_before); }

 private:
    std::filesystem::path m_before;
};

TEST(VolumePath, TheFilesBesideAVolumeAreKnownThroughEveryPath) {
    const TempDir dir;
    const std::string volume = dir.Utf8("a.job");
    std::filesystem::create_directory(dir.Utf8("sub"));
    std::filesystem::create_directory_symlink(dir.Utf8(""), dir.Utf8("sub/way"));
    std::filesystem::create_symlink("../a.job-wal", dir.Utf8("sub/first"));
    std::filesystem::create_symlink(dir.Utf8("sub/first"), dir.Utf8("second"));
    const WorkingFolder here(dir.Utf8("sub"));
    for (const bool exist : {false, true}) {
        for (const std::string& path :
             {dir.Utf8("a.job-journal"), dir.Utf8("a.job-wal"), dir.Utf8("a.job-shm"),
              dir.Utf8("sub/../a.job-shm"), dir.Utf8("A.JOB-Journal"),
              std::string("../a.job-journal"), std::string("way/a.job-wal"), std::string("first"),
              dir.Utf8("second")}) {
            EXPECT_TRUE(IsBesideVolume(path, volume)) << path << exist;
        }
        for (const std::string& path :
             {volume, dir.Utf8("a.job-journal2"), dir.Utf8("b.job-journal"),
              dir.Utf8("sub/a.job-journal"), std::string("a.job-wal"), dir.Utf8("no/a.job-wal"),
              dir.Utf8("sub"), std::string()}) {
            EXPECT_FALSE(IsBesideVolume(path, volume)) << path << exist;
        }
        WriteHostFile(dir.Utf8("a.job-journal"), "x");
        WriteHostFile(dir.Utf8("a.job-wal"), "x");
    }
    std::filesystem::create_hard_link(dir.Utf8("a.job-journal"), dir.Utf8("hard"));
    EXPECT_TRUE(IsBesideVolume(dir.Utf8("hard"), volume));
}

TEST(VolumePath, LinksThatLeadToEachOtherEnd) {
    const TempDir dir;
    std::filesystem::create_symlink("b", dir.Utf8("a"));
    std::filesystem::create_symlink("a", dir.Utf8("b"));
    EXPECT_FALSE(IsBesideVolume(dir.Utf8("a"), dir.Utf8("a.job")));
}

}  // namespace
}  // namespace cqsurvey
