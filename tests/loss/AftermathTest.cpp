#include "loss/Aftermath.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <string>

#include "cqsurvey/CqSurveyDB.h"
#include "support/Points.h"
#include "support/TempDir.h"

namespace cqsurvey {
namespace {

/// Work that nothing disturbed, and what a look at it finds.
class AftermathTest : public testing::Test {
 protected:
    void SetUp() override {
        m_work.Begin(5);
        CqSurveyDB db;
        for (int i = 0; i < 40; ++i) {
            m_work.Step(&db);
        }
    }

    TempDir m_folder;
    Workload m_work{m_folder.Utf8(".")};
};

TEST_F(AftermathTest, WorkThatNothingDisturbedIsAllThere) {
    const Aftermath found = LookAtFolder(m_folder.Utf8("."), m_work);
    EXPECT_FALSE(found.ahead);
    EXPECT_FALSE(found.halfway);
    EXPECT_FALSE(found.draft);
}

TEST_F(AftermathTest, AStepMoreIsTheOneUnderWay) {
    CqSurveyDB db(m_work.PathOf(m_work.GetCurrent()));
    Workload worker = m_work;
    while (worker.GetJobs().at(worker.GetCurrent()).Lines() ==
           m_work.GetJobs().at(m_work.GetCurrent()).Lines()) {
        m_work = worker;
        worker.Step(&db);
    }
    db.Close();
    EXPECT_TRUE(LookAtFolder(m_folder.Utf8("."), m_work).ahead);
}

TEST_F(AftermathTest, APointMoreIsFound) {
    {
        CqSurveyDB db(m_work.PathOf(m_work.GetCurrent()));
        AddPoint(db, u"unreported", 1, 2);
    }
    EXPECT_NONFATAL_FAILURE(static_cast<void>(LookAtFolder(m_folder.Utf8("."), m_work)),
                            "not all there");
}

TEST_F(AftermathTest, AFileMoreIsFound) {
    {
        CqSurveyDB db;
        db.CreateNew(m_folder.Path(u"foreign.job"));
    }
    EXPECT_NONFATAL_FAILURE(static_cast<void>(LookAtFolder(m_folder.Utf8("."), m_work)),
                            "foreign.job");
}

}  // namespace
}  // namespace cqsurvey
