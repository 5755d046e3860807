#include "cqjob/JobChange.h"

#include <gtest/gtest.h>

#include "cqjob/Failure.h"
#include "cqjob/JobFile.h"
#include "support/TempDir.h"

namespace cqsurvey::cqjob {
namespace {

class JobChangeTest : public testing::Test {
 protected:
    JobChangeTest() {
        CqSurveyDB db;
        db.CreateNew(FromUtf8(job));
    }

    [[nodiscard]] bool HasGroupAndIdentity() const {
        CqSurveyDB db;
        OpenToRead(db, job);
        const bool group = db.GetGroupID(u"Road") != 0;
        EXPECT_EQ(CqJobIdentity(db).Get().empty(), !group);
        return group;
    }

    TempDir folder;
    std::string job = folder.Utf8("a.job");
};

TEST_F(JobChangeTest, CommitRecordsTheChangeAndGivesTheJobAnIdentity) {
    JobChange change(job);
    change.GetJob().AddGroup(u"Road");
    change.Commit();
    EXPECT_FALSE(change.GetJob().IsOpen());
    EXPECT_TRUE(HasGroupAndIdentity());
}

TEST_F(JobChangeTest, WithoutCommitNothingIsChanged) {
    {
        JobChange change(job);
        change.GetJob().AddGroup(u"Road");
    }
    EXPECT_FALSE(HasGroupAndIdentity());
}

TEST_F(JobChangeTest, AJobThatIsNotThereIsAFailure) {
    EXPECT_THROW(JobChange(folder.Utf8("none.job")), Failure);
}

}  // namespace
}  // namespace cqsurvey::cqjob
