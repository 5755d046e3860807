#include "apps/ProgramTest.h"

namespace cqsurvey::cqjob {
namespace {

class DescribeCommandTest : public ProgramTest {
 protected:
    DescribeCommandTest() { MakeJob("A,1,2,3,oak\nB,1,2,3\n,1,2,3\n"); }
};

TEST_F(DescribeCommandTest, ShowsADescription) {
    EXPECT_EQ(Run({"describe", job, "A"}).out, "oak\n");
    EXPECT_EQ(Run({"describe", job, "#1"}).out, "oak\n");
    EXPECT_EQ(Run({"describe", job, "A", "--json"}).out,
              "{\n  \"job\": \"" + job +
                  "\",\n  \"handle\": 1,\n  \"name\": \"A\",\n  \"description\": \"oak\"\n}\n");
    const CqjobRun run = Run({"describe", job, "B"}, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "cqjob: " + job + ": the point \"B\" has no description\n");
    EXPECT_EQ(Run({"describe", job, "Q"}, 1).err, "cqjob: " + job + ": there is no point \"Q\"\n");
}

TEST_F(DescribeCommandTest, SetsADescriptionWhetherThereIsOneOrNot) {
    EXPECT_EQ(Run({"describe", job, "A", "Stra\u00dfe,\nline 2 \U0001F332"}).out, "");
    EXPECT_EQ(Run({"describe", job, "A"}).out, "Stra\u00dfe,\nline 2 \U0001F332\n");
    EXPECT_TRUE(
        Holds(Run({"describe", job, "B", "pipe", "--json"}).out, "\"description\": \"pipe\""));
    Run({"describe", job, "#3", "unnamed"});
    EXPECT_EQ(Run({"describe", job, "#3"}).out, "unnamed\n");
    EXPECT_TRUE(Holds(Run({"check", job}).out, " 0 wrong\n"));
}

TEST_F(DescribeCommandTest, DeletesADescription) {
    EXPECT_EQ(Run({"describe", job, "A", "--delete"}).out, "");
    Run({"describe", job, "A"}, 1);
    Run({"describe", job, "A", "--delete"}, 1);
    EXPECT_TRUE(Holds(Run({"points", job, "--name", "A", "--json"}).out, "\"description\": \"\""));
    Run({"describe", job, "B", "pipe"});
    EXPECT_TRUE(
        Holds(Run({"describe", job, "B", "--delete", "--json"}).out, "\"description\": \"\""));
}

TEST_F(DescribeCommandTest, WrongUsageChangesNothing) {
    const std::string before = ReadFile(job);
    Run({"describe", job}, 2);
    Run({"describe", job, "A", ""}, 2);
    Run({"describe", job, ""}, 2);
    Run({"describe", job, "A", "text", "--delete"}, 2);
    Run({"describe", job, "A", "te\xFFxt"}, 2);
    EXPECT_EQ(ReadFile(job), before);
}

}  // namespace
}  // namespace cqsurvey::cqjob
