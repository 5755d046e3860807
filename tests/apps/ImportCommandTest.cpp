#include "apps/ProgramTest.h"

namespace cqsurvey::cqjob {
namespace {

using ImportCommand = ProgramTest;

TEST_F(ImportCommand, NotesNameTheFileAndItsLines) {
    Run({"new", job});
    const CqjobRun run =
        Run({"import", job, "-", "--order", "pnezd"}, 0, "A,1,2,3\nB,x,2,3,\"a\nb\nc\"\nA,1,2,3\n");
    EXPECT_EQ(run.err,
              "standard input:2-4: refused: the northing \"x\" is no number\n"
              "standard input:5: refused: the job has a point \"A\" already\n");
}

TEST_F(ImportCommand, NotesStandInTheJsonInstead) {
    Run({"new", job});
    const CqjobRun run =
        Run({"import", job, "-", "--order", "pnezd", "--json"}, 0, "A,1,2,3\nB,a,2,3,\"x\ny\"\n");
    EXPECT_EQ(run.err, "");
    EXPECT_TRUE(Holds(run.out, "\"refused\": 1,"));
    EXPECT_TRUE(Holds(run.out, "\"continued\": 1,"));
    EXPECT_TRUE(Holds(run.out,
                      "\"line\": 2,\n      \"lines\": 2,\n      \"what\": \"refused\",\n      "
                      "\"text\": \"the northing \\\"a\\\" is no number\""));
}

}  // namespace
}  // namespace cqsurvey::cqjob
