#include "job/JobStep.h"

#include <gtest/gtest.h>

#include <array>
#include <new>
#include <string>

#include "cqsurvey/CqBatch.h"
#include "job/Job.h"
#include "store/StoreTesting.h"
#include "support/Points.h"

namespace cqsurvey {
namespace {

/// What a call throws: the code, "memory", or "none".
template <class Body>
std::string Thrown(Body&& body) {
    try {
        body();
    } catch (const CqSurveyException& failure) {
        return Hex(failure.m_code);
    } catch (const std::bad_alloc&) {
        return "memory";
    }
    return "none";
}

/// An open job, with a fault to be had.
class JobStepTest : public testing::Test {
 protected:
    void SetUp() override {
        m_db.CreateNew(m_path);
        AddPoint(m_db, u"first", 1.0, 2.0);
    }
    void TearDown() override {
        m_vfs.Heal();
        m_db.Close();
    }

    std::string Names() {
        std::string names;
        for (const char16_t* name : {u"first", u"second", u"third"}) {
            names += m_db.GetCoordRecHandleByPtName(name) != 0 ? ToUtf8(name) + " " : "";
        }
        return names;
    }

    void ExpectNow(const std::string& names) {
        EXPECT_EQ(Names(), names);
        m_db.Close();
        m_db.Open(m_path);
        EXPECT_EQ(Names(), names);
    }

    FaultVfs m_vfs;
    TempDir m_dir;
    CString m_path = m_dir.Path(u"a.job");
    CqSurveyDB m_db;
};

TEST_F(JobStepTest, AnOperationGivesItsResultAndIsKept) {
    EXPECT_EQ(Atomically(m_db.GetJob(),
                         [&] {
                             AddPoint(m_db, u"second", 3.0, 4.0);
                             return 7;
                         }),
              7);
    ExpectNow("first second ");
}

TEST_F(JobStepTest, WhatWasDoneBeforeARefusalIsKept) {
    EXPECT_EQ(Thrown([&] {
                  Atomically(m_db.GetJob(), [&] {
                      AddPoint(m_db, u"second", 3.0, 4.0);
                      throw CqSurveyException(error::kNoRecord);
                  });
              }),
              "0x31000003");
    ExpectNow("first second ");
}

TEST_F(JobStepTest, WhatWasDoneBeforeAFailureOfTheMediumIsUndone) {
    for (const std::int32_t code :
         {error::kOutOfMemory, error::kReadWriteFailed, error::kVolumeFull, error::kDamaged}) {
        EXPECT_EQ(Thrown([&] {
                      Atomically(m_db.GetJob(), [&] {
                          AddPoint(m_db, u"second", 3.0, 4.0);
                          throw CqSurveyException(code);
                      });
                  }),
                  Hex(code));
        ExpectNow("first ");
    }
}

TEST_F(JobStepTest, WhatWasDoneBeforeAnyOtherExceptionIsUndone) {
    EXPECT_EQ(Thrown([&] {
                  Atomically(m_db.GetJob(), [&] {
                      AddPoint(m_db, u"second", 3.0, 4.0);
                      throw std::bad_alloc();
                  });
              }),
              "memory");
    ExpectNow("first ");
}

TEST_F(JobStepTest, HalfAnOperationSpoilsTheBatchAroundIt) {
    CqBatch batch(m_db);
    AddPoint(m_db, u"second", 3.0, 4.0);
    EXPECT_EQ(Thrown([&] { Atomically(m_db.GetJob(), [&] { throw std::bad_alloc(); }); }),
              "memory");
    EXPECT_EQ(Thrown([&] { AddPoint(m_db, u"third", 5.0, 6.0); }), "0x30000001");
    EXPECT_EQ(Thrown([&] { batch.Commit(); }), "0x30000001");
    ExpectNow("first ");
}

TEST_F(JobStepTest, AFailureOfTheMediumInABatchSpoilsItAndARefusalDoesNot) {
    {
        CqBatch batch(m_db);
        AddPoint(m_db, u"second", 3.0, 4.0);
        EXPECT_EQ(Thrown([&] { AddPoint(m_db, u"second", 5.0, 6.0); }), "0x31000004");
        batch.Commit();
    }
    CqBatch batch(m_db);
    AddPoint(m_db, u"third", 5.0, 6.0);
    EXPECT_EQ(Thrown([&] {
                  Atomically(m_db.GetJob(),
                             [] { throw CqSurveyException(error::kReadWriteFailed); });
              }),
              "0x30000005");
    EXPECT_EQ(Thrown([&] { batch.Commit(); }), "0x30000005");
    ExpectNow("first second ");
}

TEST_F(JobStepTest, ACommitThatFailsIsThrownAndNothingStays) {
    m_vfs.FailAt(FaultVfs::kWrite, 1, SQLITE_FULL, true);
    EXPECT_EQ(Thrown([&] { AddPoint(m_db, u"second", 3.0, 4.0); }), "0x30000006");
    EXPECT_EQ(Names(), "first ");
    m_vfs.Heal();
    AddPoint(m_db, u"third", 5.0, 6.0);
    ExpectNow("first third ");
}

}  // namespace
}  // namespace cqsurvey
