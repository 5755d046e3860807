#include "cqjob/InputFile.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <fstream>

#include "cqjob/Failure.h"
#include "support/TempDir.h"

namespace cqsurvey::cqjob {
namespace {

TEST(InputFile, GivesTheBytesAndTheirNumber) {
    const TempDir folder;
    const std::string bytes = std::string("a\0b\xFF\r\n", 6) + std::string(70000, 'x');
    std::ofstream(folder.Utf8("file"), std::ios::binary) << bytes;
    EXPECT_EQ(GetReadableLength(folder.Utf8("file")), bytes.size());
    EXPECT_EQ(ReadInputFile(folder.Utf8("file"), bytes.size()), bytes);
}

TEST(InputFile, AFailureNamesTheFile) {
    const TempDir folder;
    const std::string missing = folder.Utf8("missing");
    for (const std::string& path : {missing, folder.Utf8("")}) {
        try {
            static_cast<void>(GetReadableLength(path));
            ADD_FAILURE() << path;
        } catch (const Failure& failure) {
            EXPECT_EQ(std::string(failure.what()).find(path), 0U) << failure.what();
        }
        EXPECT_THROW(static_cast<void>(ReadInputFile(path, 1000)), Failure);
    }
}

TEST(InputFile, RefusesMoreThanItMayReadAndWhatMayNeverEnd) {
    const TempDir folder;
    std::ofstream(folder.Utf8("file")) << "12345";
    EXPECT_THROW(static_cast<void>(ReadInputFile(folder.Utf8("file"), 4)), Failure);
    EXPECT_THROW(static_cast<void>(ReadInputFile("/dev/zero", 1000)), Failure);
    ASSERT_EQ(mkfifo(folder.Utf8("pipe").c_str(), 0600), 0);
    EXPECT_THROW(static_cast<void>(GetReadableLength(folder.Utf8("pipe"))), Failure);
}

}  // namespace
}  // namespace cqsurvey::cqjob
