#include <cqsurvey/cqsurvey.h>

#include "apps/ProgramTest.h"

namespace cqsurvey::cqjob {
namespace {

class CircleCommandTest : public ProgramTest {
 protected:
    CircleCommandTest() { MakeJob("A,1,2,3\n"); }

    std::string Circles() { return Run({"entities", job, "--type", "circle"}).out; }
};

TEST_F(CircleCommandTest, ACircleIsDrawnChangedAndDeleted) {
    std::string number = Run({"circle", "add", job, "A", "1.25", "--line", "3", "--code", "7"}).out;
    number.pop_back();
    EXPECT_TRUE(Holds(Circles(), "radius 1.25 line 3 code 7"));
    Run({"circle", "edit", job, "#" + number, "--radius", "2", "--at", "5,6"});
    EXPECT_TRUE(Holds(Circles(), "radius 2 line 3 code 7"));
    EXPECT_TRUE(Holds(Run({"check", job}).out, "0 wrong"));
    Run({"circle", "delete", job, number});
    EXPECT_EQ(Circles().find("radius"), std::string::npos);
}

TEST_F(CircleCommandTest, WhatMakesNoSenseChangesNothing) {
    std::string number = Run({"circle", "add", job, "A", "1"}).out;
    number.pop_back();
    const std::string before = ReadFile(job);
    Run({"circle", "add", job, "A", "0"}, 2);
    Run({"circle", "add", job, "A", "big"}, 2);
    Run({"circle", "add", job, "1,2,3,4", "1"}, 1);
    Run({"circle", "edit", job, number}, 2);
    Run({"circle", "edit", job, "2", "--radius", "2"}, 1);
    Run({"circle", "delete", job, number, "999"}, 1);
    EXPECT_EQ(ReadFile(job), before);
}

}  // namespace
}  // namespace cqsurvey::cqjob
