#include "cqjob/Console.h"

#include <gtest/gtest.h>

#include <cstdio>

#include "apps/CapturedConsole.h"
#include "cqjob/Failure.h"

namespace cqsurvey::cqjob {
namespace {

TEST(Console, KeepsResultsAndEverythingElseApart) {
    CapturedConsole captured;
    captured.console.Print("{} points\n", 3);
    captured.console.Say("note {}\n", "x");
    EXPECT_EQ(captured.Out(), "3 points\n");
    EXPECT_EQ(captured.Err(), "note x\n");
}

TEST(Console, ShowsNoProgressWhereThereIsNoTerminal) {
    CapturedConsole captured;
    captured.console.ShowProgress("10 points");
    captured.console.ShowProgress({});
    EXPECT_FALSE(captured.console.ShowsProgress());
    EXPECT_EQ(captured.Err(), "");
}

TEST(Console, TakesTheProgressAwayBeforeAnythingElseIsWritten) {
    CapturedConsole captured(true);
    captured.console.ShowProgress("10 points");
    captured.console.Err("note\n");
    captured.console.ShowProgress({});
    EXPECT_EQ(captured.Err(), "\r10 points\x1b[K\r\x1b[Knote\n");
}

TEST(Console, AResultThatCannotBeWrittenIsAFailure) {
    std::FILE* full = std::fopen("/dev/full", "w");
    ASSERT_NE(full, nullptr);
    {
        Console console(full, stderr, false);
        console.Out("lost");
        EXPECT_THROW(console.Flush(), Failure);
    }
    std::fclose(full);
}

}  // namespace
}  // namespace cqsurvey::cqjob
