#include <cqsurvey/cqsurvey.h>

#include "apps/ProgramTest.h"

namespace cqsurvey::cqjob {
namespace {

class TextCommandTest : public ProgramTest {
 protected:
    TextCommandTest() { MakeJob("A,1,2,3\n"); }

    std::string Texts() { return Run({"entities", job, "--type", "text", "--json"}).out; }
};

TEST_F(TextCommandTest, ATextIsWrittenChangedAndDeleted) {
    std::string number =
        Run({"text", "add", job, "A", "Mill Road", "--height", "2.5", "--rotation", "30", "--align",
             "centre", "--valign", "middle", "--color", "1", "--code", "7"})
            .out;
    number.pop_back();
    EXPECT_TRUE(Holds(Texts(), "\"text\": \"Mill Road\""));
    EXPECT_TRUE(Holds(Texts(), "\"rotation\": 30"));
    Run({"text", "edit", job, number, "--text", "Брод", "--at", "5,6,7"});
    EXPECT_TRUE(Holds(Texts(), "\"text\": \"Брод\""));
    EXPECT_TRUE(Holds(Texts(), "\"textHeight\": 2.5")) << "what no option names stays";
    EXPECT_TRUE(Holds(Texts(), "\"easting\": 5"));
    EXPECT_TRUE(Holds(Run({"check", job}).out, "0 wrong"));
    Run({"text", "delete", job, number});
    EXPECT_EQ(Texts().find("Брод"), std::string::npos);
}

TEST_F(TextCommandTest, WhatMakesNoSenseChangesNothing) {
    std::string number = Run({"text", "add", job, "A", "x"}).out;
    number.pop_back();
    const std::string before = ReadFile(job);
    Run({"text", "add", job, "A", ""}, 2);
    Run({"text", "add", job, "A", "x", "--height", "0"}, 2);
    Run({"text", "add", job, "A", "x", "--align", "up"}, 2);
    Run({"text", "add", job, "B", "x"}, 1);
    Run({"text", "add", job, "A", "x", "--layer", "None"}, 1);
    Run({"text", "edit", job, number}, 2);
    Run({"text", "edit", job, "2", "--text", "x"}, 1);
    Run({"text", "delete", job, number, "999"}, 1);
    EXPECT_EQ(ReadFile(job), before);
}

}  // namespace
}  // namespace cqsurvey::cqjob
