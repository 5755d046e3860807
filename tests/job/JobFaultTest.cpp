#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "cqsurvey/CqBatch.h"
#include "cqsurvey/CqJobCheck.h"
#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/Text.h"
#include "support/FaultVfs.h"
#include "support/FurnishedJob.h"
#include "support/Points.h"
#include "support/TempDir.h"

namespace cqsurvey {
namespace {

class JobFault : public testing::TestWithParam<JobOperation> {
 protected:
    void ExpectUndone(CqSurveyDB& db, const std::string& before, const std::string& memory) {
        ASSERT_EQ(Dump(db), before);
        ASSERT_EQ(DumpMemory(db), memory);
        ASSERT_EQ(CqJobCheck(db).GetCount(), 0U);
        db.Close();
        db.Open(m_path);
        ASSERT_EQ(Dump(db), before);
        db.SetCurrentGroup(u"Road");
    }

    TempDir m_folder;
    CString m_path = m_folder.Path(u"a.job");
};

TEST_P(JobFault, AnOperationWhoseCommitFailsLeavesJobAndMemoryAsBefore) {
    struct Fault {
        unsigned calls;
        int result;
        bool stays;
    };
    // A sync that goes on failing leaves open what is on the medium, so it is not among them.
    constexpr std::array<Fault, 5> kFaults{{{FaultVfs::kWrite, SQLITE_IOERR_WRITE, false},
                                            {FaultVfs::kWrite, SQLITE_IOERR_WRITE, true},
                                            {FaultVfs::kWrite, SQLITE_FULL, false},
                                            {FaultVfs::kWrite, SQLITE_FULL, true},
                                            {FaultVfs::kSync, SQLITE_IOERR_FSYNC, false}}};
    for (const auto& [calls, result, stays] : kFaults) {
        SCOPED_TRACE(std::to_string(result) + (stays ? " stays" : " once"));
        m_path = m_folder.Path(FromUtf8(std::to_string(2 * result + (stays ? 1 : 0))));
        FaultVfs faults;
        CqSurveyDB db;
        db.CreateNew(m_path);
        Furnish(db);
        db.Close();
        db.Open(m_path);
        db.SetCurrentGroup(u"Road");
        bool done = false;
        for (int at = 1; !done; ++at) {
            SCOPED_TRACE("failing call " + std::to_string(at));
            ASSERT_LT(at, 400);
            const std::string before = Dump(db);
            const std::string memory = DumpMemory(db);
            faults.FailAt(calls, at, result, stays);
            bool threw = false;
            try {
                GetParam().run(db);
            } catch (const CException&) {
                threw = true;
            }
            const bool struck = faults.Struck();
            faults.Heal();
            // Where only the last sync failed once, a further one has saved the operation.
            ASSERT_TRUE(threw == struck || (struck && calls == FaultVfs::kSync));
            if (threw) {
                ExpectUndone(db, before, memory);
            }
            ASSERT_FALSE(HasFatalFailure());
            done = !threw;
        }
        const std::string after = Dump(db);
        EXPECT_EQ(CqJobCheck(db).GetCount(), 0U);
        db.Close();
        db.Open(m_path);
        EXPECT_EQ(WithoutView(Dump(db)), WithoutView(after))
            << "the operation that nothing disturbed is in the job";
    }
}

INSTANTIATE_TEST_SUITE_P(Of, JobFault, testing::ValuesIn(JobOperations()),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST_F(JobFault, AJobThatCannotBeCreatedLeavesNothingOnceClosed) {
    FaultVfs faults;
    const CString old = m_folder.Path(u"old.job");
    CqSurveyDB db;
    db.CreateNew(old);
    Furnish(db);
    const std::string before = Dump(db);
    for (const int result : {SQLITE_FULL, SQLITE_IOERR}) {
        bool done = false;
        for (int at = 1; !done; ++at) {
            SCOPED_TRACE(std::to_string(result) + ", failing call " + std::to_string(at));
            ASSERT_LT(at, 400);
            db.Open(old);
            faults.FailAt(FaultVfs::kChanging, at, result, true);
            const bool threw = CodeThrownBy([&] { db.CreateNew(m_path); }) != 0;
            const bool struck = faults.Struck();
            // What fails while the whole job is closed to be given its path takes nothing from it.
            ASSERT_TRUE(struck || !threw);
            if (!threw) {
                faults.Heal();
            } else if (db.IsOpen()) {
                ASSERT_NE(CodeThrownBy([&] { AddPoint(db, u"P", 1, 2); }), 0);
            }
            ASSERT_EQ(CodeThrownBy([&] { db.Close(); }), 0);
            faults.Heal();
            const auto files =
                std::distance(std::filesystem::directory_iterator(m_folder.Utf8("")), {});
            ASSERT_EQ(files, threw ? 1 : 2);
            if (!threw) {
                db.Open(m_path);
                ASSERT_EQ(CqJobCheck(db).GetCount(), 0U);
                db.Close();
                std::filesystem::remove(ToUtf8(m_path));
            }
            done = !struck;
        }
    }
    db.Open(old);
    EXPECT_EQ(WithoutView(Dump(db)), WithoutView(before));
}

TEST_F(JobFault, AJobThatCannotBeReadOpensOnceItCan) {
    FaultVfs faults;
    CqSurveyDB db;
    db.CreateNew(m_path);
    Furnish(db);
    db.Open(m_path);
    const std::string before = Dump(db);
    bool done = false;
    for (int at = 1; !done; ++at) {
        SCOPED_TRACE("failing call " + std::to_string(at));
        ASSERT_LT(at, 400);
        faults.FailAt(FaultVfs::kOpen | FaultVfs::kRead, at, SQLITE_IOERR, true);
        const bool threw = CodeThrownBy([&] { db.Open(m_path); }) != 0;
        ASSERT_EQ(threw, faults.Struck());
        ASSERT_EQ(CodeThrownBy([&] { db.Close(); }), 0);
        faults.Heal();
        db.Open(m_path);
        ASSERT_EQ(Dump(db), before);
        done = !threw;
    }
}

TEST_F(JobFault, ABatchThatIsHandedOnAndThenFailsIsUndoneWhole) {
    FaultVfs faults;
    CqSurveyDB db;
    db.CreateNew(m_path);
    Furnish(db);
    const std::string before = Dump(db);
    const std::string memory = DumpMemory(db);
    bool failed = false;
    try {
        CqBatch batch(db);
        for (int i = 0; i < 60000; ++i) {
            AddPoint(db, FromUtf8("N" + std::to_string(i)), i, i);
        }
        faults.FailAt(FaultVfs::kChanging, 1, SQLITE_FULL, true);
        for (int i = 60000; i < 400000; ++i) {
            AddPoint(db, FromUtf8("N" + std::to_string(i)), i, i);
        }
        batch.Commit();
    } catch (const CqSurveyException& failure) {
        failed = failure.m_code == error::kVolumeFull;
    }
    faults.Heal();
    EXPECT_TRUE(failed);
    ExpectUndone(db, before, memory);
}

TEST_F(JobFault, AWalkDoesNotEndQuietlyWhereTheMediumLeavesOpenWhatItHolds) {
    FaultVfs faults;
    CqSurveyDB db;
    db.CreateNew(m_path);
    Furnish(db);
    bool open = false;
    for (int at = 1; at < 20 && !open; ++at) {
        SCOPED_TRACE("failing sync " + std::to_string(at));
        faults.FailAt(FaultVfs::kSync, at, SQLITE_IOERR_FSYNC, true);
        CodeThrownBy([&] { db.AddCircle(kHere.data(), 2, 0, 0); });
        faults.Heal();
        CqHandle h = db.GetFirstCadEntityHandle();
        CqCadEntity* entity = nullptr;
        open = CodeThrownBy([&] { db.GetNextCadEntity(h, entity); }) == error::kReadWriteFailed;
        EXPECT_EQ(entity == nullptr, open);
        CqSurveyDB::DeleteCqCadEntityObject(entity);
    }
    EXPECT_TRUE(open);
}

}  // namespace
}  // namespace cqsurvey
