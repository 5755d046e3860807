#include <string>
#include <utility>
#include <vector>

#include "apps/ProgramTest.h"

namespace cqsurvey::cqjob {
namespace {

using ImportCommand = ProgramTest;

TEST_F(ImportCommand, NotesNameTheFileAndItsLines) {
    Run({"new", job});
    const CqjobRun run =
        Run({"import", job, "-", "--order", "pnezd"}, 0, "A,1,2,3\nB,x,2,3,\"a\nb\nc\"\nA,1,2,3\n");
    EXPECT_EQ(run.err,
              "standard input:2-4: refused: the northing \"x\" is not a number\n"
              "standard input:5: refused: the job already has a point \"A\"\n");
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
                      "\"text\": \"the northing \\\"a\\\" is not a number\""));
}

TEST_F(ImportCommand, EastAsianPagesGoInAndOutAgain) {
    const std::vector<std::pair<const char*, std::string>> texts = {
        {"932", "\x93\xB9"},            // Japan
        {"20932", "\xC6\xBB"},          // Japan, EUC
        {"20936", "\xB5\xC0"},          // China
        {"20949", "\xD4\xB3"},          // Korea
        {"51950", "\xC4\xA3"},          // Taiwan
        {"51950", "\x8E\xA2\xA1\xA1"},  // four bytes
        {"54936", "\xB5\xC0"},          // China, every character
    };
    for (const auto& [page, bytes] : texts) {
        SCOPED_TRACE(page);
        const std::string line = "A,1,2,3," + bytes + "\r\n";
        Run({"new", job, "--force"});
        Run({"import", job, "-", "--order", "pnezd", "--code-page", page}, 0, line);
        EXPECT_EQ(Run({"export", job, "-", "--order", "pnezd", "--code-page", page}).out, line);
        EXPECT_NE(Run({"describe", job, "A"}).out, bytes + "\n");
    }
    Run({"new", job, "--force"});
    Run({"import", job, "-", "--order", "pnezd", "--code-page", "20936"}, 0, "A,1,2,3,\xB5\xC0\n");
    EXPECT_EQ(Run({"describe", job, "A"}).out, "\u9053\n");
}

}  // namespace
}  // namespace cqsurvey::cqjob
