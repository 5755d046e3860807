#include "store/StoreExtras.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <set>
#include <string>

#include "store/CheckedVfs.h"
#include "store/OtherProcess.h"
#include "store/StoreTesting.h"
#include "store/VolumePath.h"
#include "support/FileSizeLimit.h"

namespace cqsurvey {
namespace {

using Names = std::set<std::string>;

class StoreExtrasTest : public StoreTest {
 protected:
    /// The names in the folder, without the journal of the mounted volume.
    [[nodiscard]] Names Files() const {
        Names names = NamesIn(m_dir.Utf8(""));
        names.erase("volume.job-journal");
        return names;
    }

    CString m_copy = m_dir.Path(u"copy.job");
    CString m_draft;
};

TEST_F(StoreExtrasTest, ADraftThatIsInUseIsNotMadeAnew) {
    ASSERT_DONE(StoreDraftVolume(m_copy, m_draft));
    ASSERT_DONE(QrfsMount(m_draft, u"W"));
    ASSERT_DONE(CreateTable<PairLayout>(u"W"));
    CString other;
    EXPECT_FAILS(0, error::kVolumeMounted, StoreDraftVolume(m_copy, other));
    EXPECT_FAILS(0, error::kVolumeMounted, StoreCopyVolume(u"V", m_copy, other));
    const std::uint32_t pairs = OpenTable<PairLayout>(u"W");
    EXPECT_DONE(QrdbAppendRecord(pairs, MakePair(1, 2).data()));
}

TEST_F(StoreExtrasTest, ADraftThatAnotherProgramFillsIsNotMadeAnew) {
    OtherProcess maker([&](int go, int word) {
        CString draft;
        char next = 0;
        if (StoreDraftVolume(m_copy, draft) == 0 || QrfsMount(draft, u"C") == 0 ||
            write(word, "m", 1) != 1 || read(go, &next, 1) != 1) {
            return 1;
        }
        QrfsUnmount(u"C");
        return StorePublishVolume(m_copy) != 0 ? 0 : 2;
    });
    maker.Tell();
    ASSERT_EQ(maker.Hear(), 'm');
    EXPECT_FAILS(0, error::kVolumeMounted, StoreDraftVolume(m_copy, m_draft));
    EXPECT_NE(std::string(StoreErrorDetail()).find("another program"), std::string::npos);
    EXPECT_FAILS(0, error::kVolumeMounted, StoreCopyVolume(u"V", m_copy, m_draft));
    maker.Tell();
    EXPECT_EQ(maker.Finish(), 0);
    EXPECT_FAILS(0, error::kFileExists, StoreDraftVolume(m_copy, m_draft));
}

TEST_F(StoreExtrasTest, ADraftGetsItsNameWholeOrIsGone) {
    bool struck = true;
    for (int at = 1; struck; ++at) {
        SCOPED_TRACE(at);
        ASSERT_DONE(StoreDraftVolume(m_copy, m_draft));
        m_vfs.WatchPower(m_dir.Utf8(""));
        m_vfs.FailAt(FaultVfs::kSyncFolder, at, SQLITE_IOERR, false);
        const int published = StorePublishVolume(m_copy);
        struck = m_vfs.Struck();
        m_vfs.Heal();
        EXPECT_EQ(published == 0, struck);
        EXPECT_EQ(Files(),
                  published == 0 ? (Names{"volume.job"}) : (Names{"volume.job", "copy.job"}));
        ASSERT_LT(at, 5);
    }
    ASSERT_DONE(QrfsMount(m_copy, u"W"));
}

TEST_F(StoreExtrasTest, ANameThatWasTakenMeanwhileIsLeftAlone) {
    ASSERT_DONE(StoreDraftVolume(m_copy, m_draft));
    WriteHostFile(m_dir.Utf8("copy.job"), "years of work");
    EXPECT_FAILS(0, error::kFileExists, StorePublishVolume(m_copy));
    EXPECT_EQ(ReadHostFile(m_dir.Utf8("copy.job")), "years of work");
    EXPECT_EQ(Files(), (Names{"volume.job", "copy.job"}));
}

TEST_F(StoreExtrasTest, ACopyForWhichThereIsNoRoomAtAnyPageLeavesNothing) {
    ASSERT_DONE(PutFile(u"V:/One", std::string(30000, 'a')));
    const Contents before = ReadContents(u"V");
    const auto size = std::filesystem::file_size(m_host);
    // The first room is that of an empty volume, with which every copy begins.
    for (rlim_t room = 0; room < size; room += 4096) {
        SCOPED_TRACE(room);
        {
            const FileSizeLimit full(room);
            EXPECT_FAILS(0, error::kVolumeFull, StoreCopyVolume(u"V", m_copy, m_draft));
        }
        EXPECT_EQ(Files(), Names{"volume.job"});
    }
    EXPECT_EQ(ReadContents(u"V"), before);
    EXPECT_DONE(StoreCopyVolume(u"V", m_copy, m_draft));
}

TEST_F(StoreExtrasTest, ACopyIntoAFolderThatMayNotBeChangedSaysSo) {
    if (geteuid() == 0) {
        GTEST_SKIP() << "a superuser may change every folder";
    }
    const std::string folder = m_dir.Utf8("closed");
    std::filesystem::create_directory(folder);
    ASSERT_EQ(chmod(folder.c_str(), 0555), 0);
    EXPECT_FAILS(0, error::kAccessDenied,
                 StoreCopyVolume(u"V", FromUtf8(folder + "/copy.job"), m_draft));
    chmod(folder.c_str(), 0755);
    EXPECT_TRUE(NamesIn(folder).empty());
}

TEST_F(StoreExtrasTest, ACopyOfAFileThatWasCutOffMeanwhileIsRefused) {
    ASSERT_DONE(PutFile(u"V:/One", std::string(30000, 'a')));
    const std::string whole = ReadHostFile(m_host);
    for (std::size_t size = whole.size() - 1; size > 8192; size -= 4095) {
        SCOPED_TRACE(size);
        std::filesystem::resize_file(m_host, size);
        EXPECT_FAILS(0, error::kDamaged, StoreCopyVolume(u"V", m_copy, m_draft));
        EXPECT_EQ(Files(), Names{"volume.job"});
    }
}

TEST_F(StoreExtrasTest, NoCopyIsMadeWhileAStepIsOpen) {
    ASSERT_DONE(StoreBeginStep(u"V"));
    EXPECT_FAILS(0, error::kInvalidArgument, StoreCopyVolume(u"V", m_copy, m_draft));
    EXPECT_EQ(Files().count("copy.job"), 0U);
    EXPECT_DONE(StoreCommitStep(u"V"));
}

TEST_F(StoreExtrasTest, AFileIsSetAsideOnItsOwnVolumeOnly) {
    ASSERT_DONE(QrfsCreateVolume(m_copy));
    ASSERT_DONE(QrfsMount(m_copy, u"W"));
    ASSERT_DONE(PutFile(u"V:/One", "one"));
    EXPECT_FAILS(0, error::kInvalidArgument, StoreSetFileAside(u"V:/One", u"W:/One", 100));
    EXPECT_FAILS(0, error::kNoFile, StoreSetFileAside(u"V:/Two.ini", u"V:/Three", 100));
    EXPECT_DONE(StoreSetFileAside(u"V:/One", u"V:/Two.ini", 100));
    EXPECT_EQ(GetFile(u"V:/Two.ini"), "one");
}

TEST_F(StoreExtrasTest, AReadThatFailsWhilePagesAreCheckedIsAnErrorAndNoSoundFile) {
    ASSERT_DONE(PutFile(u"V:/One", std::string(30000, 'a')));
    bool struck = true;
    int refused = 0;
    for (int at = 1; struck; ++at) {
        SCOPED_TRACE(at);
        Registry::SetLastError(error::kNone);
        m_vfs.FailAt(FaultVfs::kRead, at, SQLITE_IOERR, false);
        EXPECT_EQ(StoreFindWrongPage(u"V", 0), 0U);
        struck = m_vfs.Struck();
        m_vfs.Heal();
        EXPECT_EQ(QrfsGetLastError(), struck ? error::kReadWriteFailed : error::kNone);
        refused += struck ? 1 : 0;
    }
    EXPECT_GT(refused, 8);
    // A file that is no longer a database, or not a whole page.
    std::filesystem::resize_file(m_host, 50);
    EXPECT_EQ(StoreFindWrongPage(u"V", 0), 1U);
    std::filesystem::resize_file(m_host, 0);
    EXPECT_EQ(StoreFindWrongPage(u"V", 0), 1U);
}

TEST_F(StoreExtrasTest, TwoFilesWhoseNamesDifferInCaseAloneOrNumbersAtTheirEndAreToldApart) {
    ASSERT_DONE(PutFile(u"V:/One", "one"));
    Unmount();
    // The last number that a file can have.
    RunSql(m_host,
           "UPDATE Volume_File SET File = 2147483647;"
           "UPDATE Volume_Block SET Position = (2147483647 << 32) | (Position & "
           "4294967295)");
    Mount();
    EXPECT_EQ(GetFile(u"V:/One"), "one");
    EXPECT_FAILS(0, error::kVolumeFull, QrfsCreateFile(u"V:/Three", 0));
    EXPECT_EQ(GetFile(u"V:/One"), "one");
}

TEST_F(StoreExtrasTest, TheCheckedFilesAnswerSqliteAsTheSystemsDo) {
    sqlite3_vfs* vfs = sqlite3_vfs_find(CheckedVfs::GetName());
    sqlite3_vfs* system = sqlite3_vfs_find("unix");
    ASSERT_NE(vfs, nullptr);
    double now = 0;
    double expected = 0;
    EXPECT_EQ(vfs->xCurrentTime(vfs, &now), SQLITE_OK);
    EXPECT_EQ(system->xCurrentTime(system, &expected), SQLITE_OK);
    EXPECT_NEAR(now, expected, 1.0);
    std::array<char, 64> bytes{};
    EXPECT_GT(vfs->xRandomness(vfs, 64, bytes.data()), 0);
    EXPECT_NE(AsString(bytes), std::string(64, '\0'));
    EXPECT_GE(vfs->xSleep(vfs, 1), 1);
}

}  // namespace
}  // namespace cqsurvey
