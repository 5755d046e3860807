#include "cqjob/RepairReport.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "apps/ProgramTest.h"

namespace cqsurvey::cqjob {
namespace {

class RepairReport : public ProgramTest {
 protected:
    RepairReport() {
        std::string points;
        for (int i = 0; i < 200; ++i) {
            points += "P" + std::to_string(i) + ",1,2,3,tree\n";
        }
        MakeJob(points);
    }

    std::string m_out = folder.Utf8("saved.job");
};

TEST_F(RepairReport, SavesWhatADamagedJobHoldsAndListsTheRest) {
    std::string bytes = ReadFile(job);
    // The first page of the points' names; texts are UTF-16.
    const std::size_t at = bytes.find(std::string("P\0\x31\0\x30\0", 6));
    ASSERT_NE(at, std::string::npos);
    bytes.replace(at / 4096 * 4096, 4096, 4096, '\xAA');
    WriteFile("site.job", bytes);
    Run({"check", job}, 1);
    const CqjobRun run = Run({"check", job, "--repair", m_out}, 1);
    EXPECT_TRUE(Holds(run.out, "_PointData record"));
    EXPECT_TRUE(Holds(run.out, "saved.job: 200 points, 200 entities"));
    Run({"check", m_out});
    EXPECT_EQ(ReadFile(job), bytes);
    Run({"check", job, "--repair", m_out}, 1);
    Run({"check", m_out});
}

TEST_F(RepairReport, AnswersInJson) {
    const std::string out = Run({"check", job, "--repair", m_out, "--json"}).out;
    EXPECT_TRUE(Holds(out, "\"lost\": 0"));
    EXPECT_TRUE(Holds(out, "\"points\": 200"));
}

TEST_F(RepairReport, RefusesWhatIsNoJobAndOverwritesNothing) {
    const std::string thesis = WriteFile("thesis.txt", "years of work");
    EXPECT_TRUE(Holds(Run({"check", thesis, "--repair", m_out}, 1).err, "nothing of a job"));
    EXPECT_FALSE(std::filesystem::exists(m_out));
    Run({"check", job, "--repair", thesis}, 1);
    EXPECT_EQ(ReadFile(thesis), "years of work");
    Run({"check", job, "--repair", job}, 2);
    Run({"check", folder.Utf8("none.job"), "--repair", m_out}, 1);
    EXPECT_FALSE(std::filesystem::exists(m_out));
}

}  // namespace
}  // namespace cqsurvey::cqjob
