#include "store/CheckedVfs.h"

#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <fstream>

#include "store/DatabasePage.h"
#include "store/OtherProcess.h"
#include "store/StoreTesting.h"
#include "store/Volume.h"
#include "support/FileSizeLimit.h"

namespace cqsurvey {
namespace {

constexpr std::size_t kPage = 4096;

const std::byte* Bytes(const std::string& text) {
    return reinterpret_cast<const std::byte*>(text.data());
}

/// The first page of a file that does not match its sum, 0 for none.
std::size_t WrongPage(const std::string& file) {
    for (std::size_t page = 0; page < file.size() / kPage; ++page) {
        if (!HasItsSum(Bytes(file) + page * kPage, kPage)) {
            return page + 1;
        }
    }
    return 0;
}

/// Steps so long that pages reach the file before they end.
class SmallSpills {
 public:
    SmallSpills() { Volume::SetSpillLimits({1, 1, 1, 1}); }
    SmallSpills(const SmallSpills&) = delete;
    SmallSpills& operator=(const SmallSpills&) = delete;
    ~SmallSpills() { Volume::SetSpillLimits({}); }
};

class CheckedVfsTest : public StoreTest {
 protected:
    void Append(std::uint32_t count) {
        const std::uint32_t things = OpenTable<ThingLayout>(u"V");
        ASSERT_DONE(things);
        ASSERT_DONE(StoreBeginStep(u"V"));
        for (std::uint32_t i = 0; i < count; ++i) {
            ASSERT_DONE(QrdbAppendRecord(things, MakeThing(++m_count).data()));
        }
        ASSERT_DONE(StoreCommitStep(u"V"));
        QrdbCloseTable(things);
    }

    /// Fills a step with more than SQLite's cache holds and returns while it is open. A fault may
    /// strike meanwhile.
    void BeginLargeStep() {
        const SmallSpills spills;
        ASSERT_DONE(StoreBeginStep(u"V"));
        const std::uint32_t things = OpenTable<ThingLayout>(u"V");
        for (std::uint32_t i = 1; i <= m_count; ++i) {
            (void)QrdbGoToRecord(things, i);
            (void)QrdbWriteRecord(things, MakeThing(i + 7777777).data());
        }
        (void)PutFile(u"V:/One", std::string(12 << 20, 'x'));
        QrdbCloseTable(things);
    }

    std::uint32_t m_count = 0;
};

TEST_F(CheckedVfsTest, EveryPageOfAVolumeHasItsSum) {
    EXPECT_EQ(WrongPage(ReadHostFile(m_host)), 0U);
    Append(500);
    ASSERT_DONE(PutFile(u"V:/One", std::string(300000, 'a')));
    EXPECT_EQ(WrongPage(ReadHostFile(m_host)), 0U);
    const std::string before = ReadHostFile(m_host);
    BeginLargeStep();
    EXPECT_EQ(WrongPage(ReadHostFile(m_host)), 0U) << "in the middle of a step";
    ASSERT_DONE(StoreRollbackStep(u"V"));
    EXPECT_TRUE(ReadHostFile(m_host) == before) << "when it is undone";
    ASSERT_DONE(QrfsDeleteFile(u"V:/One"));
    BeginLargeStep();
    ASSERT_DONE(StoreCommitStep(u"V"));
    EXPECT_EQ(WrongPage(ReadHostFile(m_host)), 0U);
    EXPECT_EQ(StoreFindWrongPage(u"V", 0), 0U);
    EXPECT_EQ(QrfsGetLastError(), error::kNone);
}

TEST_F(CheckedVfsTest, EachStepHasTheNextNumberInTheHeader) {
    const auto step = [&] {
        const std::string file = ReadHostFile(m_host);
        const DatabaseHeader header(Bytes(file));
        EXPECT_TRUE(header.IsStepWhole());
        return header.GetStep();
    };
    std::uint32_t last = step();
    for (int i = 0; i < 3; ++i) {
        Append(1);
        EXPECT_EQ(step(), ++last);
    }
    Remount();
    Append(1);
    EXPECT_EQ(step(), last + 1);
}

TEST_F(CheckedVfsTest, OtherToolsReadTheFile) {
    Append(500);
    Unmount();
    sqlite3* connection = nullptr;
    ASSERT_EQ(sqlite3_open_v2(m_host.c_str(), &connection, SQLITE_OPEN_READONLY, "unix"),
              SQLITE_OK);
    EXPECT_EQ(SqlText(connection, "PRAGMA integrity_check"), "ok");
    EXPECT_EQ(SqlNumber(connection, "SELECT count(*) FROM Things"), 500);
    sqlite3_close(connection);
}

TEST_F(CheckedVfsTest, AChangedByteIsFoundInEveryPage) {
    constexpr std::uint32_t kSeed = 30;
    SCOPED_TRACE("seed " + std::to_string(kSeed));
    Random random(kSeed);
    Append(500);
    ASSERT_DONE(PutFile(u"V:/One", std::string(30000, 'a')));
    ASSERT_DONE(PutFile(u"V:/Two.ini", std::string(30000, 'a')));
    ASSERT_DONE(QrfsDeleteFile(u"V:/Two.ini"));
    Unmount();
    const std::string whole = ReadHostFile(m_host);
    for (std::uint32_t page = 1; page <= whole.size() / kPage; ++page) {
        SCOPED_TRACE("page " + std::to_string(page));
        std::string file = whole;
        // In page 1 after the header, in which some bytes say that this is no job at all.
        const std::size_t at = page == 1 ? 100 + random.Below(3996) : random.Below(4096);
        file[(page - 1) * kPage + at] ^= static_cast<char>(1 + random.Below(255));
        WriteHostFile(m_host, file);
        if (QrfsMount(m_path, u"V") == 0) {
            EXPECT_EQ(QrfsGetLastError(), error::kDamaged);
            EXPECT_NE(std::string(StoreErrorDetail()).find("page " + std::to_string(page)),
                      std::string::npos)
                << StoreErrorDetail();
        } else {
            EXPECT_EQ(StoreFindWrongPage(u"V", 0), page);
            EXPECT_EQ(StoreFindWrongPage(u"V", page), 0U);
            Unmount();
        }
        EXPECT_TRUE(ReadHostFile(m_host) == file);
    }
    WriteHostFile(m_host, whole);
    Mount();
}

TEST_F(CheckedVfsTest, AReadThatFindsAChangedByteNamesThePage) {
    Append(500);
    Unmount();
    std::string file = ReadHostFile(m_host);
    // A text of a record that nothing else would miss.
    const std::string text(
        "N\0r\0 \0"
        "3\0"
        "3\0"
        "3\0",
        12);
    const std::size_t at = file.find(text);
    ASSERT_NE(at, std::string::npos);
    file[at + 6] = '4';
    WriteHostFile(m_host, file);
    Mount();
    const std::uint32_t things = OpenTable<ThingLayout>(u"V");
    EXPECT_FAILS(0, error::kDamaged, QrdbMoveFirst(things));
    EXPECT_NE(std::string(StoreErrorDetail()).find("page " + std::to_string(at / kPage + 1)),
              std::string::npos)
        << StoreErrorDetail();
}

TEST_F(CheckedVfsTest, AFileThatAnotherToolChangedIsAcceptedAndGetsItsSumsAtTheFirstStep) {
    Append(500);
    const Contents before = ReadContents(u"V");
    Unmount();
    RunSql(m_host, "CREATE VIEW Reals AS SELECT Real FROM Things; VACUUM");
    const std::string changed = ReadHostFile(m_host);
    EXPECT_NE(WrongPage(changed), 0U);

    Mount();
    EXPECT_EQ(ReadContents(u"V"), before);
    EXPECT_EQ(StoreFindWrongPage(u"V", 0), 0U);
    Unmount();
    EXPECT_TRUE(ReadHostFile(m_host) == changed) << "opening alone changes nothing";

    Mount();
    Append(1);
    Unmount();
    EXPECT_EQ(WrongPage(ReadHostFile(m_host)), 0U);
    Mount();
    EXPECT_EQ(ReadContents(u"V").things.size(), before.things.size() + 1);
}

TEST_F(CheckedVfsTest, AFileThatAnotherToolChangedAndTheMediumDamagedIsRefused) {
    Append(500);
    Unmount();
    RunSql(m_host, "CREATE VIEW Reals AS SELECT Real FROM Things");
    std::string file = ReadHostFile(m_host);
    // The type of a page in the middle of a table.
    const std::size_t page = file.find(std::string("N\0r\0 \0"
                                                   "3\0"
                                                   "3\0"
                                                   "3\0",
                                                   12)) /
                             kPage;
    file[page * kPage] = '\x7f';
    WriteHostFile(m_host, file);
    EXPECT_FAILS(0, error::kDamaged, QrfsMount(m_path, u"V"));
}

TEST_F(CheckedVfsTest, AFileOfTheFirstVersionIsConvertedByItsFirstStep) {
    Append(500);
    ASSERT_DONE(PutFile(u"V:/One", std::string(30000, 'a')));
    const Contents before = ReadContents(u"V");
    Unmount();
    MakeFirstVersion(m_host);
    const std::string old = ReadHostFile(m_host);
    Mount();
    EXPECT_EQ(ReadContents(u"V"), before);
    Unmount();
    EXPECT_TRUE(ReadHostFile(m_host) == old);

    Mount();
    Append(1);
    EXPECT_EQ(ReadContents(u"V").things.size(), before.things.size() + 1);
    EXPECT_EQ(ReadContents(u"V").files, before.files);
    Remount();
    EXPECT_EQ(ReadContents(u"V").things.size(), before.things.size() + 1);
    EXPECT_EQ(ReadContents(u"V").files, before.files);
    const std::string file = ReadHostFile(m_host);
    EXPECT_EQ(DatabaseHeader(Bytes(file)).GetFormatVersion(), 2U);
    EXPECT_EQ(WrongPage(file), 0U);
}

TEST_F(CheckedVfsTest, AConversionThatFailsAtAnyCallLeavesTheFileAsItWas) {
    Append(100);
    const Contents before = ReadContents(u"V");
    Unmount();
    MakeFirstVersion(m_host);
    const std::string old = ReadHostFile(m_host);
    bool struck = true;
    for (int at = 1; struck; ++at) {
        SCOPED_TRACE("call " + std::to_string(at));
        ASSERT_LT(at, 10000);
        WriteHostFile(m_host, old);
        Mount();
        const std::uint32_t things = OpenTable<ThingLayout>(u"V");
        m_vfs.FailAt(FaultVfs::kChanging, at, SQLITE_FULL, true);
        const bool done = QrdbAppendRecord(things, MakeThing(9).data()) != 0;
        struck = m_vfs.Struck();
        m_vfs.Heal();
        QrfsUnmount(u"V");
        // Another process recovers what this one could not undo.
        Mount();
        const Contents found = ReadContents(u"V");
        // A failure of the very last call cannot tell whether the step stands.
        if (done || found != before) {
            ASSERT_EQ(found.things.size(), before.things.size() + 1);
            ASSERT_TRUE(std::includes(found.things.begin(), found.things.end(),
                                      before.things.begin(), before.things.end()));
        }
        EXPECT_EQ(StoreFindWrongPage(u"V", 0), 0U);
        Append(1);
        EXPECT_EQ(WrongPage(ReadHostFile(m_host)), 0U);
        Unmount();
        m_count = 100;
    }
    Mount();
}

TEST_F(CheckedVfsTest, AStepThatFailsAtAnyCallLeavesTheSums) {
    Append(300);
    for (int at = 1; at < 60; ++at) {
        SCOPED_TRACE("call " + std::to_string(at));
        m_vfs.FailAt(FaultVfs::kChanging, at, SQLITE_IOERR_WRITE, false);
        BeginLargeStep();
        (void)StoreCommitStep(u"V");
        m_vfs.Heal();
        Remount();
        EXPECT_EQ(WrongPage(ReadHostFile(m_host)), 0U);
        EXPECT_EQ(ReadContents(u"V").things.size(), 300U);
    }
}

TEST_F(CheckedVfsTest, AFileThatMayNotGrowIsAFullDisk) {
    Append(500);
    const std::string before = ReadHostFile(m_host);
    const auto write = [&] {
        EXPECT_DONE(StoreBeginStep(u"V"));
        const bool done =
            PutFile(u"V:/One", std::string(300000, 'b')) != 0 && StoreCommitStep(u"V") != 0;
        const std::int32_t code = done ? error::kNone : QrfsGetLastError();
        if (!done) {
            StoreRollbackStep(u"V");
        }
        return code;
    };
    for (const std::size_t limit : {std::size_t{0}, std::size_t{3000}, before.size()}) {
        SCOPED_TRACE(limit);
        const FileSizeLimit full(limit);
        EXPECT_EQ(write(), error::kVolumeFull);
    }
    EXPECT_TRUE(ReadHostFile(m_host) == before);
    EXPECT_EQ(write(), error::kNone);
}

TEST_F(CheckedVfsTest, AFileWithoutTheJournalOfItsOpenStepIsRefused) {
    Append(300);
    const Contents before = ReadContents(u"V");
    BeginLargeStep();
    // What a kill would leave, after somebody renamed the job and not its journal.
    const std::string renamed = m_dir.Utf8("renamed.job");
    std::filesystem::copy_file(m_host, renamed);
    const std::string file = ReadHostFile(renamed);
    EXPECT_FAILS(0, error::kDamaged, QrfsMount(FromUtf8(renamed), u"W"));
    EXPECT_NE(std::string(StoreErrorDetail()).find("cut short"), std::string::npos)
        << StoreErrorDetail();
    EXPECT_FAILS(0, error::kDamaged, StoreMountReadOnly(FromUtf8(renamed), u"W"));
    EXPECT_TRUE(ReadHostFile(renamed) == file);
    // With the journal, as the text says, it is as it was before the step.
    std::filesystem::copy_file(m_host + "-journal", renamed + "-journal");
    ASSERT_DONE(QrfsMount(FromUtf8(renamed), u"W"));
    EXPECT_EQ(ReadContents(u"W"), before);
}

TEST_F(CheckedVfsTest, ACopyBesideTheJournalOfAnotherStateIsRefusedAndKeepsItsBytes) {
    Append(300);
    const Contents before = ReadContents(u"V");
    const std::string backup = ReadHostFile(m_host);
    Append(300);
    Append(1);
    BeginLargeStep();
    const std::string restored = m_dir.Utf8("restored.job");
    WriteHostFile(restored, backup);
    std::filesystem::copy_file(m_host + "-journal", restored + "-journal");
    EXPECT_FAILS(0, error::kDamaged, QrfsMount(FromUtf8(restored), u"W"));
    EXPECT_NE(std::string(StoreErrorDetail()).find(restored + "-journal"), std::string::npos)
        << StoreErrorDetail();
    EXPECT_TRUE(ReadHostFile(restored) == backup);
    std::filesystem::rename(restored + "-journal", restored + ".aside");
    ASSERT_DONE(QrfsMount(FromUtf8(restored), u"W"));
    EXPECT_EQ(ReadContents(u"W"), before);
}

/// Steps of many records until it is killed; reports each.
int RecordLargeSteps(const CString& path, int word) {
    const SmallSpills spills;
    if (QrfsMount(path, u"C") == 0) {
        return 1;
    }
    const std::uint32_t pairs = OpenTable<PairLayout>(u"C");
    for (std::uint32_t step = 1;; ++step) {
        bool done = StoreBeginStep(u"C") != 0;
        for (std::uint32_t i = 1; done && i <= 200; ++i) {
            // Every record has the same number in every state between two steps.
            done = QrdbGoToRecord(pairs, i) != 0
                       ? QrdbWriteRecord(pairs, MakePair(step, i).data()) != 0
                       : QrdbAppendRecord(pairs, MakePair(step, i).data()) != 0;
        }
        done = done && PutFile(u"C:/One", std::string(12 << 20, static_cast<char>(step))) != 0 &&
               StoreCommitStep(u"C") != 0;
        if (!done || write(word, "r", 1) != 1) {
            return 2;
        }
    }
}

/// Returns when another process has written a part of a step to the file.
void WaitForOpenStep(const std::string& path) {
    std::array<char, DatabaseHeader::kSize> start{};
    do {
        usleep(1000);
        std::ifstream(path, std::ios::binary).read(start.data(), start.size());
    } while (DatabaseHeader(reinterpret_cast<const std::byte*>(start.data())).IsStepWhole());
}

/// Whether all records and all bytes of the file are of the same step.
bool IsOfOneStep(const CString& mount) {
    const Contents contents = ReadContents(mount);
    std::set<char> steps;
    for (const auto& [number, bytes] : contents.pairs) {
        steps.insert(bytes.front());
    }
    for (const auto& [name, bytes] : contents.files) {
        steps.insert(bytes.front());
        if (bytes.find_first_not_of(bytes.front()) != std::string::npos) {
            return false;
        }
    }
    return steps.size() <= 1;
}

TEST_F(CheckedVfsTest, AKilledJobWithoutItsJournalOrWithAnotherOneIsNeverHalfOldAndHalfNew) {
    constexpr std::uint32_t kSeed = 31;
    SCOPED_TRACE("seed " + std::to_string(kSeed));
    Random random(kSeed);
    Unmount();
    const std::string empty = ReadHostFile(m_host);
    int refused = 0;
    for (int kill = 0; kill < 6; ++kill) {
        SCOPED_TRACE("kill " + std::to_string(kill));
        WriteHostFile(m_host, empty);
        std::filesystem::remove(m_host + "-journal");
        std::string backup;
        {
            OtherProcess recorder([&](int, int word) { return RecordLargeSteps(m_path, word); });
            recorder.Tell();
            for (std::uint32_t wait = 1 + random.Below(2); wait != 0; --wait) {
                ASSERT_EQ(recorder.Hear(), 'r');
            }
            if (kill % 2 == 0) {
                WaitForOpenStep(m_host);
            } else {
                usleep(random.Below(500000));
            }
            ASSERT_EQ(::kill(recorder.Id(), SIGKILL), 0);
            EXPECT_EQ(recorder.Finish(), -1);
        }
        const std::string left = ReadHostFile(m_host);
        const bool hasJournal = std::filesystem::exists(m_host + "-journal");
        const auto look = [&](const std::string& file, bool withJournal) {
            const std::string path = m_dir.Utf8("look.job");
            WriteHostFile(path, file);
            std::filesystem::remove(path + "-journal");
            if (withJournal && hasJournal) {
                std::filesystem::copy_file(m_host + "-journal", path + "-journal");
            }
            if (QrfsMount(FromUtf8(path), u"W") == 0) {
                EXPECT_EQ(QrfsGetLastError(), error::kDamaged) << LastError();
                ++refused;
                return;
            }
            EXPECT_TRUE(IsOfOneStep(u"W"));
            EXPECT_EQ(StoreFindWrongPage(u"W", 0), 0U);
            QrfsUnmount(u"W");
        };
        look(left, false);  // renamed while it was open
        look(empty, true);  // a copy was put back in its place
        WriteHostFile(m_dir.Utf8("whole.job"), left);
        if (hasJournal) {
            std::filesystem::copy_file(m_host + "-journal", m_dir.Utf8("whole.job-journal"),
                                       std::filesystem::copy_options::overwrite_existing);
        }
        ASSERT_DONE(QrfsMount(FromUtf8(m_dir.Utf8("whole.job")), u"W"));
        EXPECT_TRUE(IsOfOneStep(u"W"));
        QrfsUnmount(u"W");
    }
    EXPECT_GT(refused, 0);
    WriteHostFile(m_host, empty);
    std::filesystem::remove(m_host + "-journal");
    Mount();
}

}  // namespace
}  // namespace cqsurvey
