#include "cqjob/Progress.h"

#include <gtest/gtest.h>

#include <chrono>

#include "apps/CapturedConsole.h"

namespace cqsurvey::cqjob {
namespace {

using namespace std::chrono_literals;

TEST(Progress, DescribesRateShareAndTimeLeft) {
    EXPECT_EQ(Progress::Describe("points", 250000, 50, 200, 2.0),
              "250000 points, 125000/s, 25%, 6 s left");
    EXPECT_EQ(Progress::Describe("points", 10, 1, 100, 1.0),
              "10 points, 10/s, 1%, 1 min 39 s left");
    EXPECT_EQ(Progress::Describe("points", 10, 5, std::nullopt, 2.0), "10 points, 5/s");
    EXPECT_EQ(Progress::Describe("points", 10, 5, 0, 2.0), "10 points, 5/s");
    EXPECT_EQ(Progress::Describe("points", 10, 300, 200, 1.0), "10 points, 10/s, 100%, 0 s left");
}

TEST(Progress, SaysNothingInTheFirstSecond) {
    CapturedConsole captured(true);
    std::chrono::steady_clock::time_point now{};
    {
        Progress progress(captured.console, "points", [&] { return now; });
        for (std::uint64_t i = 0; i < 5000; ++i) {
            progress.Update(i, i, 10000);
        }
        now += 999ms;
        for (std::uint64_t i = 0; i < 5000; ++i) {
            progress.Update(i, i, 10000);
        }
    }
    EXPECT_EQ(captured.Err(), "");
}

TEST(Progress, ShowsALineNowAndThenAndTakesItAwayAtTheEnd) {
    CapturedConsole captured(true);
    std::chrono::steady_clock::time_point now{};
    {
        Progress progress(captured.console, "points", [&] { return now; });
        now += 2s;
        for (std::uint64_t i = 0; i < 1000; ++i) {
            progress.Update(100, 50, 100);
        }
        now += 300ms;
        for (std::uint64_t i = 0; i < 1000; ++i) {
            progress.Update(230, 100, 100);
        }
    }
    EXPECT_EQ(captured.Err(),
              "\r100 points, 50/s, 50%, 2 s left\x1b[K\r230 points, 100/s, 100%, 0 s "
              "left\x1b[K\r\x1b[K");
}

TEST(Progress, SaysNothingWhereThereIsNoTerminal) {
    CapturedConsole captured;
    std::chrono::steady_clock::time_point now{};
    Progress progress(captured.console, "points", [&] { return now; });
    now += 5s;
    progress.Update(1, 1, 2);
    EXPECT_EQ(captured.Err(), "");
}

}  // namespace
}  // namespace cqsurvey::cqjob
