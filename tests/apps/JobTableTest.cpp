#include <cqsurvey/cqsurvey.h>

#include <filesystem>

#include "apps/ProgramTest.h"

namespace cqsurvey::cqjob {
namespace {

class JobTableTest : public ProgramTest {
 protected:
    JobTableTest() : empty(folder.Utf8("empty.job")) {
        MakeJob("A,10,20,3\nB,11,25,3\n");
        Run({"groups", "add", job, "Road"});
        Run({"new", empty});
    }

    std::string empty;
};

TEST_F(JobTableTest, TellsSeveralJobsInATable) {
    const CqjobRun run = Run({"info", job, empty});
    EXPECT_EQ(run.err, "");
    EXPECT_TRUE(Holds(run.out, "Points  Entities  Polylines  Vertices  Texts  Circles  Bitmaps"));
    EXPECT_TRUE(
        Holds(run.out, "\n" + job + "        2         2          0         0      0        0"));
    EXPECT_TRUE(Holds(run.out, "\n" + empty + "       0         0 "));
    const std::string json = Run({"info", job, empty, "--json"}).out;
    EXPECT_TRUE(Holds(json, "\"job\": \"" + job + "\",\n      \"points\": 2,"));
    EXPECT_TRUE(Holds(json, "\"groups\": [\n        \"Road\"\n      ]"));
    EXPECT_TRUE(Holds(json, "\"job\": \"" + empty + "\",\n      \"points\": 0,"));
    EXPECT_TRUE(Holds(json, "\"layer_count\": 1,"));
}

TEST_F(JobTableTest, TellsExtentsDatesAndSize) {
    const CqjobRun run = Run({"info", job, empty});
    EXPECT_TRUE(Holds(run.out, "Easting"));
    EXPECT_TRUE(Holds(run.out, " 20"));
    const std::string bytes = std::to_string(std::filesystem::file_size(job));
    EXPECT_TRUE(Holds(run.out, bytes + "\n"));
    const std::string json = Run({"info", job, empty, "--json"}).out;
    EXPECT_TRUE(Holds(json, "\"min_easting\": "));
    EXPECT_TRUE(Holds(json, "\"first_date\": \"20"));
    EXPECT_TRUE(Holds(json, "\"bytes\": " + bytes));
}

TEST_F(JobTableTest, OneJobIsToldInFullUnlessTheTableIsAskedFor) {
    EXPECT_TRUE(Holds(Run({"info", job}).out, "Points          2\n"));
    EXPECT_TRUE(Run({"info", job, "--table"}).out.starts_with("Job "));
    EXPECT_TRUE(Holds(Run({"info", job, "--table", "--json"}).out, "\"jobs\": ["));
}

TEST_F(JobTableTest, AJobThatCannotBeReadIsARow) {
    const std::string note = WriteFile("note.txt", "no job");
    const std::string missing = folder.Utf8("missing.job");
    CqjobRun run = Run({"info", note, job, missing}, 1);
    EXPECT_TRUE(Holds(run.out, "\n" + note));
    EXPECT_TRUE(Holds(run.out, "0x30000007"));
    EXPECT_TRUE(Holds(run.out, "\n" + job));
    EXPECT_TRUE(Holds(run.out, "0x30000009"));
    EXPECT_EQ(run.err, "cqjob: 2 of 3 jobs cannot be read\n");
    run = Run({"info", note, job, "--json"}, 1);
    EXPECT_TRUE(Holds(run.out, "\"job\": \"" + note + "\",\n      \"error\": \"0x30000007"));
    EXPECT_TRUE(Holds(run.out, "\"points\": 2,"));
    Run({"info", job, "a\xFF.job"}, 2);
    Run({"info"}, 2);
}

TEST_F(JobTableTest, AJobThatAnotherProcessHoldsIsARow) {
    const CqSurveyDB db(FromUtf8(job));
    EXPECT_TRUE(Holds(Run({"info", job, empty}, 1).out, "0x30000008"));
}

TEST_F(JobTableTest, AJobThatAnotherProcessHoldsIsARowThatSaysSoAndOneThatItReadsIsLikeOthers) {
    CqSurveyDB db;
    db.Open(FromUtf8(job));
    EXPECT_TRUE(Holds(Run({"info", job, empty}, 1).out, "0x30000008"));
    db.OpenReadOnly(FromUtf8(job));
    EXPECT_FALSE(Holds(Run({"info", job, empty}, 0).out, "0x30000008"));
}

}  // namespace
}  // namespace cqsurvey::cqjob
