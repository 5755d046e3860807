#include "platform/ChangeLog.h"

#include <gtest/gtest.h>

#include <vector>

namespace cqsurvey {
namespace {

std::vector<int> TakeBack(ChangeLog<int>& log) {
    std::vector<int> undone;
    log.TakeBack([&](int change) { undone.push_back(change); });
    return undone;
}

TEST(ChangeLogTest, TakesChangesBackFromTheLastToTheFirst) {
    ChangeLog<int> log;
    for (int change = 1; change <= 3; ++change) {
        log.Reserve(1);
        log.Push(change);
    }
    EXPECT_EQ(TakeBack(log), (std::vector<int>{3, 2, 1}));
    EXPECT_EQ(TakeBack(log), std::vector<int>{});
}

TEST(ChangeLogTest, HasNothingToTakeBackOfAStepThatWasKept) {
    ChangeLog<int> log;
    for (int change = 0; change < 1000; ++change) {
        log.Push(change);
    }
    log.Clear();
    log.Push(7);
    EXPECT_EQ(TakeBack(log), std::vector<int>{7});
}

}  // namespace
}  // namespace cqsurvey
