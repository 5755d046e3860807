#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "store/OtherProcess.h"
#include "store/StoreExtras.h"
#include "store/StoreTesting.h"

namespace cqsurvey {
namespace {

/// A volume with something in it that is not mounted.
class ReadOnlyTest : public StoreTest {
 protected:
    void SetUp() override {
        StoreTest::SetUp();
        const std::uint32_t pairs = OpenTable<PairLayout>(u"V");
        const std::uint32_t things = OpenTable<ThingLayout>(u"V");
        ASSERT_DONE(QrdbAppendRecord(pairs, MakePair(1, 2).data()));
        ThingLayout::Bytes record = MakeThing(3);
        ASSERT_DONE(
            QrdbWriteMemo(things, u"remark", record.data() + ThingLayout::Offset<"Remark">()));
        ASSERT_DONE(QrdbAppendRecord(things, record.data()));
        ASSERT_DONE(PutFile(u"V:/One", std::string(9000, '1')));
        m_contents = ReadContents(u"V");
        Unmount();
        m_bytes = ReadHostFile(m_host);
    }

    void TearDown() override {
        chmod(m_dir.Utf8("").c_str(), 0755);
        StoreTest::TearDown();
    }

    /// Reads everything on the mounted volume, fails to change it with `code`, and goes on reading.
    void ExpectReadable(std::int32_t code) {
        EXPECT_EQ(ReadContents(u"V"), m_contents);
        const std::uint32_t pairs = OpenTable<PairLayout>(u"V");
        std::array<std::byte, 4> memo{};
        std::uint32_t count = 0;
        EXPECT_FAILS(0, code, QrdbAppendRecord(pairs, MakePair(9, 9).data()));
        ASSERT_DONE(QrdbMoveFirst(pairs));
        EXPECT_FAILS(0, code, QrdbWriteRecord(pairs, MakePair(9, 9).data()));
        EXPECT_FAILS(0, code, QrdbDeleteRecord(pairs));
        EXPECT_FAILS(0, code, QrdbWriteMemo(pairs, u"text", memo.data()));
        EXPECT_FAILS(
            0, code,
            QrdbCreateTable(u"V:/New", PairLayout::kFieldCount, PairLayout::kFieldDefs.data()));
        EXPECT_FAILS(0, code, StoreCreateView(u"V:/Shown", "SELECT 1"));
        EXPECT_FAILS(0, code, QrfsCreateFile(u"V:/Three", 0));
        EXPECT_FAILS(0, code, QrfsCopyFile(u"V:/One", u"V:/Three"));
        EXPECT_FAILS(0, code, QrfsRename(u"V:/One", u"V:/Three"));
        EXPECT_FAILS(0, code, QrfsDeleteFile(u"V:/One"));
        EXPECT_FAILS(0, code, QrfsSetFileAttributes(u"V:/One", 1));
        const std::int32_t file = QrfsOpenFile(u"V:/One", 3);
        ASSERT_NE(file, -1);
        EXPECT_FAILS(0, code, QrfsWrite(file, "x", 1, count));
        EXPECT_FAILS(0, code, QrfsSetLength(file, 1));
        EXPECT_DONE(QrfsCloseFile(file));
        // A step may be begun and ended when nothing is changed in it.
        EXPECT_DONE(StoreBeginStep(u"V"));
        EXPECT_DONE(StoreCommitStep(u"V"));
        EXPECT_DONE(StoreBeginStep(u"V"));
        EXPECT_DONE(StoreRollbackStep(u"V"));
        EXPECT_EQ(ReadContents(u"V"), m_contents);
    }

    /// The same in a process that has no more rights than the file gives to all; 0 when all held.
    int ExpectReadableByAnyone(std::int32_t code) {
        OtherProcess other([&](int, int) {
            if (geteuid() == 0 && setuid(65534) != 0) {
                return 1;
            }
            if (QrfsMount(m_path, u"V") == 0) {
                return 2;
            }
            ExpectReadable(code);
            if (QrfsUnmount(u"V") == 0) {
                return 3;
            }
            return HasFailure() ? 4 : 0;
        });
        return other.Run();
    }

    Contents m_contents;
    std::string m_bytes;
};

TEST_F(ReadOnlyTest, AVolumeMountedForReadingIsReadAndNotChanged) {
    ASSERT_DONE(StoreMountReadOnly(m_path, u"V"));
    EXPECT_EQ(NamesIn(m_dir.Utf8("")), std::set<std::string>{"volume.job"});
    ExpectReadable(error::kAccessDenied);
    Unmount();
    EXPECT_TRUE(ReadHostFile(m_host) == m_bytes);
    EXPECT_EQ(NamesIn(m_dir.Utf8("")), std::set<std::string>{"volume.job"});
}

TEST_F(ReadOnlyTest, AFileThatCannotBeWrittenIsReadAllTheSame) {
    ASSERT_EQ(chmod(m_dir.Utf8("").c_str(), 0777), 0);
    ASSERT_EQ(chmod(m_host.c_str(), 0444), 0);
    EXPECT_EQ(ExpectReadableByAnyone(error::kAccessDenied), 0);
    EXPECT_TRUE(ReadHostFile(m_host) == m_bytes);
    EXPECT_EQ(NamesIn(m_dir.Utf8("")), std::set<std::string>{"volume.job"});
}

TEST_F(ReadOnlyTest, AFolderThatCannotBeWrittenLetsItsVolumesBeRead) {
    ASSERT_EQ(chmod(m_host.c_str(), 0666), 0);
    ASSERT_EQ(chmod(m_dir.Utf8("").c_str(), 0555), 0);
    EXPECT_EQ(ExpectReadableByAnyone(error::kAccessDenied), 0);
    ASSERT_EQ(chmod(m_host.c_str(), 0444), 0);
    EXPECT_EQ(ExpectReadableByAnyone(error::kAccessDenied), 0);
    EXPECT_TRUE(ReadHostFile(m_host) == m_bytes);
}

TEST_F(ReadOnlyTest, AFileThatCannotBeReadIsRefused) {
    ASSERT_EQ(chmod(m_dir.Utf8("").c_str(), 0755), 0);
    ASSERT_EQ(chmod(m_host.c_str(), 0000), 0);
    OtherProcess other([&](int, int) {
        if (geteuid() == 0 && setuid(65534) != 0) {
            return 1;
        }
        return QrfsMount(m_path, u"V") == 0 && QrfsGetLastError() == error::kAccessDenied ? 0 : 2;
    });
    EXPECT_EQ(other.Run(), 0);
}

TEST_F(ReadOnlyTest, AVolumeIsNotCreatedWhereNothingMayBeWritten) {
    ASSERT_EQ(chmod(m_dir.Utf8("").c_str(), 0555), 0);
    OtherProcess other([&](int, int) {
        if (geteuid() == 0 && setuid(65534) != 0) {
            return 1;
        }
        return QrfsCreateVolume(m_dir.Path(u"new.job")) == 0 &&
                       QrfsGetLastError() == error::kAccessDenied
                   ? 0
                   : 2;
    });
    EXPECT_EQ(other.Run(), 0);
    EXPECT_EQ(NamesIn(m_dir.Utf8("")), std::set<std::string>{"volume.job"});
}

TEST_F(ReadOnlyTest, AFolderThatIsOpenedAgainTakesChangesAgain) {
    // The same mount lives through it: a card that was locked and is not any more.
    ASSERT_EQ(chmod(m_host.c_str(), 0666), 0);
    ASSERT_EQ(chmod(m_dir.Utf8("").c_str(), 0555), 0);
    OtherProcess other([&](int go, int word) {
        char wait = 0;
        if ((geteuid() == 0 && setuid(65534) != 0) || QrfsMount(m_path, u"V") == 0) {
            return 1;
        }
        if (PutFile(u"V:/Three", "x") != 0 || QrfsGetLastError() != error::kAccessDenied) {
            return 2;
        }
        if (write(word, "x", 1) != 1 || read(go, &wait, 1) != 1) {
            return 3;
        }
        return PutFile(u"V:/Three", "now") != 0 && QrfsUnmount(u"V") != 0 ? 0 : 4;
    });
    other.Tell();
    ASSERT_EQ(other.Hear(), 'x');
    ASSERT_EQ(chmod(m_dir.Utf8("").c_str(), 0777), 0);
    EXPECT_EQ(other.Run(), 0);
    Mount();
    EXPECT_EQ(GetFile(u"V:/Three"), "now");
}

TEST_F(ReadOnlyTest, AVolumeThatIsOpenedReadAndClosedKeepsEveryByte) {
    for (int i = 0; i < 3; ++i) {
        Mount();
        EXPECT_EQ(ReadContents(u"V"), m_contents);
        EXPECT_EQ(NamesIn(m_dir.Utf8("")), std::set<std::string>{"volume.job"});
        Unmount();
        EXPECT_TRUE(ReadHostFile(m_host) == m_bytes);
    }
}

TEST_F(ReadOnlyTest, OneFileIsThereWheneverTheVolumeIsNotMounted) {
    Mount();
    ASSERT_DONE(PutFile(u"V:/Three", "x"));
    Unmount();
    EXPECT_EQ(NamesIn(m_dir.Utf8("")), std::set<std::string>{"volume.job"});
    Mount();
    ASSERT_DONE(StoreBeginStep(u"V"));
    ASSERT_DONE(PutFile(u"V:/Three", "y"));
    Unmount();
    EXPECT_EQ(NamesIn(m_dir.Utf8("")), std::set<std::string>{"volume.job"});
    EXPECT_FALSE(ReadHostFile(m_host) == m_bytes);
    Mount();
    EXPECT_EQ(GetFile(u"V:/Three"), "x");
}

TEST_F(ReadOnlyTest, AVolumeThatAnotherToolSwitchedToALogIsReadAllTheSame) {
    const CString odd = m_dir.Path(u"100% odd#name?x=1.job");
    std::filesystem::rename(m_host, ToUtf8(odd));
    m_path = odd;
    m_host = ToUtf8(odd);
    RunSql(m_host, "PRAGMA journal_mode=WAL");
    m_bytes = ReadHostFile(m_host);
    ASSERT_DONE(StoreMountReadOnly(m_path, u"V"));
    ExpectReadable(error::kAccessDenied);
    Unmount();
    EXPECT_EQ(NamesIn(m_dir.Utf8("")).size(), 1U);
    ASSERT_EQ(chmod(m_host.c_str(), 0444), 0);
    ASSERT_EQ(chmod(m_dir.Utf8("").c_str(), 0555), 0);
    EXPECT_EQ(ExpectReadableByAnyone(error::kAccessDenied), 0);
    EXPECT_TRUE(ReadHostFile(m_host) == m_bytes);
    // What the log holds is not passed over in silence.
    ASSERT_EQ(chmod(m_dir.Utf8("").c_str(), 0755), 0);
    WriteHostFile(m_host + "-wal", std::string(5000, 'w'));
    EXPECT_FAILS(0, error::kAccessDenied, StoreMountReadOnly(m_path, u"V"));
    EXPECT_NE(std::string(StoreErrorDetail()).find("log"), std::string::npos);
    EXPECT_EQ(ReadHostFile(m_host + "-wal").size(), 5000U);
}

TEST_F(ReadOnlyTest, AMountForWritingTakesTheLogInAndDoesWithoutOne) {
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open_v2(m_host.c_str(), &other, SQLITE_OPEN_READWRITE, "unix"), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other,
                           "PRAGMA journal_mode=WAL; PRAGMA wal_autocheckpoint=0;"
                           "UPDATE Pairs SET Second = 77",
                           nullptr, nullptr, nullptr),
              SQLITE_OK);
    // As it lies after the other tool was killed.
    const std::string left = ReadHostFile(m_host);
    const std::string log = ReadHostFile(m_host + "-wal");
    sqlite3_close(other);
    WriteHostFile(m_host, left);
    WriteHostFile(m_host + "-wal", log);
    Mount();
    m_contents.pairs[1] = AsString(MakePair(1, 77));
    EXPECT_EQ(ReadContents(u"V"), m_contents);
    EXPECT_DONE(PutFile(u"V:/Three", "x"));
    Unmount();
    EXPECT_EQ(NamesIn(m_dir.Utf8("")), std::set<std::string>{"volume.job"});
    ASSERT_DONE(StoreMountReadOnly(m_path, u"V"));
    EXPECT_EQ(GetFile(u"V:/Three"), "x");
}

}  // namespace
}  // namespace cqsurvey
