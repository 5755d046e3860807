#include "platform/RecordHash.h"

#include <gtest/gtest.h>

#include <random>

#include "cqsurvey/Types.h"

namespace cqsurvey {
namespace {

TEST(RecordHashTest, EachSeedIsAnother) {
    const HashSeed one;
    const HashSeed two;
    EXPECT_NE(one.factor, two.factor);
    EXPECT_NE(one.summand, two.summand);
    EXPECT_EQ(one.factor % 2, 1U) << "an even factor would lose bits";
}

TEST(RecordHashTest, NumbersHardlyEverMeet) {
    std::mt19937 random(61);
    int meet = 0;
    for (int i = 0; i < 1000; ++i) {
        const auto number = static_cast<std::uint32_t>(random());
        // Two at a distance that is a power of two are what a weak hash would put together.
        meet += HashHandle(number) == HashHandle(number ^ (1U << (i % 32))) ? 1 : 0;
    }
    EXPECT_LT(meet, 3);
}

TEST(RecordHashTest, NamesThatAreNearlyAlikeHardlyEverMeet) {
    int meet = 0;
    for (char16_t i = 1; i < 1000; ++i) {
        const CString name = u"P" + CString(1, i);
        meet += HashName(name) == HashName(name + u"0") || HashName(name) == HashName(u"P") ? 1 : 0;
    }
    EXPECT_LT(meet, 3);
}

TEST(RecordHashTest, ContainersGetTheSameHash) {
    EXPECT_EQ(HandleHash{}(std::uint32_t{4000000000}), HashHandle(4000000000U));
    EXPECT_EQ(HandleHash{}(std::int32_t{-1}), HashHandle(0xFFFFFFFFU));
}

}  // namespace
}  // namespace cqsurvey
