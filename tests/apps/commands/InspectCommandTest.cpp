#include <filesystem>

#include "apps/ProgramTest.h"
#include "support/SurveyData.h"

namespace cqsurvey::cqjob {
namespace {

class InspectCommandTest : public ProgramTest {
 protected:
    InspectCommandTest() { MakeJob("A,1,2,3,tree\nB,1,2,3\nb,5,6,3\nC,7,8,-9999\n"); }
};

TEST_F(InspectCommandTest, SaysWhatItFindsAndEndsWell) {
    EXPECT_EQ(Run({"inspect", job}).out,
              job +
                  ": 4 points, 4 findings\n"
                  "  numbers that stand for no number: 1\n"
                  "    1 point with the height -9999: C (#4)\n"
                  "  points without height: 1\n"
                  "    no group, no code: 1 of 3 points without height: C (#4)\n"
                  "  points in the same place: 1\n"
                  "    A (#1), B (#2) are in the same place\n"
                  "  names that may be one name: 1\n"
                  "    B (#2), b (#3) may be one name; they are up to 5.657 apart\n");
}

TEST_F(InspectCommandTest, AnswersInJson) {
    const std::string out = Run({"inspect", job, "--json", "--tolerance", "20"}).out;
    EXPECT_TRUE(Holds(out, "\"points\": 4"));
    EXPECT_TRUE(Holds(out, "\"coincident\": 1"));
    EXPECT_TRUE(Holds(out, "\"name\": 0"));
    EXPECT_TRUE(Holds(out, "\"kind\": \"sentinel\""));
    EXPECT_TRUE(Holds(out, "\"handle\": 4,\n              \"name\": \"C\""));
}

TEST_F(InspectCommandTest, LooksAtSeveralJobsEvenIfOneCannotBeRead) {
    const std::string missing = folder.Utf8("missing.job");
    const CqjobRun run = Run({"inspect", missing, job}, 1);
    EXPECT_TRUE(Holds(run.err, missing));
    EXPECT_TRUE(Holds(run.out, job + ": 4 points, 4 findings\n"));
    const std::string json = Run({"inspect", missing, job, "--json"}, 1).out;
    EXPECT_TRUE(Holds(json, "\"error\""));
    EXPECT_TRUE(Holds(json, "\"kind\""));
}

TEST_F(InspectCommandTest, ShowsNoMoreThanTheLimit) {
    Run({"import", job, "-", "--order", "pnezd"}, 0, "c,9,9,3\nd,9,9,3\ne,8,8,3\nf,8,8,3\n");
    const std::string out = Run({"inspect", job, "--limit", "1"}).out;
    EXPECT_TRUE(Holds(out, "points in the same place: 3\n"));
    EXPECT_TRUE(Holds(out, "    ... and 2 more; --limit shows them\n"));
}

TEST_F(InspectCommandTest, ChangesNoByteOfTheJob) {
    const std::string before = ReadFile(job);
    Run({"inspect", job});
    EXPECT_TRUE(ReadFile(job) == before);
}

TEST_F(InspectCommandTest, FindsTheWrongHeightOfARealSurveyAndNoOther) {
    const std::string file = SurveyDataPath("points/topo_pnezd_ft.asc");
    if (!std::filesystem::exists(file)) {
        GTEST_SKIP() << "there is no " << file;
    }
    const std::string topo = folder.Utf8("topo.job");
    Run({"new", topo});
    Run({"import", topo, file, "--order", "pnezd"});
    const std::string out = Run({"inspect", topo}).out;
    EXPECT_TRUE(Holds(out,
                      "  heights far from those around them: 1\n"
                      "    379 (#379) has the height 583.021; "));
    EXPECT_TRUE(Holds(out, "\"BLG\", which no other point has; 6 points have \"BLDG\"\n"));
}

}  // namespace
}  // namespace cqsurvey::cqjob
