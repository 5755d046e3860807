#include "store/CheckedVfs.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "store/CheckedVfsFixture.h"
#include "store/DatabasePage.h"
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

using CheckedVfsTest = CheckedVfsFixture;

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

}  // namespace
}  // namespace cqsurvey
