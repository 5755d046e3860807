#include "platform/HostFile.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <array>
#include <string>

#include "support/HostBytes.h"
#include "support/TempDir.h"

namespace cqsurvey {
namespace {

TEST(HostFile, APathIsUtf8AndBothSlashesSeparateFolders) {
    EXPECT_EQ(HostPath(u"\\Jobs\\\u00e9/a"), "/Jobs/\xc3\xa9/a");
    EXPECT_EQ(HostPath(u""), "");
}

TEST(HostFile, WhatIsWrittenIsRead) {
    const TempDir folder;
    const CString path = folder.Path(u"\u65e5\u672c \U0001f600");
    HostFile file;
    ASSERT_TRUE(file.Create(path));
    EXPECT_TRUE(file.Write("abc", 3));
    EXPECT_TRUE(file.Write("", 0));
    EXPECT_TRUE(file.Write("\0d", 2));
    EXPECT_TRUE(file.Close());
    EXPECT_EQ(HostFileBytes(ToUtf8(path)), std::string("abc\0d", 5));
    ASSERT_TRUE(file.OpenToRead(path));
    std::array<char, 4> buffer{};
    EXPECT_EQ(file.Read(buffer.data(), 4), 4U);
    EXPECT_EQ(std::string(buffer.data(), 4), std::string("abc\0", 4));
    EXPECT_EQ(file.Read(buffer.data(), 4), 1U);
    EXPECT_EQ(file.Read(buffer.data(), 4), 0U);
}

TEST(HostFile, CreatingEmptiesTheFileThatIsThere) {
    const TempDir folder;
    PutHostFile(folder.Utf8("f"), "long content");
    HostFile file;
    ASSERT_TRUE(file.Create(folder.Path(u"f")));
    EXPECT_TRUE(file.Write("x", 1));
    EXPECT_TRUE(file.Close());
    EXPECT_EQ(HostFileBytes(folder.Utf8("f")), "x");
}

TEST(HostFile, ABackslashSeparatesFolders) {
    const TempDir folder;
    PutHostFile(folder.Utf8("f"), "x");
    CString path = folder.Path(u"f");
    for (char16_t& unit : path) {
        unit = unit == u'/' ? u'\\' : unit;
    }
    EXPECT_TRUE(HostFile::Exists(path));
    HostFile file;
    EXPECT_TRUE(file.OpenToRead(path));
}

TEST(HostFile, WhatIsNotThereCannotBeOpened) {
    const TempDir folder;
    HostFile file;
    EXPECT_FALSE(HostFile::Exists(folder.Path(u"none")));
    EXPECT_FALSE(file.OpenToRead(folder.Path(u"none")));
    EXPECT_FALSE(file.Create(folder.Path(u"none/none")));
    EXPECT_FALSE(file.OpenToRead(u""));
    EXPECT_FALSE(HostFile::Exists(u""));
    char byte = 0;
    EXPECT_FALSE(file.Read(&byte, 1).has_value());
    EXPECT_FALSE(file.Write(&byte, 1));
    EXPECT_TRUE(file.Close());
}

TEST(HostFile, ANameThatHoldsAZeroNamesNothing) {
    const TempDir folder;
    PutHostFile(folder.Utf8("f"), "x");
    const CString path = folder.Path(u"f") + CString(u"\0tail", 5);
    HostFile file;
    EXPECT_FALSE(HostFile::Exists(path));
    EXPECT_FALSE(file.OpenToRead(path));
    EXPECT_FALSE(file.Create(path));
    EXPECT_EQ(HostFileBytes(folder.Utf8("f")), "x");
}

TEST(HostFile, AFolderExistsButCannotBeRead) {
    const TempDir folder;
    EXPECT_TRUE(HostFile::Exists(folder.Path(u"")));
    HostFile file;
    char byte = 0;
    if (file.OpenToRead(folder.Path(u""))) {
        EXPECT_FALSE(file.Read(&byte, 1).has_value());
    }
    EXPECT_FALSE(file.Create(folder.Path(u"")));
}

TEST(HostFile, OpensPlainFilesOnlyToRead) {
    const TempDir folder;
    ASSERT_EQ(mkfifo(folder.Utf8("pipe").c_str(), 0600), 0);
    HostFile file;
    EXPECT_FALSE(file.OpenToRead(folder.Path(u"pipe")));
    EXPECT_FALSE(file.OpenToRead(u"/dev/zero"));
    EXPECT_FALSE(file.OpenToRead(folder.Path(u"")));
}

}  // namespace
}  // namespace cqsurvey
