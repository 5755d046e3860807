#include <cqsurvey/cqsurvey.h>

#include <filesystem>

#include "apps/ProgramTest.h"

namespace cqsurvey::cqjob {
namespace {

class CodesCommandTest : public ProgramTest {
 protected:
    CodesCommandTest() { Run({"new", job}); }

    const std::string table =
        "code,number,layer,color,line,kind,symbol,size,label,text\r\n"
        "EP,12,Road,7,0,line,,,,\r\n"
        "TREE*,40,\"Trees, old\",,,point,deciduous,4,{text},\r\n";
};

TEST_F(CodesCommandTest, AJobCarriesItsTable) {
    const std::string file = WriteFile("codes.csv", table);
    EXPECT_EQ(Run({"codes", "import", job, file}).out, job + ": 2 codes\n");
    const CqjobRun list = Run({"codes", "list", job});
    EXPECT_TRUE(Holds(list.out, "EP         12  Road            7      0  line"));
    EXPECT_TRUE(Holds(list.err, "2 codes, words: words"));
    EXPECT_EQ(Run({"codes", "export", job, "-"}).out, table);
    Run({"codes", "export", job, folder.Utf8("out.csv")});
    EXPECT_EQ(ReadFile(folder.Utf8("out.csv")), table);
    Run({"codes", "export", job, folder.Utf8("out.csv")}, 1);
    Run({"codes", "export", job, folder.Utf8("out.csv"), "--force"});
    EXPECT_TRUE(Holds(Run({"check", job}).out, "0 wrong"));
}

TEST_F(CodesCommandTest, ANewTableReplacesTheOldOneAndLeavesTheWords) {
    Run({"codes", "import", job, WriteFile("a.csv", table), "--words", "numbers"});
    const std::string other = WriteFile("b.csv", "code\nX\n");
    EXPECT_EQ(Run({"codes", "import", job, other}).out, job + ": 1 code, in place of 2\n");
    EXPECT_TRUE(Holds(Run({"codes", "list", job, "--json"}).out, "\"words\": \"numbers\""));
}

TEST_F(CodesCommandTest, EveryFaultOfATableIsToldByItsLineAndTheJobStays) {
    Run({"codes", "import", job, WriteFile("codes.csv", table)});
    const std::string before = ReadFile(job);
    const std::string bad =
        WriteFile("bad.csv", "code,kind,color\nA,area,1\nB,line,900\nC,line,1\nC,line,2\n");
    const CqjobRun run = Run({"codes", "import", job, bad}, 1);
    EXPECT_TRUE(Holds(run.err, bad + ":2: there is no kind \"area\""));
    EXPECT_TRUE(Holds(run.err, bad + ":3: the colour 900 is not 0 to 256"));
    EXPECT_TRUE(Holds(run.err, bad + ":5: the code \"C\" is already on line 4"));
    EXPECT_EQ(ReadFile(job), before);
}

TEST_F(CodesCommandTest, WhatMakesNoSenseIsRefused) {
    Run({"codes", "import", job, WriteFile("codes.csv", table), "--words", "klingon"}, 2);
    Run({"codes", "import", job, folder.Utf8("none.csv")}, 1);
    Run({"codes", "import", job, job}, 2);
    EXPECT_TRUE(Holds(Run({"codes", "export", job, "-"}, 1).err, "the job has no code table"));
    Run({"codes"}, 2);
}

}  // namespace
}  // namespace cqsurvey::cqjob
