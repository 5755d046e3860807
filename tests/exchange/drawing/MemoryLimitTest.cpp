#include "exchange/drawing/MemoryLimit.h"

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

namespace cqsurvey::exchange {
namespace {

TEST(MemoryLimitTest, WhatIsMoreThanTheMostFailsAndWhatIsGivenBackCountsNoLonger) {
    MemoryLimit limit(10, [] { throw std::length_error("too much"); });
    EXPECT_NO_THROW(limit.Take(10));
    EXPECT_THROW(limit.Take(1), std::length_error);
    limit.GiveBack(4);
    EXPECT_THROW(limit.Take(5), std::length_error);
    EXPECT_NO_THROW(limit.Take(4));
    EXPECT_THROW(limit.Take(std::numeric_limits<std::size_t>::max()), std::length_error);
}

}  // namespace
}  // namespace cqsurvey::exchange
