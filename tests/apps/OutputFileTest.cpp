#include "cqjob/OutputFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "apps/CapturedConsole.h"
#include "cqjob/Failure.h"
#include "support/FileSizeLimit.h"
#include "support/HostBytes.h"
#include "support/TempDir.h"

namespace cqsurvey::cqjob {
namespace {

std::ptrdiff_t CountFiles(const TempDir& folder) {
    return std::distance(std::filesystem::directory_iterator(folder.Utf8("")), {});
}

TEST(OutputFile, WritesAFile) {
    const TempDir folder;
    CapturedConsole captured;
    std::string text;
    {
        OutputFile file(captured.console, folder.Utf8("a"), false);
        for (int i = 0; i < 20000; ++i) {
            file.Write("0123456789");
            text += "0123456789";
        }
        file.Finish();
    }
    EXPECT_EQ(HostFileBytes(folder.Utf8("a")), text);
    EXPECT_EQ(CountFiles(folder), 1);
}

TEST(OutputFile, LeavesWhatIsThereAlone) {
    const TempDir folder;
    CapturedConsole captured;
    std::ofstream(folder.Utf8("a")) << "old";
    EXPECT_THROW(OutputFile(captured.console, folder.Utf8("a"), false), Failure);
    EXPECT_EQ(HostFileBytes(folder.Utf8("a")), "old");
    std::filesystem::create_symlink(folder.Utf8("nowhere"), folder.Utf8("b"));
    EXPECT_THROW(OutputFile(captured.console, folder.Utf8("b"), false), Failure);
    EXPECT_FALSE(std::filesystem::exists(folder.Utf8("nowhere")));
}

TEST(OutputFile, RemovesAnUnfinishedFile) {
    const TempDir folder;
    CapturedConsole captured;
    { OutputFile(captured.console, folder.Utf8("a"), false).Write("x"); }
    EXPECT_EQ(CountFiles(folder), 0);
}

TEST(OutputFile, ReplacesAFileOnlyByAWholeOne) {
    const TempDir folder;
    CapturedConsole captured;
    std::ofstream(folder.Utf8("a")) << "old";
    chmod(folder.Utf8("a").c_str(), 0600);
    {
        OutputFile file(captured.console, folder.Utf8("a"), true);
        file.Write("new");
        EXPECT_EQ(HostFileBytes(folder.Utf8("a")), "old");
    }
    EXPECT_EQ(HostFileBytes(folder.Utf8("a")), "old");
    {
        OutputFile file(captured.console, folder.Utf8("a"), true);
        file.Write("new");
        file.Finish();
    }
    EXPECT_EQ(HostFileBytes(folder.Utf8("a")), "new");
    EXPECT_EQ(CountFiles(folder), 1);
    struct stat status {};
    ASSERT_EQ(stat(folder.Utf8("a").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST(OutputFile, ReplacesTheFileThatALinkNames) {
    const TempDir folder;
    CapturedConsole captured;
    std::ofstream(folder.Utf8("a")) << "old";
    std::filesystem::create_symlink(folder.Utf8("a"), folder.Utf8("b"));
    OutputFile file(captured.console, folder.Utf8("b"), true);
    file.Write("new");
    file.Finish();
    EXPECT_TRUE(std::filesystem::is_symlink(folder.Utf8("b")));
    EXPECT_EQ(HostFileBytes(folder.Utf8("a")), "new");
}

TEST(OutputFile, WritesADeviceWithoutReplacingIt) {
    CapturedConsole captured;
    EXPECT_THROW(OutputFile(captured.console, "/dev/null", false), Failure);
    OutputFile file(captured.console, "/dev/null", true);
    file.Write("x");
    file.Finish();
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
}

TEST(OutputFile, NothingHasTheNameBeforeTheFileIsWhole) {
    const TempDir folder;
    CapturedConsole captured;
    OutputFile file(captured.console, folder.Utf8("a"), false);
    file.Write(std::string(200000, 'x'));
    EXPECT_FALSE(std::filesystem::exists(folder.Utf8("a")));
    file.Finish();
    EXPECT_EQ(HostFileBytes(folder.Utf8("a")).size(), 200000U);
    EXPECT_EQ(CountFiles(folder), 1);
}

TEST(OutputFile, LeavesAFileAloneThatAppearsMeanwhile) {
    const TempDir folder;
    CapturedConsole captured;
    {
        OutputFile file(captured.console, folder.Utf8("a"), false);
        file.Write("x");
        std::ofstream(folder.Utf8("a")) << "other";
        EXPECT_THROW(file.Finish(), Failure);
    }
    EXPECT_EQ(HostFileBytes(folder.Utf8("a")), "other");
    EXPECT_EQ(CountFiles(folder), 1);
}

TEST(OutputFile, ASignalEndsTheWritingAndLeavesNothing) {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        SCOPED_TRACE(number);
        const TempDir folder;
        CapturedConsole captured;
        {
            OutputFile file(captured.console, folder.Utf8("a"), false);
            file.Write("x");
            std::raise(number);
            EXPECT_THROW(file.CheckInterrupt(), Failure);
            EXPECT_THROW(file.Write("y"), Failure);
            EXPECT_THROW(file.Finish(), Failure);
        }
        EXPECT_EQ(CountFiles(folder), 0);
    }
}

TEST(OutputFile, AFileThatMayNotGrowIsAFullDisk) {
    const TempDir folder;
    CapturedConsole captured;
    {
        const FileSizeLimit limit(1000);
        OutputFile file(captured.console, folder.Utf8("a"), false);
        try {
            file.Write(std::string(100000, 'x'));
            file.Finish();
            ADD_FAILURE() << "written";
        } catch (const Failure& error) {
            EXPECT_EQ(error.what(), folder.Utf8("a") + ": No space left on device");
        }
    }
    EXPECT_EQ(CountFiles(folder), 0);
}

TEST(OutputFile, AFileThatAKilledProgramLeftIsNotInTheWay) {
    const TempDir folder;
    CapturedConsole captured;
    std::ofstream(folder.Utf8("a.new-" + std::to_string(getpid()))) << "left";
    OutputFile file(captured.console, folder.Utf8("a"), false);
    file.Write("x");
    file.Finish();
    EXPECT_EQ(HostFileBytes(folder.Utf8("a")), "x");
}

TEST(OutputFile, ANameMayBeAsLongAsTheSystemAllows) {
    const TempDir folder;
    CapturedConsole captured;
    const std::string path = folder.Utf8(std::string(255, 'n'));
    OutputFile file(captured.console, path, false);
    file.Write("x");
    file.Finish();
    EXPECT_EQ(HostFileBytes(path), "x");
}

TEST(OutputFile, AFullDiskIsAFailure) {
    CapturedConsole captured;
    OutputFile file(captured.console, "/dev/full", true);
    file.Write("x");
    EXPECT_THROW(file.Finish(), Failure);
}

TEST(OutputFile, NamesAPathThatCannotBe) {
    const TempDir folder;
    CapturedConsole captured;
    try {
        OutputFile(captured.console, folder.Utf8("missing/a"), true);
        FAIL() << "made";
    } catch (const Failure& error) {
        EXPECT_NE(std::string(error.what()).find("missing/a"), std::string::npos);
    }
}

TEST(OutputFile, ADashIsTheConsole) {
    CapturedConsole captured;
    OutputFile file(captured.console, "-", false);
    file.Write("x");
    file.Finish();
    EXPECT_EQ(captured.Out(), "x");
}

}  // namespace
}  // namespace cqsurvey::cqjob
