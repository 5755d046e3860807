#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <random>
#include <string>

#include "cqsurvey/CException.h"
#include "cqsurvey/CqBatch.h"
#include "cqsurvey/CqJobCheck.h"
#include "cqsurvey/CqSurveyDB.h"
#include "loss/Aftermath.h"
#include "loss/EveryOperation.h"
#include "loss/Workload.h"
#include "support/FaultVfs.h"
#include "support/JobLines.h"
#include "support/Points.h"
#include "support/TempDir.h"

namespace cqsurvey {
namespace {

using Unsynced = FaultVfs::Unsynced;

/// Does what the power is cut under; true when it was reported as done.
bool Report(const std::function<void()>& work) {
    try {
        work();
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

/// Cuts the power while a job in a folder of its own is changed, and looks at what the medium may
/// hold then.
class PowerCut : public testing::Test {
 protected:
    using Change = std::function<void(CqSurveyDB& db)>;

    PowerCut() { WriteImports(m_imports.Utf8(".")); }

    /// Keeps the job as the one on which each change begins.
    void Begin(const Change& furnish) {
        CqSurveyDB db;
        db.CreateNew(m_path);
        furnish(db);
        m_before = ReadAgain(db);
        db.Close();
        std::ifstream file(m_host, std::ios::binary);
        m_bytes.assign(std::istreambuf_iterator<char>(file), {});
    }

    void Restore() {
        std::filesystem::remove(m_host + "-journal");
        std::ofstream(m_host, std::ios::binary | std::ios::trunc) << m_bytes;
    }

    JobLines ReadAgain(CqSurveyDB& db) {
        db.Close();
        db.Open(m_path);
        return ReadJob(db);
    }

    /// What the job holds after the change when nothing comes between.
    void DoUndisturbed(const Change& change) {
        Restore();
        CqSurveyDB db(m_path);
        change(db);
        m_after = ReadAgain(db);
        ASSERT_NE(FindDifference(m_after, m_before), "") << "the change is none";
    }

    /// Cuts the power at the `at`th call that reaches the medium, or after the change when there
    /// are fewer. Gives whether it was cut.
    bool CutAt(std::int64_t at, const Change& change) {
        SCOPED_TRACE("call " + std::to_string(at));
        Restore();
        m_vfs.WatchPower(m_folder.Utf8("."));
        bool reported = false;
        bool cut = false;
        {
            CqSurveyDB db(m_path);
            m_vfs.FailAt(FaultVfs::kChanging, at, FaultVfs::kPowerCut, true);
            reported = Report([&] { change(db); });
            cut = m_vfs.Struck();
            // What the job's end would still write must not reach the medium.
            m_vfs.FailAt(FaultVfs::kChanging, 1, FaultVfs::kPowerCut, true);
        }
        m_vfs.Heal();
        EXPECT_TRUE(reported || cut);
        std::mt19937 random(static_cast<std::uint32_t>(at));
        for (const Unsynced unsynced : {Unsynced::Lost, Unsynced::Kept, Unsynced::Mixed}) {
            SCOPED_TRACE("unsynced " + std::to_string(static_cast<int>(unsynced)));
            Look(unsynced, random, reported);
        }
        return cut;
    }

    void Look(Unsynced unsynced, std::mt19937& random, bool reported) {
        const TempDir medium;
        m_vfs.WriteMedium(medium.Utf8("."), unsynced, random);
        {
            CqSurveyDB db(medium.Path(u"a.job"));
            const JobLines found = ReadJob(db);
            EXPECT_TRUE(found == m_after || (!reported && found == m_before))
                << (reported ? "reported\n" : "") << FindDifference(found, m_before) << "\n"
                << FindDifference(found, m_after);
            EXPECT_EQ(CqJobCheck(db).GetCount(), 0U);
            AddPoint(db, u"it works", 1, 2);
        }
        EXPECT_EQ(NamesInFolder(medium.Utf8(".")), std::set<std::string>{"a.job"});
    }

    FaultVfs m_vfs;
    TempDir m_imports;
    TempDir m_folder;
    CString m_path = m_folder.Path(u"a.job");
    std::string m_host = m_folder.Utf8("a.job");
    std::string m_bytes;
    JobLines m_before;
    JobLines m_after;
};

class PowerCutUnder : public PowerCut, public testing::WithParamInterface<ChangingOperation> {};

TEST_P(PowerCutUnder, LeavesWhatWasReportedAndAllOrNothingOfTheRest) {
    const CString imports = m_imports.Path(u".");
    Begin([&](CqSurveyDB& db) { FurnishWhole(db, imports); });
    const auto change = [&](CqSurveyDB& db) { GetParam().run(db, imports); };
    ASSERT_NO_FATAL_FAILURE(DoUndisturbed(change));
    std::int64_t at = 1;
    while (CutAt(at, change) && !HasFailure()) {
        ++at;
    }
    EXPECT_GT(at, 5);
}

INSTANTIATE_TEST_SUITE_P(Operation, PowerCutUnder, testing::ValuesIn(EveryOperation()),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST_F(PowerCut, UnderABatchLargerThanTheDatabasesMemoryLeavesAllOrNothingOfIt) {
    // SQLite keeps 8 MB of pages. More of them than that are changed, so it writes into the file
    // before the batch is committed.
    constexpr int kMegabyte = 1 << 20;
    std::ofstream(m_imports.Utf8("9.img"), std::ios::binary) << std::string(9 * kMegabyte, '9');
    std::ofstream(m_imports.Utf8("12.img"), std::ios::binary) << std::string(12 * kMegabyte, 'c');
    const auto store = [&](CqSurveyDB& db, const CString& name) {
        ASSERT_EQ(db.StoreBackgroundImageFile(m_imports.Path(name), 1, CVector(), CVector(), 0), 1);
    };
    Begin([&](CqSurveyDB& db) {
        FurnishWhole(db, m_imports.Path(u"."));
        store(db, u"9.img");
    });
    const auto change = [&](CqSurveyDB& db) {
        CqBatch batch(db);
        AddPoint(db, u"before", 1, 2);
        if (db.StoreBackgroundImageFile(m_imports.Path(u"12.img"), 2, CVector(), CVector(), 0) ==
            0) {
            throw std::runtime_error("no image");
        }
        db.DelCoordRec(u"P1");
        AddPoint(db, u"after", 3, 4);
        batch.Commit();
    };
    ASSERT_NO_FATAL_FAILURE(DoUndisturbed(change));
    std::int64_t at = 1;
    while (CutAt(at, change) && !HasFailure()) {
        at += 1 + at;
    }
    EXPECT_GT(at, 4000) << "it all fitted into memory";
}

TEST_F(PowerCut, UnderACreationLeavesAWholeJobOrNothingAtItsPath) {
    for (std::int64_t at = 1;; ++at) {
        SCOPED_TRACE("call " + std::to_string(at));
        for (const std::string& name : NamesInFolder(m_folder.Utf8("."))) {
            std::filesystem::remove(m_folder.Utf8(name));
        }
        m_vfs.WatchPower(m_folder.Utf8("."));
        bool reported = false;
        bool cut = false;
        {
            CqSurveyDB db;
            m_vfs.FailAt(FaultVfs::kChanging, at, FaultVfs::kPowerCut, true);
            reported = Report([&] { db.CreateNew(m_path); });
            cut = m_vfs.Struck();
            m_vfs.FailAt(FaultVfs::kChanging, 1, FaultVfs::kPowerCut, true);
        }
        m_vfs.Heal();
        std::mt19937 random(static_cast<std::uint32_t>(at));
        for (const Unsynced unsynced :
             {Unsynced::Lost, Unsynced::Kept, Unsynced::Mixed, Unsynced::Mixed, Unsynced::Mixed}) {
            const TempDir medium;
            m_vfs.WriteMedium(medium.Utf8("."), unsynced, random);
            const bool there = std::filesystem::exists(medium.Utf8("a.job"));
            ASSERT_TRUE(there || !reported);
            CqSurveyDB db;
            if (there) {
                db.Open(medium.Path(u"a.job"));
            } else {
                db.CreateNew(medium.Path(u"a.job"));
            }
            ASSERT_EQ(FindDifference(ReadJob(db), JobModel().Lines()), "");
            ASSERT_EQ(CqJobCheck(db).GetCount(), 0U);
            db.Close();
            ASSERT_EQ(NamesInFolder(medium.Utf8(".")), std::set<std::string>{"a.job"});
        }
        if (!cut) {
            ASSERT_TRUE(reported);
            ASSERT_GT(at, 20);
            break;
        }
    }
}

TEST_F(PowerCut, NoJobIsReportedInAFolderWhoseNamesCouldNotBeMadeDurable) {
    for (std::int64_t at = 1;; ++at) {
        SCOPED_TRACE("sync " + std::to_string(at));
        m_vfs.WatchPower(m_folder.Utf8("."));
        m_vfs.FailAt(FaultVfs::kSyncFolder, at, SQLITE_IOERR, false);
        CqSurveyDB db;
        const bool reported = Report([&] { db.CreateNew(m_path); });
        const bool struck = m_vfs.Struck();
        m_vfs.Heal();
        ASSERT_NE(reported, struck);
        if (reported) {
            ASSERT_GE(at, 3);
            break;
        }
        ASSERT_EQ(NamesInFolder(m_folder.Utf8(".")), std::set<std::string>{});
    }
}

TEST_F(PowerCut, AfterAnotherLeavesAllTheWorkThatWasReported) {
    constexpr std::uint32_t kFolders = 6;
    constexpr std::uint32_t kCuts = 15;
    for (std::uint32_t folder = 0; folder < kFolders && !HasFailure(); ++folder) {
        const TempDir jobs;
        Workload work(jobs.Utf8("."));
        for (std::uint32_t seed = folder * 1000; seed < folder * 1000 + kCuts; ++seed) {
            SCOPED_TRACE("seed " + std::to_string(seed));
            std::mt19937 random(seed);
            m_vfs.WatchPower(jobs.Utf8("."));
            work.Begin(seed);
            {
                Workload worker = work;
                CqSurveyDB db;
                if (!work.GetCurrent().empty()) {
                    db.Open(work.PathOf(work.GetCurrent()));
                }
                m_vfs.FailAt(FaultVfs::kChanging, 1 + random() % 300, FaultVfs::kPowerCut, true);
                while (Report([&] { worker.Step(&db); })) {
                    work.Step(nullptr);
                }
            }
            ASSERT_TRUE(m_vfs.Struck());
            m_vfs.Heal();
            Workload now = work;
            TempDir medium;
            for (const Unsynced unsynced : {Unsynced::Lost, Unsynced::Kept, Unsynced::Mixed}) {
                SCOPED_TRACE("unsynced " + std::to_string(static_cast<int>(unsynced)));
                now = work;
                for (const std::string& name : NamesInFolder(medium.Utf8("."))) {
                    std::filesystem::remove(medium.Utf8(name));
                }
                m_vfs.WriteMedium(medium.Utf8("."), unsynced, random);
                static_cast<void>(LookAtFolder(medium.Utf8("."), now));
                ASSERT_FALSE(HasFailure());
            }
            // The work goes on with what the last look has seen.
            for (const std::string& name : NamesInFolder(jobs.Utf8("."))) {
                std::filesystem::remove(jobs.Utf8(name));
            }
            std::filesystem::copy(medium.Utf8("."), jobs.Utf8("."));
            work = now;
        }
    }
}

}  // namespace
}  // namespace cqsurvey
