#include "store/Qrfs.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <filesystem>
#include <string>
#include <vector>

#include "store/OtherProcess.h"
#include "store/StoreExtras.h"
#include "store/StoreTesting.h"

namespace cqsurvey {
namespace {

constexpr std::uint16_t kNone = 0xFFFF;

std::string Seek(std::int32_t file, std::int32_t offset, int origin) {
    return std::to_string(QrfsSeek(file, offset, origin));
}

std::string Read(std::int32_t file, std::uint32_t count) {
    std::string bytes(count, '?');
    std::uint32_t got = 0;
    Require(QrfsRead(file, bytes.data(), count, got) != 0);
    return bytes.substr(0, got);
}

int Write(std::int32_t file, const std::string& bytes) {
    std::uint32_t written = 0;
    const int done =
        QrfsWrite(file, bytes.data(), static_cast<std::uint32_t>(bytes.size()), written);
    EXPECT_EQ(written, done == 0 ? 0 : bytes.size());
    return done;
}

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

using QrfsTest = StoreTest;

TEST_F(QrfsTest, StepsFollowOneAnotherAndNeverOverlap) {
    EXPECT_FAILS(0, error::kInvalidArgument, StoreCommitStep(u"V"));
    EXPECT_FAILS(0, error::kInvalidArgument, StoreRollbackStep(u"V"));
    EXPECT_FAILS(0, error::kInvalidArgument, StoreSpoilStep(u"V", error::kOutOfMemory));
    EXPECT_DONE(StoreBeginStep(u"V"));
    EXPECT_FAILS(0, error::kInvalidArgument, StoreBeginStep(u"V"));
    EXPECT_DONE(StoreCommitStep(u"V"));
    EXPECT_DONE(StoreBeginStep(u"V"));
    EXPECT_DONE(StoreRollbackStep(u"V"));
    EXPECT_FAILS(0, error::kNoMount, StoreBeginStep(u"W"));
    EXPECT_FAILS(0, error::kNoMount, StoreCommitStep(u"W"));
    EXPECT_FAILS(0, error::kNoMount, StoreRollbackStep(u"W"));
    EXPECT_FAILS(0, error::kNoMount, StoreSpoilStep(u"W", error::kOutOfMemory));
}

TEST_F(QrfsTest, ARefusalLeavesTheStepSound) {
    ASSERT_DONE(StoreBeginStep(u"V"));
    ASSERT_DONE(QrfsCreateFile(u"V:/One", 0));
    EXPECT_FAILS(0, error::kFileExists, QrfsCreateFile(u"V:/One", 0));
    EXPECT_FAILS(0, error::kNoFile, QrfsDeleteFile(u"V:/Two.ini"));
    EXPECT_FAILS(0, error::kTableExists, CreateTable<PairLayout>(u"V"));
    EXPECT_DONE(StoreCommitStep(u"V"));
    EXPECT_EQ(QrfsGetFileAttributes(u"V:/One"), 0x80);
}

TEST_F(QrfsTest, ASpoiltStepCanOnlyBeUndone) {
    ASSERT_DONE(PutFile(u"V:/One", "before"));
    ASSERT_DONE(StoreBeginStep(u"V"));
    ASSERT_DONE(PutFile(u"V:/One", "changed"));
    EXPECT_FAILS(0, error::kInvalidArgument, StoreSpoilStep(u"V", error::kNone));
    ASSERT_DONE(StoreSpoilStep(u"V", error::kOutOfMemory));
    ASSERT_DONE(StoreSpoilStep(u"V", error::kDamaged));
    EXPECT_FAILS(0, error::kOutOfMemory, QrfsCreateFile(u"V:/Two.ini", 0));
    EXPECT_FAILS(0, error::kOutOfMemory, StoreCommitStep(u"V"));
    EXPECT_EQ(GetFile(u"V:/One"), "before");
    EXPECT_DONE(PutFile(u"V:/One", "after"));
}

TEST_F(QrfsTest, UnmountingUndoesTheStepAndClosesWhatIsOpen) {
    ASSERT_DONE(PutFile(u"V:/One", "kept"));
    const std::int32_t file = QrfsOpenFile(u"V:/One", 3);
    const std::uint32_t table = OpenTable<PairLayout>(u"V");
    ASSERT_DONE(StoreBeginStep(u"V"));
    ASSERT_DONE(Write(file, "lost"));
    ASSERT_DONE(QrdbAppendRecord(table, MakePair(1, 2).data()));
    Remount();
    EXPECT_FAILS(-1, error::kInvalidArgument, QrfsGetLength(file));
    EXPECT_FAILS(0, error::kInvalidArgument, QrfsCloseFile(file));
    EXPECT_FAILS(0, error::kInvalidArgument, QrdbMoveFirst(table));
    EXPECT_FAILS(0, error::kInvalidArgument, QrdbCloseTable(table));
    EXPECT_EQ(GetFile(u"V:/One"), "kept");
    EXPECT_TRUE(ReadContents(u"V").pairs.empty());
    EXPECT_DONE(StoreBeginStep(u"V"));
}

TEST_F(QrfsTest, AFileIsCreatedOnceAndEmpty) {
    EXPECT_FAILS(kNone, error::kNoFile, QrfsGetFileAttributes(u"V:/One"));
    EXPECT_FAILS(0, error::kInvalidArgument, QrfsCreateFile(u"V:/One", 1));
    EXPECT_DONE(QrfsCreateFile(u"V:/One", 0));
    EXPECT_EQ(QrfsGetFileAttributes(u"V:/One"), 0x80);
    EXPECT_EQ(GetFile(u"V:/One"), "");
    EXPECT_FAILS(0, error::kFileExists, QrfsCreateFile(u"V:/One", 0));
    EXPECT_FAILS(0, error::kInvalidArgument, QrfsCreateFile(u"V:/", 0));
    EXPECT_FAILS(0, error::kNoMount, QrfsCreateFile(u"W:/One", 0));
    EXPECT_FAILS(0, error::kNoMount, QrfsCreateFile(u"One", 0));
    EXPECT_FAILS(0, error::kNoMount, QrfsCreateFile(u":/One", 0));
}

TEST_F(QrfsTest, FileNamesAreKeptAndComparedUnitByUnit) {
    const CString zero(1, u'\0');
    const std::vector<CString> names{u"name",   u"NAME",    u"\xFEFFname", u"\xFFFEname",
                                     u"\xD800", u"a/b",     u"a:/b",       u"name" + zero,
                                     u"\u00C4", u"A\u0308", u" "};
    for (const CString& name : names) {
        ASSERT_DONE(QrfsCreateFile(u"V:/" + name, 0)) << ToUtf8(name);
        ASSERT_DONE(PutFile(u"V:/" + name, ToUtf8(name)));
    }
    Remount();
    for (const CString& name : names) {
        EXPECT_EQ(GetFile(u"V:/" + name), ToUtf8(name));
        EXPECT_FAILS(0, error::kFileExists, QrfsCreateFile(u"V:/" + name, 0));
    }
    ASSERT_DONE(QrfsRename(u"V:/name", u"V:/\xFEFFother"));
    Remount();
    EXPECT_EQ(GetFile(u"V:/\xFEFFother"), "name");
    EXPECT_FAILS(kNone, error::kNoFile, QrfsGetFileAttributes(u"V:/other"));
}

TEST_F(QrfsTest, ACopyIsAFileOfItsOwn) {
    const std::string bytes(100000, 'c');
    ASSERT_DONE(PutFile(u"V:/One", bytes));
    ASSERT_DONE(QrfsCopyFile(u"V:/One", u"V:/Three"));
    ASSERT_DONE(PutFile(u"V:/One", "changed"));
    EXPECT_EQ(GetFile(u"V:/Three"), bytes);
    Remount();
    EXPECT_EQ(GetFile(u"V:/Three"), bytes);
    EXPECT_FAILS(0, error::kFileExists, QrfsCopyFile(u"V:/One", u"V:/Three"));
    EXPECT_FAILS(0, error::kFileExists, QrfsCopyFile(u"V:/One", u"V:/One"));
    EXPECT_FAILS(0, error::kNoFile, QrfsCopyFile(u"V:/Two.ini", u"V:/Four"));
    EXPECT_FAILS(0, error::kInvalidArgument, QrfsCopyFile(u"V:/One", u"V:/"));
    EXPECT_FAILS(0, error::kNoMount, QrfsCopyFile(u"W:/One", u"V:/Four"));
    EXPECT_FAILS(0, error::kNoMount, QrfsCopyFile(u"V:/One", u"W:/Four"));
    EXPECT_EQ(GetFile(u"V:/Three"), bytes);
    EXPECT_FAILS(kNone, error::kNoFile, QrfsGetFileAttributes(u"V:/Four"));
    ASSERT_DONE(QrfsCreateVolume(m_dir.Path(u"other.job")));
    ASSERT_DONE(QrfsMount(m_dir.Path(u"other.job"), u"W"));
    EXPECT_FAILS(0, error::kInvalidArgument, QrfsCopyFile(u"V:/One", u"W:/One"));
    EXPECT_FAILS(0, error::kInvalidArgument, QrfsRename(u"V:/One", u"W:/One"));
    ASSERT_DONE(QrfsUnmount(u"W"));
}

TEST_F(QrfsTest, ARenamedFileKeepsItsBytesAndItsHandles) {
    ASSERT_DONE(PutFile(u"V:/One", "bytes"));
    ASSERT_DONE(PutFile(u"V:/Three", "other"));
    const std::int32_t file = QrfsOpenFile(u"V:/One", 1);
    EXPECT_FAILS(0, error::kFileExists, QrfsRename(u"V:/One", u"V:/Three"));
    EXPECT_FAILS(0, error::kNoFile, QrfsRename(u"V:/Two.ini", u"V:/Four"));
    EXPECT_FAILS(0, error::kInvalidArgument, QrfsRename(u"V:/One", u"V:/"));
    EXPECT_FAILS(0, error::kNoMount, QrfsRename(u"W:/One", u"V:/Four"));
    EXPECT_FAILS(0, error::kNoMount, QrfsRename(u"V:/One", u"W:/Four"));
    ASSERT_DONE(QrfsRename(u"V:/One", u"V:/Four"));
    EXPECT_FAILS(kNone, error::kNoFile, QrfsGetFileAttributes(u"V:/One"));
    EXPECT_EQ(Read(file, 10), "bytes");
    Remount();
    EXPECT_EQ(GetFile(u"V:/Four"), "bytes");
    EXPECT_EQ(GetFile(u"V:/Three"), "other");
}

TEST_F(QrfsTest, ADeletedFileIsGoneAlsoForItsHandles) {
    ASSERT_DONE(PutFile(u"V:/One", "bytes"));
    const std::int32_t file = QrfsOpenFile(u"V:/One", 3);
    ASSERT_DONE(QrfsDeleteFile(u"V:/One"));
    EXPECT_FAILS(0, error::kNoFile, QrfsDeleteFile(u"V:/One"));
    EXPECT_FAILS(-1, error::kNoFile, QrfsOpenFile(u"V:/One", 1));
    EXPECT_FAILS(kNone, error::kNoFile, QrfsGetFileAttributes(u"V:/One"));
    std::uint32_t count = 0;
    char byte = 0;
    EXPECT_FAILS(0, error::kNoFile, QrfsRead(file, &byte, 1, count));
    EXPECT_FAILS(0, error::kNoFile, QrfsWrite(file, &byte, 1, count));
    EXPECT_FAILS(-1, error::kNoFile, QrfsSeek(file, 0, 0));
    EXPECT_FAILS(-1, error::kNoFile, QrfsGetLength(file));
    EXPECT_FAILS(0, error::kNoFile, QrfsSetLength(file, 1));
    EXPECT_FAILS(0, error::kNoFile, QrfsFlushFile(file));
    // A new file of the name has nothing of the old one.
    ASSERT_DONE(QrfsCreateFile(u"V:/One", 0));
    EXPECT_EQ(GetFile(u"V:/One"), "");
    EXPECT_FAILS(-1, error::kNoFile, QrfsGetLength(file));
    EXPECT_DONE(QrfsCloseFile(file));
    EXPECT_FAILS(0, error::kInvalidArgument, QrfsCloseFile(file));
    EXPECT_FAILS(0, error::kNoMount, QrfsDeleteFile(u"W:/One"));
    Remount();
    EXPECT_EQ(GetFile(u"V:/One"), "");
}

TEST_F(QrfsTest, AnUndoneDeletionBringsTheFileBackAlsoForItsHandles) {
    ASSERT_DONE(PutFile(u"V:/One", "bytes"));
    const std::int32_t file = QrfsOpenFile(u"V:/One", 3);
    ASSERT_DONE(StoreBeginStep(u"V"));
    ASSERT_DONE(QrfsDeleteFile(u"V:/One"));
    ASSERT_DONE(PutFile(u"V:/One", "impostor"));
    const std::int32_t impostor = QrfsOpenFile(u"V:/One", 3);
    EXPECT_FAILS(-1, error::kNoFile, QrfsGetLength(file));
    ASSERT_DONE(StoreRollbackStep(u"V"));
    EXPECT_EQ(QrfsGetLength(file), 5);
    EXPECT_EQ(Read(file, 10), "bytes");
    EXPECT_FAILS(-1, error::kNoFile, QrfsGetLength(impostor));
    ASSERT_DONE(Write(file, " and more"));
    EXPECT_EQ(GetFile(u"V:/One"), "bytes and more");
    Remount();
    EXPECT_EQ(GetFile(u"V:/One"), "bytes and more");
}

TEST_F(QrfsTest, AnUndoneCreationTakesTheFileFromItsHandles) {
    ASSERT_DONE(StoreBeginStep(u"V"));
    ASSERT_DONE(PutFile(u"V:/One", "bytes"));
    ASSERT_DONE(QrfsCopyFile(u"V:/One", u"V:/Three"));
    const std::int32_t file = QrfsOpenFile(u"V:/One", 3);
    ASSERT_DONE(StoreRollbackStep(u"V"));
    std::uint32_t count = 0;
    EXPECT_FAILS(-1, error::kNoFile, QrfsGetLength(file));
    EXPECT_FAILS(0, error::kNoFile, QrfsWrite(file, "x", 1, count));
    EXPECT_FAILS(kNone, error::kNoFile, QrfsGetFileAttributes(u"V:/One"));
    EXPECT_FAILS(kNone, error::kNoFile, QrfsGetFileAttributes(u"V:/Three"));
    ASSERT_DONE(PutFile(u"V:/One", "new"));
    EXPECT_FAILS(-1, error::kNoFile, QrfsGetLength(file));
    EXPECT_EQ(GetFile(u"V:/One"), "new");
    EXPECT_DONE(QrfsCloseFile(file));
}

TEST_F(QrfsTest, AnUndoneStepPutsNamesAttributesAndLengthsBack) {
    ASSERT_DONE(PutFile(u"V:/One", std::string(10000, '1')));
    ASSERT_DONE(PutFile(u"V:/Two.ini", "2"));
    ASSERT_DONE(QrfsSetFileAttributes(u"V:/One", 0x21));
    const Contents before = ReadContents(u"V");
    ASSERT_DONE(StoreBeginStep(u"V"));
    ASSERT_DONE(QrfsSetFileAttributes(u"V:/One", 1));
    ASSERT_DONE(QrfsRename(u"V:/One", u"V:/Three"));
    ASSERT_DONE(QrfsRename(u"V:/Two.ini", u"V:/One"));
    ASSERT_DONE(PutFile(u"V:/Three", "short"));
    ASSERT_DONE(PutFile(u"V:/One", std::string(20000, 'x')));
    ASSERT_DONE(StoreRollbackStep(u"V"));
    EXPECT_EQ(ReadContents(u"V"), before);
    EXPECT_EQ(QrfsGetFileAttributes(u"V:/One"), 0x21);
    Remount();
    EXPECT_EQ(ReadContents(u"V"), before);
    EXPECT_EQ(QrfsGetFileAttributes(u"V:/One"), 0x21);
}

TEST_F(QrfsTest, AttributesAreSetAndKept) {
    ASSERT_DONE(QrfsCreateFile(u"V:/One", 0));
    for (const int attributes : {0, 1, 0xFFFE}) {
        ASSERT_DONE(QrfsSetFileAttributes(u"V:/One", static_cast<std::uint16_t>(attributes)));
        Remount();
        EXPECT_EQ(QrfsGetFileAttributes(u"V:/One"), attributes);
    }
    EXPECT_FAILS(0, error::kInvalidArgument, QrfsSetFileAttributes(u"V:/One", 0xFFFF));
    EXPECT_FAILS(0, error::kNoFile, QrfsSetFileAttributes(u"V:/Three", 1));
    EXPECT_FAILS(0, error::kNoMount, QrfsSetFileAttributes(u"W:/One", 1));
    EXPECT_FAILS(kNone, error::kNoMount, QrfsGetFileAttributes(u"W:/One"));
}

TEST_F(QrfsTest, AFileIsOpenedForWhatItsModeSays) {
    ASSERT_DONE(PutFile(u"V:/One", "bytes"));
    for (const int mode : {-1, 0, 4, 5}) {
        EXPECT_FAILS(-1, error::kInvalidArgument, QrfsOpenFile(u"V:/One", mode));
    }
    EXPECT_FAILS(-1, error::kNoFile, QrfsOpenFile(u"V:/Three", 1));
    EXPECT_FAILS(-1, error::kNoMount, QrfsOpenFile(u"W:/One", 1));
    std::uint32_t count = 77;
    char byte = 0;
    const std::int32_t reader = QrfsOpenFile(u"V:/One", 1);
    EXPECT_FAILS(0, error::kAccessDenied, QrfsWrite(reader, "x", 1, count));
    EXPECT_FAILS(0, error::kAccessDenied, QrfsSetLength(reader, 0));
    const std::int32_t writer = QrfsOpenFile(u"V:/One", 2);
    EXPECT_FAILS(0, error::kAccessDenied, QrfsRead(writer, &byte, 1, count));
    EXPECT_EQ(count, 77U);
    ASSERT_DONE(Write(writer, "B"));
    EXPECT_EQ(Read(reader, 10), "Bytes");
    const std::int32_t both = QrfsOpenFile(u"V:/One", 3);
    ASSERT_DONE(Write(both, "b"));
    EXPECT_EQ(Read(both, 10), "ytes");
}

TEST_F(QrfsTest, AFileOpenMoreThanOnceIsSeenAlikeByAll) {
    ASSERT_DONE(QrfsCreateFile(u"V:/One", 0));
    const std::int32_t one = QrfsOpenFile(u"V:/One", 3);
    const std::int32_t two = QrfsOpenFile(u"V:/One", 3);
    ASSERT_NE(one, two);
    ASSERT_DONE(Write(one, "hello"));
    EXPECT_EQ(Read(two, 10), "hello");
    EXPECT_EQ(QrfsGetLength(two), 5);
    ASSERT_DONE(QrfsSetLength(two, 2));
    EXPECT_EQ(QrfsGetLength(one), 2);
    EXPECT_EQ(Read(one, 10), "");
    ASSERT_DONE(QrfsCloseFile(one));
    EXPECT_EQ(Seek(two, 0, 0), "0");
    EXPECT_EQ(Read(two, 10), "he");
}

TEST_F(QrfsTest, SeekingGoesAnywhereAFileCanReach) {
    ASSERT_DONE(PutFile(u"V:/One", "0123456789"));
    const std::int32_t file = QrfsOpenFile(u"V:/One", 3);
    EXPECT_EQ(Seek(file, 4, 0), "4");
    EXPECT_EQ(Seek(file, -2, 1), "2");
    EXPECT_EQ(Seek(file, -1, 2), "9");
    EXPECT_EQ(Seek(file, 100, 2), "110");
    EXPECT_EQ(Read(file, 1), "");
    EXPECT_EQ(Seek(file, INT_MAX, 0), "2147483647");
    EXPECT_EQ(Seek(file, 0, 1), "2147483647");
    EXPECT_FAILS(-1, error::kInvalidArgument, QrfsSeek(file, 1, 1));
    EXPECT_FAILS(-1, error::kInvalidArgument, QrfsSeek(file, INT_MAX, 2));
    EXPECT_FAILS(-1, error::kInvalidArgument, QrfsSeek(file, -1, 0));
    EXPECT_FAILS(-1, error::kInvalidArgument, QrfsSeek(file, INT_MIN, 0));
    EXPECT_FAILS(-1, error::kInvalidArgument, QrfsSeek(file, -11, 2));
    EXPECT_FAILS(-1, error::kInvalidArgument, QrfsSeek(file, 0, 3));
    EXPECT_FAILS(-1, error::kInvalidArgument, QrfsSeek(file, 0, -1));
    EXPECT_EQ(Seek(file, 0, 1), "2147483647");
    EXPECT_EQ(Seek(file, INT_MIN + 1, 1), "0");
    EXPECT_EQ(Read(file, 3), "012");
}

TEST_F(QrfsTest, AWriteBehindTheEndFillsTheGapWithZeros) {
    ASSERT_DONE(PutFile(u"V:/One", "ab"));
    const std::int32_t file = QrfsOpenFile(u"V:/One", 3);
    EXPECT_EQ(Seek(file, 5000, 0), "5000");
    EXPECT_EQ(QrfsGetLength(file), 2);
    ASSERT_DONE(Write(file, ""));
    EXPECT_EQ(QrfsGetLength(file), 2);
    ASSERT_DONE(Write(file, "z"));
    EXPECT_EQ(Seek(file, 0, 1), "5001");
    EXPECT_EQ(GetFile(u"V:/One"), "ab" + std::string(4998, '\0') + "z");
    ASSERT_DONE(QrfsSetLength(file, 5003));
    EXPECT_EQ(GetFile(u"V:/One"), "ab" + std::string(4998, '\0') + "z" + std::string(2, '\0'));
    Remount();
    EXPECT_EQ(GetFile(u"V:/One"), "ab" + std::string(4998, '\0') + "z" + std::string(2, '\0'));
}

TEST_F(QrfsTest, AFileEndsAtTwoGigabytes) {
    ASSERT_DONE(PutFile(u"V:/One", "small"));
    const std::int32_t file = QrfsOpenFile(u"V:/One", 3);
    std::uint32_t count = 0;
    EXPECT_EQ(Seek(file, INT_MAX, 0), "2147483647");
    EXPECT_FAILS(0, error::kVolumeFull, QrfsWrite(file, "x", 1, count));
    EXPECT_FAILS(0, error::kInvalidArgument, QrfsSetLength(file, 0x80000000U));
    EXPECT_FAILS(0, error::kInvalidArgument, QrfsSetLength(file, 0xFFFFFFFFU));
    EXPECT_EQ(QrfsGetLength(file), 5);
    EXPECT_EQ(Seek(file, 0, 1), "2147483647");
}

TEST_F(QrfsTest, HandlesThatNameNothingAreRefused) {
    ASSERT_DONE(PutFile(u"V:/One", "x"));
    const std::int32_t open = QrfsOpenFile(u"V:/One", 3);
    const std::int32_t closed = QrfsOpenFile(u"V:/One", 3);
    ASSERT_DONE(QrfsFlushFile(open));
    ASSERT_DONE(QrfsCloseFile(closed));
    std::uint32_t count = 0;
    char byte = 0;
    for (const std::int32_t file : {-1, 0, closed, open + 1, INT_MAX, INT_MIN}) {
        EXPECT_FAILS(-1, error::kInvalidArgument, QrfsSeek(file, 0, 0));
        EXPECT_FAILS(0, error::kInvalidArgument, QrfsRead(file, &byte, 1, count));
        EXPECT_FAILS(0, error::kInvalidArgument, QrfsWrite(file, &byte, 1, count));
        EXPECT_FAILS(0, error::kInvalidArgument, QrfsFlushFile(file));
        EXPECT_FAILS(0, error::kInvalidArgument, QrfsSetLength(file, 0));
        EXPECT_FAILS(-1, error::kInvalidArgument, QrfsGetLength(file));
        EXPECT_FAILS(0, error::kInvalidArgument, QrfsCloseFile(file));
    }
    EXPECT_EQ(QrfsGetLength(open), 1);
}

TEST_F(QrfsTest, ASuccessLeavesTheLastErrorAsItIs) {
    EXPECT_FAILS(-1, error::kNoFile, QrfsOpenFile(u"V:/One", 1));
    ASSERT_DONE(PutFile(u"V:/Two.ini", "x"));
    EXPECT_FAILS(0, error::kNoFile, QrfsDeleteFile(u"V:/One"));
    ASSERT_DONE(QrfsDeleteFile(u"V:/Two.ini"));
    EXPECT_EQ(Hex(QrfsGetLastError()), Hex(error::kNoFile));
}

}  // namespace
}  // namespace cqsurvey
