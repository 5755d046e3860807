#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "store/OtherProcess.h"
#include "store/Qrfs.h"
#include "store/StoreExtras.h"
#include "store/StoreTesting.h"

namespace cqsurvey {
namespace {

constexpr std::uint16_t kNone = 0xFFFF;

/// Volumes by three names, and a folder for them.
class QrfsVolumeTest : public testing::Test {
 protected:
    void TearDown() override {
        for (const CString& name : {CString(u"A"), CString(u"B"), CString(u"C")}) {
            QrfsUnmount(name);
        }
    }

    TempDir m_dir;
    CString m_path = m_dir.Path(u"a.job");
    std::string m_host = m_dir.Utf8("a.job");
};

TEST_F(QrfsVolumeTest, ACreatedVolumeIsOneFileThatCanBeMountedAndUnmounted) {
    EXPECT_DONE(QrfsCreateVolume(m_path));
    EXPECT_EQ(NamesIn(m_dir.Utf8("")), std::set<std::string>{"a.job"});
    EXPECT_DONE(QrfsMount(m_path, u"A"));
    EXPECT_NE(StoreIsMountedVolume(m_path), 0);
    EXPECT_DONE(QrfsUnmount(u"A"));
    EXPECT_EQ(StoreIsMountedVolume(m_path), 0);
    EXPECT_EQ(NamesIn(m_dir.Utf8("")), std::set<std::string>{"a.job"});
}

TEST_F(QrfsVolumeTest, ADiscardedVolumeGoesWhenItIsUnmounted) {
    ASSERT_DONE(QrfsCreateVolume(m_path));
    ASSERT_DONE(QrfsMount(m_path, u"A"));
    EXPECT_DONE(StoreDiscardVolume(u"A"));
    EXPECT_FAILS(0, error::kNoMount, StoreDiscardVolume(u"B"));
    EXPECT_EQ(NamesIn(m_dir.Utf8("")), std::set<std::string>{"a.job"});
    EXPECT_DONE(QrfsUnmount(u"A"));
    EXPECT_EQ(NamesIn(m_dir.Utf8("")), std::set<std::string>{});
}

TEST_F(QrfsVolumeTest, WhatHasTakenTheDiscardedVolumesPlaceStays) {
    ASSERT_DONE(QrfsCreateVolume(m_path));
    ASSERT_DONE(QrfsMount(m_path, u"A"));
    ASSERT_DONE(StoreDiscardVolume(u"A"));
    WriteHostFile(m_dir.Utf8("notes"), "text");
    std::filesystem::rename(m_dir.Utf8("notes"), m_host);
    EXPECT_DONE(QrfsUnmount(u"A"));
    EXPECT_EQ(ReadHostFile(m_host), "text");
}

TEST_F(QrfsVolumeTest, CreatingOnAnythingThatExistsTouchesNothing) {
    WriteHostFile(m_dir.Utf8("file"), "text");
    WriteHostFile(m_dir.Utf8("empty"), "");
    std::filesystem::create_directory(m_dir.Utf8("folder"));
    std::filesystem::create_symlink(m_dir.Utf8("nowhere"), m_dir.Utf8("dangling"));
    std::filesystem::create_symlink(m_dir.Utf8("file"), m_dir.Utf8("link"));
    ASSERT_EQ(mkfifo(m_dir.Utf8("pipe").c_str(), 0600), 0);
    ASSERT_DONE(QrfsCreateVolume(m_path));
    const std::string bytes = ReadHostFile(m_host);
    const std::set<std::string> names = NamesIn(m_dir.Utf8(""));
    for (const char16_t* name :
         {u"file", u"empty", u"folder", u"dangling", u"link", u"pipe", u"a.job"}) {
        EXPECT_FAILS(0, error::kFileExists, QrfsCreateVolume(m_dir.Path(name))) << ToUtf8(name);
    }
    EXPECT_EQ(NamesIn(m_dir.Utf8("")), names);
    EXPECT_EQ(ReadHostFile(m_dir.Utf8("file")), "text");
    EXPECT_EQ(ReadHostFile(m_dir.Utf8("empty")), "");
    EXPECT_TRUE(ReadHostFile(m_host) == bytes);
    ASSERT_DONE(QrfsMount(m_path, u"A"));
    EXPECT_FAILS(0, error::kFileExists, QrfsCreateVolume(m_path));
    EXPECT_DONE(PutFile(u"A:/One", "still there"));
}

TEST_F(QrfsVolumeTest, AFileThatWouldBeTakenForTheJournalOfANewVolumeIsSpared) {
    for (const char* end : {"-journal", "-wal", "-shm"}) {
        const std::string beside = m_host + end;
        WriteHostFile(beside, "somebody's diary");
        EXPECT_FAILS(0, error::kFileExists, QrfsCreateVolume(m_path)) << end;
        EXPECT_EQ(ReadHostFile(beside), "somebody's diary");
        EXPECT_FALSE(std::filesystem::exists(m_host));
        std::filesystem::remove(beside);
        EXPECT_FAILS(0, error::kInvalidArgument, QrfsCreateVolume(m_path + FromUtf8(end))) << end;
        EXPECT_FALSE(std::filesystem::exists(beside));
    }
}

TEST_F(QrfsVolumeTest, CreatingWhereNothingCanBeIsRefused) {
    EXPECT_FAILS(0, error::kInvalidArgument, QrfsCreateVolume(u""));
    EXPECT_FAILS(0, error::kInvalidArgument, QrfsCreateVolume(m_path + CString(1, u'\0') + u"x"));
    EXPECT_FAILS(0, error::kNoVolume, QrfsCreateVolume(m_dir.Path(u"missing/a.job")));
    WriteHostFile(m_dir.Utf8("file"), "text");
    EXPECT_FAILS(0, error::kNoVolume, QrfsCreateVolume(m_dir.Path(u"file/a.job")));
    EXPECT_FAILS(0, error::kInvalidArgument, QrfsCreateVolume(m_dir.Path(CString(300, u'n'))));
    CString deep = m_dir.Path(u"");
    while (deep.size() < 600) {
        deep += CString(100, u'd');
        std::filesystem::create_directory(ToUtf8(deep));
        deep += u'/';
    }
    EXPECT_FAILS(0, error::kInvalidArgument, QrfsCreateVolume(deep + u"a.job"));
    EXPECT_TRUE(NamesIn(ToUtf8(deep)).empty());
    EXPECT_EQ(NamesIn(m_dir.Utf8("")), (std::set<std::string>{"file", std::string(100, 'd')}));
}

TEST_F(QrfsVolumeTest, MountingAMissingPathCreatesNothing) {
    EXPECT_FAILS(0, error::kNoVolume, QrfsMount(m_path, u"A"));
    EXPECT_FAILS(0, error::kNoVolume, StoreMountReadOnly(m_path, u"A"));
    EXPECT_FAILS(0, error::kNoVolume, QrfsMount(m_dir.Path(u"missing/a.job"), u"A"));
    std::filesystem::create_symlink(m_dir.Utf8("nowhere"), m_dir.Utf8("dangling"));
    EXPECT_FAILS(0, error::kNoVolume, QrfsMount(m_dir.Path(u"dangling"), u"A"));
    EXPECT_EQ(NamesIn(m_dir.Utf8("")), std::set<std::string>{"dangling"});
}

TEST_F(QrfsVolumeTest, MountArgumentsThatCannotBeAreRefused) {
    ASSERT_DONE(QrfsCreateVolume(m_path));
    EXPECT_FAILS(0, error::kInvalidArgument, QrfsMount(u"", u"A"));
    EXPECT_FAILS(0, error::kInvalidArgument, QrfsMount(m_path, u""));
    EXPECT_FAILS(0, error::kInvalidArgument, QrfsMount(m_path, u"A:B"));
    EXPECT_FAILS(0, error::kInvalidArgument, QrfsMount(m_path + CString(1, u'\0') + u"x", u"A"));
    EXPECT_FAILS(0, error::kNoMount, QrfsUnmount(u"A"));
}

TEST_F(QrfsVolumeTest, WhatIsNoVolumeIsNotMountedAndNotTouched) {
    const auto expectNoVolume = [&](const char16_t* name) {
        SCOPED_TRACE(ToUtf8(name));
        EXPECT_FAILS(0, error::kDamaged, QrfsMount(m_dir.Path(name), u"A"));
        EXPECT_NE(std::string(StoreErrorDetail()), "");
        EXPECT_FAILS(0, error::kDamaged, StoreMountReadOnly(m_dir.Path(name), u"A"));
        EXPECT_FAILS(0, error::kNoMount, QrfsUnmount(u"A"));
    };
    WriteHostFile(m_dir.Utf8("text"), std::string(5000, 'x'));
    WriteHostFile(m_dir.Utf8("empty"), "");
    std::filesystem::create_directory(m_dir.Utf8("folder"));
    ASSERT_EQ(mkfifo(m_dir.Utf8("pipe").c_str(), 0600), 0);
    WriteHostFile(m_dir.Utf8("other"), "");
    RunSql(m_dir.Utf8("other"), "CREATE TABLE t(x); INSERT INTO t VALUES(1)");
    const std::string other = ReadHostFile(m_dir.Utf8("other"));
    ASSERT_DONE(QrfsCreateVolume(m_path));
    const std::string volume = ReadHostFile(m_host);
    ASSERT_GT(volume.size(), 8192U);
    for (const auto& [name, size] : std::vector<std::pair<std::string, std::size_t>>{
             {"cut1", 1},
             {"cut99", 99},
             {"cut100", 100},
             {"cut4095", 4095},
             {"cut4096", 4096},
             {"cut last byte", volume.size() - 1},
             {"cut last page", volume.size() - 4096}}) {
        WriteHostFile(m_dir.Utf8(name), volume.substr(0, size));
        expectNoVolume(FromUtf8(name).c_str());
        EXPECT_TRUE(ReadHostFile(m_dir.Utf8(name)) == volume.substr(0, size));
    }
    expectNoVolume(u"text");
    expectNoVolume(u"empty");
    expectNoVolume(u"folder");
    expectNoVolume(u"pipe");
    expectNoVolume(u"other");
    EXPECT_TRUE(ReadHostFile(m_dir.Utf8("other")) == other);
    EXPECT_TRUE(ReadHostFile(m_dir.Utf8("text")) == std::string(5000, 'x'));
}

TEST_F(QrfsVolumeTest, AVolumeOfANewerVersionSaysSo) {
    ASSERT_DONE(QrfsCreateVolume(m_path));
    RunSql(m_host, "PRAGMA user_version=3");
    EXPECT_FAILS(0, error::kNewerVersion, QrfsMount(m_path, u"A"));
    EXPECT_NE(std::string(StoreErrorDetail()).find("version 3"), std::string::npos);
    RunSql(m_host, "PRAGMA user_version=-1");
    EXPECT_FAILS(0, error::kNewerVersion, QrfsMount(m_path, u"A"));
    RunSql(m_host, "PRAGMA user_version=0");
    EXPECT_FAILS(0, error::kDamaged, QrfsMount(m_path, u"A"));
    RunSql(m_host, "PRAGMA user_version=1; PRAGMA application_id=7");
    EXPECT_FAILS(0, error::kDamaged, QrfsMount(m_path, u"A"));
}

TEST_F(QrfsVolumeTest, ANameMountsOneVolumeAndAVolumeIsMountedUnderOneName) {
    ASSERT_DONE(QrfsCreateVolume(m_path));
    ASSERT_DONE(QrfsCreateVolume(m_dir.Path(u"b.job")));
    ASSERT_DONE(QrfsMount(m_path, u"A"));
    EXPECT_FAILS(0, error::kMountNameInUse, QrfsMount(m_dir.Path(u"b.job"), u"A"));
    EXPECT_FAILS(0, error::kMountNameInUse, QrfsMount(m_path, u"A"));
    EXPECT_FAILS(0, error::kMountNameInUse, QrfsMount(m_dir.Path(u"missing"), u"A"));
    EXPECT_FAILS(0, error::kVolumeMounted, QrfsMount(m_path, u"B"));
    EXPECT_FAILS(0, error::kVolumeMounted, StoreMountReadOnly(m_path, u"B"));
    EXPECT_DONE(QrfsMount(m_dir.Path(u"b.job"), u"B"));
    EXPECT_DONE(QrfsUnmount(u"A"));
    EXPECT_FAILS(0, error::kNoMount, QrfsUnmount(u"A"));
    EXPECT_DONE(QrfsMount(m_path, u"C"));
}

TEST_F(QrfsVolumeTest, MountNamesAreComparedExactly) {
    ASSERT_DONE(QrfsCreateVolume(m_path));
    ASSERT_DONE(QrfsMount(m_path, u"A"));
    EXPECT_FAILS(0, error::kNoMount, QrfsUnmount(u"a"));
    EXPECT_FAILS(kNone, error::kNoMount, QrfsGetFileAttributes(u"a:/x"));
}

TEST_F(QrfsVolumeTest, AVolumeIsTheSameThroughEveryPathToIt) {
    OtherProcess other([&](int, int) {
        const int mounted = QrfsMount(m_dir.Path(u"hard"), u"Z");
        return mounted == 0 && QrfsGetLastError() == error::kVolumeMounted ? 7 : 1;
    });
    ASSERT_DONE(QrfsCreateVolume(m_path));
    std::filesystem::create_symlink(m_host, m_dir.Utf8("symbolic"));
    std::filesystem::create_hard_link(m_host, m_dir.Utf8("hard"));
    std::filesystem::create_directory(m_dir.Utf8("sub"));
    ASSERT_DONE(QrfsMount(m_path, u"A"));
    for (const char16_t* name :
         {u"symbolic", u"hard", u"./a.job", u"sub/../a.job", u"sub\\..\\a.job"}) {
        EXPECT_FAILS(0, error::kVolumeMounted, QrfsMount(m_dir.Path(name), u"B")) << ToUtf8(name);
        EXPECT_NE(StoreIsMountedVolume(m_dir.Path(name)), 0) << ToUtf8(name);
    }
    // The look at it through another path has not given its lock away.
    EXPECT_EQ(other.Run(), 7);
}

TEST_F(QrfsVolumeTest, AVolumeIsMountedThroughASymbolicLinkAndKeepsItsJournalBesideItself) {
    ASSERT_DONE(QrfsCreateVolume(m_path));
    std::filesystem::create_directory(m_dir.Utf8("sub"));
    std::filesystem::create_symlink(m_host, m_dir.Utf8("sub/link"));
    ASSERT_DONE(QrfsMount(m_dir.Path(u"sub/link"), u"A"));
    ASSERT_DONE(PutFile(u"A:/One", "x"));
    EXPECT_EQ(NamesIn(m_dir.Utf8("sub")), std::set<std::string>{"link"});
    ASSERT_DONE(QrfsUnmount(u"A"));
    EXPECT_EQ(NamesIn(m_dir.Utf8("sub")), std::set<std::string>{"link"});
    EXPECT_EQ(NamesIn(m_dir.Utf8("")), (std::set<std::string>{"a.job", "sub"}));
    ASSERT_DONE(QrfsMount(m_path, u"A"));
    EXPECT_EQ(GetFile(u"A:/One"), "x");
}

TEST_F(QrfsVolumeTest, BothSeparatorsLeadToTheSameVolume) {
    std::filesystem::create_directory(m_dir.Utf8("sub"));
    CString path = m_dir.Path(u"sub/x.job");
    for (char16_t& unit : path) {
        unit = unit == u'/' ? u'\\' : unit;
    }
    ASSERT_DONE(QrfsCreateVolume(path));
    EXPECT_TRUE(std::filesystem::exists(m_dir.Utf8("sub/x.job")));
    ASSERT_DONE(QrfsMount(path, u"A"));
    EXPECT_FAILS(0, error::kVolumeMounted, QrfsMount(m_dir.Path(u"sub/x.job"), u"B"));
}

TEST_F(QrfsVolumeTest, PathsOfAnyScriptAndRelativeOnesWork) {
    const CString path = m_dir.Path(u"\u6D4B\u91CF \u00C4 \xD83D\xDE00 file:x?mode=ro.job");
    ASSERT_DONE(QrfsCreateVolume(path));
    ASSERT_DONE(QrfsMount(path, u"A"));
    ASSERT_DONE(PutFile(u"A:/One", "x"));
    ASSERT_DONE(QrfsUnmount(u"A"));
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(m_dir.Utf8(""));
    const int created = QrfsCreateVolume(u"file:relative.job?mode=memory");
    const int mounted = QrfsMount(u"file:relative.job?mode=memory", u"B");
    const int put = PutFile(u"B:/One", "y");
    const int unmounted = QrfsUnmount(u"B");
    std::filesystem::current_path(before);
    EXPECT_TRUE(created != 0 && mounted != 0 && put != 0 && unmounted != 0);
    EXPECT_TRUE(std::filesystem::exists(m_dir.Utf8("file:relative.job?mode=memory")));
}

TEST_F(QrfsVolumeTest, AnotherProcessHoldsItAndLetsItGo) {
    OtherProcess other([&](int go, int word) {
        char wait = 0;
        const char held = QrfsMount(m_path, u"Z") != 0 ? 'y' : 'n';
        const bool told = write(word, &held, 1) == 1 && read(go, &wait, 1) == 1;
        return told && QrfsUnmount(u"Z") != 0 ? 7 : 1;
    });
    ASSERT_DONE(QrfsCreateVolume(m_path));
    other.Tell();
    ASSERT_EQ(other.Hear(), 'y');
    EXPECT_FAILS(0, error::kVolumeMounted, QrfsMount(m_path, u"A"));
    EXPECT_FAILS(0, error::kVolumeMounted, StoreMountReadOnly(m_path, u"A"));
    EXPECT_EQ(other.Run(), 7);
    EXPECT_DONE(QrfsMount(m_path, u"A"));
}

TEST_F(QrfsVolumeTest, ReadersInOtherProcessesAreLetInAndKeepWritersOut) {
    OtherProcess reader([&](int, int) { return StoreMountReadOnly(m_path, u"Z") != 0 ? 7 : 1; });
    OtherProcess writer([&](int, int) {
        const int mounted = QrfsMount(m_path, u"Z");
        return mounted == 0 && QrfsGetLastError() == error::kVolumeMounted ? 7 : 1;
    });
    ASSERT_DONE(QrfsCreateVolume(m_path));
    ASSERT_DONE(StoreMountReadOnly(m_path, u"A"));
    EXPECT_EQ(reader.Run(), 7);
    EXPECT_EQ(writer.Run(), 7);
}

}  // namespace
}  // namespace cqsurvey
