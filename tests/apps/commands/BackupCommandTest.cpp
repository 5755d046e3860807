#include <cqsurvey/cqsurvey.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "apps/ProgramTest.h"

namespace cqsurvey::cqjob {
namespace {

class BackupCommand : public ProgramTest {
 protected:
    BackupCommand() { MakeJob("P1,1,2,3,one\nP2,4,5,6,two\n"); }

    std::string m_out = folder.Utf8("copy.job");
};

TEST_F(BackupCommand, CopiesAJobByteForByte) {
    const std::string before = ReadFile(job);
    EXPECT_TRUE(Holds(Run({"backup", job, m_out}).out, "2 points, 2 entities copied"));
    EXPECT_EQ(ReadFile(m_out), before);
    EXPECT_EQ(ReadFile(job), before);
    Run({"check", m_out});
}

TEST_F(BackupCommand, AnswersInJson) {
    const std::string out = Run({"backup", job, m_out, "--json"}).out;
    EXPECT_TRUE(Holds(out, "\"points\": 2"));
    EXPECT_TRUE(Holds(out, "\"wrong\": 0"));
}

TEST_F(BackupCommand, ReplacesOnlyAJobAndOnlyWhenAskedTo) {
    Run({"new", m_out});
    const std::string empty = ReadFile(m_out);
    EXPECT_TRUE(Holds(Run({"backup", job, m_out}, 1).err, "copy.job"));
    EXPECT_EQ(ReadFile(m_out), empty);
    Run({"backup", job, m_out, "--force"});
    EXPECT_EQ(ReadFile(m_out), ReadFile(job));
    const std::string thesis = WriteFile("thesis.txt", "years of work");
    Run({"backup", job, thesis, "--force"}, 1);
    EXPECT_EQ(ReadFile(thesis), "years of work");
}

TEST_F(BackupCommand, RefusesTheJobItself) {
    const std::string before = ReadFile(job);
    Run({"backup", job, job, "--force"}, 2);
    EXPECT_EQ(ReadFile(job), before);
}

TEST_F(BackupCommand, RefusesAJobThatSomeoneHoldsOpen) {
    CqSurveyDB holder(FromUtf8(job));
    EXPECT_TRUE(Holds(Run({"backup", job, m_out}, 1).err, "site.job"));
    EXPECT_FALSE(std::filesystem::exists(m_out));
}

TEST_F(BackupCommand, LeavesNothingWhenTheJobIsDamaged) {
    std::string bytes = ReadFile(job);
    bytes.resize(bytes.size() - 5000);
    WriteFile("site.job", bytes);
    Run({"backup", job, m_out}, 1);
    EXPECT_FALSE(std::filesystem::exists(m_out));
    EXPECT_EQ(ReadFile(job), bytes);
}

}  // namespace
}  // namespace cqsurvey::cqjob
