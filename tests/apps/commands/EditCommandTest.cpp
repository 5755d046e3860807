#include "apps/ProgramTest.h"

namespace cqsurvey::cqjob {
namespace {

class EditCommandTest : public ProgramTest {
 protected:
    EditCommandTest() { MakeJob("A,1,2,3,5\nB,4,5,6\n,7,8,9\n"); }

    std::string Export() { return Run({"export", job, "-", "--no-header"}).out; }
};

TEST_F(EditCommandTest, ChangesWhatIsNamedAndNothingElse) {
    const CqjobRun run = Run({"edit", job, "A", "--east", "-20.0000000001"});
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "");
    Run({"edit", job, "B", "--north", "+1e3", "--code", "-7"});
    Run({"edit", job, "#3", "--height", "0.5", "--name", "C"});
    EXPECT_EQ(Export(), "A,-20.0000000001,1,3,5,\r\nB,5,1000,6,-7,\r\nC,8,7,0.5,0,\r\n");
    Run({"edit", job, "A", "--no-height"});
    Run({"edit", job, "C", "--name", ""});
    EXPECT_EQ(Export(), ",8,7,0.5,0,\r\nA,-20.0000000001,1,,5,\r\nB,5,1000,6,-7,\r\n");
    EXPECT_TRUE(Holds(Run({"check", job}).out, " 0 wrong\n"));
}

TEST_F(EditCommandTest, AnswersWithThePointsAsTheyAreNow) {
    Run({"groups", "add", job, "Road"});
    const std::string out = Run({"edit", job, "A", "#3", "--flags", "0xFFFFFFFF", "--group", "ROAD",
                                 "--code", "9", "--json"})
                                .out;
    EXPECT_TRUE(Holds(out, "\"name\": \"A\",\n      \"easting\": 2,"));
    EXPECT_TRUE(Holds(out, "\"handle\": 3,\n      \"name\": \"\","));
    EXPECT_TRUE(Holds(out, "\"code\": 9,\n      \"group\": \"Road\","));
    EXPECT_TRUE(Holds(out, "\"flags\": 4294967295,"));
    EXPECT_TRUE(Holds(Run({"edit", job, "A", "--group", "", "--json"}).out, "\"group\": \"\""));
    EXPECT_TRUE(Holds(Run({"points", job, "--group", "Road"}).err, "1 point\n"));
}

TEST_F(EditCommandTest, ChangesAllPointsOrNone) {
    const std::string before = Export();
    EXPECT_EQ(Run({"edit", job, "A", "Q", "--code", "1"}, 1).err,
              "cqjob: " + job + ": there is no point \"Q\"\n");
    EXPECT_EQ(Run({"edit", job, "A", "--code", "1", "--name", "B"}, 1).err,
              "cqjob: " + job + ": the job already has a point \"B\"\n");
    EXPECT_TRUE(Holds(Run({"edit", job, "A", "--code", "1", "--group", "Rail"}, 1).err,
                      job + ": there is no group \"Rail\""));
    EXPECT_EQ(Export(), before);
    Run({"edit", job, "A", "B", "#3", "--code", "1"});
    EXPECT_EQ(Export(), ",8,7,9,1,\r\nA,2,1,3,1,\r\nB,5,4,6,1,\r\n");
}

TEST_F(EditCommandTest, WrongUsageChangesNothing) {
    const std::string before = ReadFile(job);
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{},
                                               {"A"},
                                               {"--code", "1"},
                                               {"A", "--east", "x"},
                                               {"A", "--east", "1,5"},
                                               {"A", "--height", "nan"},
                                               {"A", "--height", "1", "--no-height"},
                                               {"A", "--code", "1.5"},
                                               {"A", "--flags", "-1"},
                                               {"A", "--flags", "4294967296"},
                                               {"A", "--name", "a name of twenty char"},
                                               {"A", "--name", "\xFF"},
                                               {"A", "B", "--name", "C"}}) {
        std::vector<std::string> whole = {"edit", job};
        whole.insert(whole.end(), arguments.begin(), arguments.end());
        EXPECT_TRUE(Run(whole, 2).err.starts_with("cqjob: "));
    }
    EXPECT_EQ(ReadFile(job), before);
}

TEST_F(EditCommandTest, PutsPointsOnALayerThatIsThere) {
    Run({"layers", "add", job, "Road"});
    Run({"edit", job, "A", "B", "--layer", "Road"});
    EXPECT_TRUE(Holds(Run({"layers", job}).out, "Road      7     0  yes           2\n"));
    EXPECT_TRUE(Holds(Run({"edit", job, "A", "--layer", "Raod"}, 1).err, "no layer \"Raod\""));
}

}  // namespace
}  // namespace cqsurvey::cqjob
