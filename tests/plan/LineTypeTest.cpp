#include "plan/LineType.h"

#include <gtest/gtest.h>

namespace cqsurvey::plan {
namespace {

TEST(LineType, ZeroAndWhatIsUnknownAreContinuous) {
    for (const int line : {0, -1, 8, 256, 65535}) {
        EXPECT_TRUE(LinePattern(line).empty()) << line;
    }
}

TEST(LineType, SevenTypesHaveDashesAndGapsOfTheirOwn) {
    for (int line = 1; line <= 7; ++line) {
        const auto pattern = LinePattern(line);
        ASSERT_FALSE(pattern.empty());
        EXPECT_EQ(pattern.size() % 2, 0U) << line;
        for (const double length : pattern) {
            EXPECT_GT(length, 0.0);
        }
        for (int other = 1; other < line; ++other) {
            const auto earlier = LinePattern(other);
            EXPECT_FALSE(std::equal(pattern.begin(), pattern.end(), earlier.begin(), earlier.end()))
                << line << ' ' << other;
        }
    }
}

}  // namespace
}  // namespace cqsurvey::plan
