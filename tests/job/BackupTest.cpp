#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <set>
#include <string>

#include "cqsurvey/CqBatch.h"
#include "cqsurvey/CqJobCheck.h"
#include "cqsurvey/CqSurveyDB.h"
#include "store/Qrfs.h"
#include "store/VolumePath.h"
#include "support/FaultVfs.h"
#include "support/FileSizeLimit.h"
#include "support/FurnishedJob.h"
#include "support/HostBytes.h"
#include "support/HostFault.h"
#include "support/TempDir.h"
#include "tables/CqPointTable.h"

namespace cqsurvey {
namespace {

class Backup : public testing::Test {
 protected:
    Backup() {
        CqSurveyDB db;
        db.CreateNew(m_path);
        Furnish(db);
    }

    [[nodiscard]] std::set<std::string> Files() const {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(m_folder.Utf8(""))) {
            names.insert(entry.path().filename().string());
        }
        return names;
    }

    /// Tries to copy the job and expects this failure, which leaves nothing and changes nothing.
    void ExpectFailure(CqSurveyDB& db, std::int32_t code) {
        const std::set<std::string> files = Files();
        const std::string before = Dump(db);
        try {
            db.Backup(m_copy);
            ADD_FAILURE() << "the copy was made";
        } catch (const CqSurveyException& failure) {
            EXPECT_EQ(failure.m_code, code) << failure.what();
        }
        EXPECT_EQ(Files(), files);
        EXPECT_EQ(Dump(db), before);
    }

    TempDir m_folder;
    CString m_path = m_folder.Path(u"a.job");
    CString m_copy = m_folder.Path(u"copy.job");
};

TEST_F(Backup, IsTheJobByteForByteWhateverItIsOpenFor) {
    for (const bool readOnly : {false, true}) {
        CqSurveyDB db;
        if (readOnly) {
            db.OpenReadOnly(m_path);
        } else {
            db.Open(m_path);
        }
        const std::string before = Dump(db);
        EXPECT_EQ(db.Backup(m_copy), 0U);
        EXPECT_TRUE(db.IsOpen());
        EXPECT_EQ(Dump(db), before);
        EXPECT_EQ(HostFileBytes(m_folder.Utf8("copy.job")), HostFileBytes(m_folder.Utf8("a.job")));
        EXPECT_EQ(Files(), (std::set<std::string>{"a.job", "copy.job"}));
        CqSurveyDB copy(m_copy);
        EXPECT_EQ(Dump(copy), before);
        copy.Close();
        std::filesystem::remove(m_folder.Utf8("copy.job"));
    }
}

TEST_F(Backup, HoldsEveryStepAndTheJobGoesOn) {
    CqSurveyDB db(m_path);
    AddPoint(db, u"B1", 7, 8);
    db.Backup(m_copy);
    AddPoint(db, u"B2", 9, 10);
    CqSurveyDB copy(m_copy);
    EXPECT_NE(copy.GetCoordRecHandleByPtName(u"B1"), 0U);
    EXPECT_EQ(copy.GetCoordRecHandleByPtName(u"B2"), 0U);
    EXPECT_NE(db.GetCoordRecHandleByPtName(u"B2"), 0U);
}

TEST_F(Backup, KeepsTheJobLocked) {
    CqSurveyDB db(m_path);
    db.Backup(m_copy);
    CqSurveyDB other;
    EXPECT_THROW(other.Open(m_path), CqSurveyException);
    AddPoint(db, u"B1", 7, 8);
    EXPECT_NE(db.GetCoordRecHandleByPtName(u"B1"), 0U);
}

TEST_F(Backup, IsRefusedInABatchWhichGoesOn) {
    CqSurveyDB db(m_path);
    CqBatch batch(db);
    AddPoint(db, u"B1", 7, 8);
    ExpectFailure(db, error::kInvalidArgument);
    batch.Commit();
    EXPECT_NE(db.GetCoordRecHandleByPtName(u"B1"), 0U);
    db.Backup(m_copy);
    CqSurveyDB copy(m_copy);
    EXPECT_NE(copy.GetCoordRecHandleByPtName(u"B1"), 0U);
}

TEST_F(Backup, NeedsAnOpenJob) {
    const CqSurveyDB db;
    EXPECT_THROW(db.Backup(m_copy), CqSurveyException);
    EXPECT_EQ(Files(), std::set<std::string>{"a.job"});
}

TEST_F(Backup, OverwritesNothing) {
    CqSurveyDB db(m_path);
    PutHostFile(m_folder.Utf8("copy.job"), "years of work");
    ExpectFailure(db, error::kFileExists);
    EXPECT_EQ(HostFileBytes(m_folder.Utf8("copy.job")), "years of work");
    EXPECT_THROW(db.Backup(m_path), CqSurveyException) << "the job itself";
    EXPECT_THROW(db.Backup(m_folder.Path(u"none/copy.job")), CqSurveyException);
}

TEST_F(Backup, TakesThePlaceOfWhatAKilledOneLeft) {
    CqSurveyDB db(m_path);
    PutHostFile(VolumeDraftPath(m_folder.Utf8("copy.job")), "half a copy");
    db.Backup(m_copy);
    EXPECT_EQ(Files(), (std::set<std::string>{"a.job", "copy.job"}));
}

TEST_F(Backup, LeavesNothingWhenTheDiskIsFull) {
    CqSurveyDB db(m_path);
    const auto size = std::filesystem::file_size(m_folder.Utf8("a.job"));
    for (const rlim_t room : {rlim_t{0}, rlim_t{4096}, static_cast<rlim_t>(size - 1)}) {
        const std::set<std::string> files = Files();
        {
            const FileSizeLimit full(room);
            EXPECT_THROW(db.Backup(m_copy), CqSurveyException) << room;
        }
        EXPECT_EQ(Files(), files) << room;
    }
    db.Backup(m_copy);
}

TEST_F(Backup, LeavesNothingWhenTheJobCannotBeRead) {
    FaultVfs vfs;
    {
        CqSurveyDB db(m_path);
        int failures = 0;
        for (std::int64_t at = 1; failures + 1 == at; ++at) {
            const std::string before = Dump(db);
            vfs.FailAt(FaultVfs::kRead, at, SQLITE_IOERR, false);
            try {
                db.Backup(m_copy);
            } catch (const CqSurveyException&) {
                ++failures;
                EXPECT_EQ(Files(), std::set<std::string>{"a.job"}) << at;
            }
            vfs.Heal();
            EXPECT_EQ(Dump(db), before);
        }
        EXPECT_GT(failures, 20);
        EXPECT_EQ(Files(), (std::set<std::string>{"a.job", "copy.job"}));
    }
}

TEST_F(Backup, LeavesNothingWhenTheCopyCannotBeSyncedClosedOrReadBack) {
    using Kind = HostFault::Kind;
    CqSurveyDB db(m_path);
    const std::string draft = VolumeDraftPath(m_folder.Utf8("copy.job"));
    for (const Kind kind : {Kind::Sync, Kind::Close, Kind::Read, Kind::ReadOther}) {
        int failures = 0;
        bool struck = true;
        for (int at = 1; struck; ++at) {
            const HostFault fault(kind, draft, at);
            try {
                db.Backup(m_copy);
                // SQLite closes the new file, too, before anything is in it, and need not care.
                EXPECT_EQ(HostFileBytes(m_folder.Utf8("copy.job")),
                          HostFileBytes(m_folder.Utf8("a.job")));
                std::filesystem::remove(m_folder.Utf8("copy.job"));
            } catch (const CqSurveyException& failure) {
                ++failures;
                EXPECT_TRUE(failure.m_code == error::kReadWriteFailed ||
                            (kind == Kind::ReadOther && failure.m_code == error::kDamaged))
                    << failure.what();
            }
            EXPECT_EQ(Files(), std::set<std::string>{"a.job"});
            struck = fault.Struck();
        }
        EXPECT_GT(failures, 0) << static_cast<int>(kind);
    }
}

TEST_F(Backup, OfAFaultyJobSaysSo) {
    ASSERT_NE(QrfsMount(m_path, u"RAW"), 0);
    {
        CqPointTable points;
        points.CqDbTable::Open(u"RAW:/_PointData");
        points.GoTo(2);
        points.Set<"PointNumber">(CqHandle{9});
        points.Store();
    }
    ASSERT_NE(QrfsUnmount(u"RAW"), 0);
    CqSurveyDB db(m_path);
    EXPECT_EQ(db.Backup(m_copy), CqJobCheck(db).GetCount());
    EXPECT_EQ(db.Backup(m_folder.Path(u"again.job")), 1U);
}

TEST_F(Backup, OfADamagedJobIsRefused) {
    CqSurveyDB db(m_path);
    {
        // A table that nobody has read yet. Writing past the lock is what a failing medium does.
        std::string bytes = HostFileBytes(m_folder.Utf8("a.job"));
        const std::size_t at = bytes.find(std::string("s\0t\0y\0l\0e\0", 10));
        ASSERT_NE(at, std::string::npos);
        std::fstream file(m_folder.Utf8("a.job"), std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(static_cast<std::streamoff>(at / 4096 * 4096));
        file << std::string(4096, '\xAA');
    }
    EXPECT_THROW(db.Backup(m_copy), CqSurveyException);
    EXPECT_EQ(Files(), std::set<std::string>{"a.job"});
}

}  // namespace
}  // namespace cqsurvey
