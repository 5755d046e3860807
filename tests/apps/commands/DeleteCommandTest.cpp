#include "apps/ProgramTest.h"

namespace cqsurvey::cqjob {
namespace {

class DeleteCommandTest : public ProgramTest {
 protected:
    DeleteCommandTest() { MakeJob("A,1,2,3,oak\nB,1,2,3\nC,1,2,3\n,1,2,3\n"); }

    std::string Names() { return Run({"export", job, "-", "--order", "nep"}).out; }
};

TEST_F(DeleteCommandTest, DeletesPointsByNameAndNumber) {
    const CqjobRun run = Run({"delete", job, "A", "#4", "#1"});
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "2 points deleted\n");
    EXPECT_EQ(Names(), "1,2,B\r\n1,2,C\r\n");
    EXPECT_TRUE(Holds(Run({"check", job}).out, " 0 wrong\n"));
    EXPECT_EQ(Run({"delete", job, "B", "--json"}).out,
              "{\n  \"job\": \"" + job +
                  "\",\n  \"deleted\": [\n    {\n      \"handle\": 2,\n      \"name\": \"B\"\n"
                  "    }\n  ],\n  \"missing\": []\n}\n");
}

TEST_F(DeleteCommandTest, DeletesNothingWhenAPointIsMissing) {
    const std::string before = ReadFile(job);
    const CqjobRun run = Run({"delete", job, "A", "Q", "#9"}, 1);
    EXPECT_TRUE(Holds(run.err, job + ": there is no point \"Q\"\n"));
    EXPECT_TRUE(Holds(run.err, job + ": there is no point \"#9\"\n"));
    EXPECT_TRUE(Holds(run.err, "nothing was deleted"));
    EXPECT_EQ(ReadFile(job), before);
}

TEST_F(DeleteCommandTest, DeletesTheOthersWhenToldToIgnoreMissingOnes) {
    const CqjobRun run = Run({"delete", job, "A", "Q", "--ignore-missing", "--json"});
    EXPECT_TRUE(Holds(run.out, "\"name\": \"A\""));
    EXPECT_TRUE(Holds(run.out, "\"missing\": [\n    \"Q\"\n  ]"));
    EXPECT_EQ(run.err, job + ": there is no point \"Q\"\n");
    EXPECT_TRUE(Holds(Run({"delete", job, "Q", "--ignore-missing"}).err, "0 points deleted\n"));
    EXPECT_EQ(Names(), "1,2,\r\n1,2,B\r\n1,2,C\r\n");
}

TEST_F(DeleteCommandTest, RefusesToGuessAndWrongUsage) {
    Run({"import", job, "-", "--order", "pnezd", "--comment", ""}, 0, "#2,1,2,3\n");
    const std::string before = ReadFile(job);
    EXPECT_TRUE(Holds(Run({"delete", job, "#2"}, 1).err, "use \"#5\" for that one"));
    Run({"delete", job, "#2", "--ignore-missing"}, 1);
    Run({"delete", job}, 2);
    Run({"delete", job, ""}, 2);
    EXPECT_EQ(ReadFile(job), before);
    Run({"delete", job, "#5"});
    EXPECT_EQ(Names(), "1,2,\r\n1,2,A\r\n1,2,B\r\n1,2,C\r\n");
    EXPECT_TRUE(Holds(Run({"delete", folder.Utf8("no.job"), "A"}, 1).err, "no.job"));
}

}  // namespace
}  // namespace cqsurvey::cqjob
