#include "store/Qrfs.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

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
