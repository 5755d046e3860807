#include "index/HandleSet.h"

#include <gtest/gtest.h>

#include <random>
#include <set>

namespace cqsurvey {
namespace {

TEST(HandleSetTest, NeverHoldsZero) {
    HandleSet set;
    EXPECT_FALSE(set.Contains(0));
    EXPECT_FALSE(set.Insert(0));
    EXPECT_FALSE(set.Contains(0));
    EXPECT_FALSE(set.Erase(0));
}

TEST(HandleSetTest, TellsWhetherAHandleIsNew) {
    HandleSet set;
    EXPECT_TRUE(set.Insert(7));
    EXPECT_FALSE(set.Insert(7));
    EXPECT_TRUE(set.Erase(7));
    EXPECT_FALSE(set.Erase(7));
}

TEST(HandleSetTest, BehavesLikeASetOverRandomChanges) {
    const unsigned seed = 11;
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    HandleSet set;
    std::set<CqHandle> model;
    for (int i = 0; i < 60000; ++i) {
        // Small numbers and the largest ones, so that searches wrap around the end of the array.
        auto handle = static_cast<CqHandle>(random() % 3000 + 1);
        handle = random() % 2 == 0 ? handle : 0U - handle;
        if (random() % 5 < (i % 20000 < 12000 ? 3U : 2U)) {
            ASSERT_EQ(set.Insert(handle), model.insert(handle).second);
        } else {
            ASSERT_EQ(set.Erase(handle), model.erase(handle) == 1);
        }
        ASSERT_EQ(set.Contains(handle), model.count(handle) == 1);
    }
    for (const CqHandle handle : model) {
        ASSERT_TRUE(set.Contains(handle));
    }
}

}  // namespace
}  // namespace cqsurvey
