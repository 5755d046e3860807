#include "store/HandleTable.h"

#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace cqsurvey {
namespace {

TEST(HandleTableTest, AHandleNamesItsObjectUntilItIsRemoved) {
    HandleTable<std::string> table;
    const std::uint32_t one = table.Add("one");
    const std::uint32_t two = table.Add("two");
    ASSERT_NE(table.Find(one), nullptr);
    EXPECT_EQ(*table.Find(one), "one");
    EXPECT_EQ(*table.Find(two), "two");
    EXPECT_TRUE(table.Remove(one));
    EXPECT_EQ(table.Find(one), nullptr);
    EXPECT_FALSE(table.Remove(one));
    EXPECT_EQ(*table.Find(two), "two");
}

TEST(HandleTableTest, ZeroAndForeignNumbersNameNothing) {
    HandleTable<int> table;
    const std::uint32_t handle = table.Add(1);
    for (const std::uint32_t other :
         {0U, handle + 1, handle ^ 0x8000U, 0x80000000U | handle, 0xFFFFFFFFU, 0x4000U}) {
        EXPECT_EQ(table.Find(other), nullptr) << other;
        EXPECT_FALSE(table.Remove(other)) << other;
    }
}

TEST(HandleTableTest, HandlesArePositiveAndNotSoonUsedAgain) {
    HandleTable<int> table;
    std::set<std::uint32_t> seen;
    for (int i = 0; i < 200000; ++i) {
        const std::uint32_t handle = table.Add(i);
        ASSERT_GT(static_cast<std::int32_t>(handle), 0);
        ASSERT_TRUE(seen.insert(handle).second) << "after " << i;
        table.Remove(handle);
    }
}

TEST(HandleTableTest, GrowsAndNamesTheSameObjectsAfterwards) {
    HandleTable<int> table;
    std::vector<std::uint32_t> handles;
    for (int i = 0; i < 100000; ++i) {
        handles.push_back(table.Add(i));
    }
    for (int i = 0; i < 100000; ++i) {
        ASSERT_NE(table.Find(handles[static_cast<std::size_t>(i)]), nullptr) << i;
        ASSERT_EQ(*table.Find(handles[static_cast<std::size_t>(i)]), i);
    }
}

TEST(HandleTableTest, AFullTableGivesZeroUntilSomethingIsRemoved) {
    HandleTable<int, 14> table;
    std::vector<std::uint32_t> handles;
    for (std::uint32_t handle = table.Add(0); handle != 0; handle = table.Add(0)) {
        handles.push_back(handle);
    }
    EXPECT_EQ(handles.size(), (1U << 14) - (1U << 10));
    EXPECT_EQ(table.Add(1), 0U);
    table.Remove(handles[5000]);
    const std::uint32_t handle = table.Add(2);
    ASSERT_NE(handle, 0U);
    EXPECT_NE(handle, handles[5000]);
    EXPECT_EQ(table.Find(handles[5000]), nullptr);
    EXPECT_EQ(*table.Find(handle), 2);
}

TEST(HandleTableTest, RemoveIfTakesThoseThatMatchAndDestroysThem) {
    const auto shared = std::make_shared<int>(1);
    HandleTable<std::pair<int, std::shared_ptr<int>>> table;
    const std::uint32_t one = table.Add({1, shared});
    const std::uint32_t two = table.Add({2, shared});
    table.RemoveIf([](const auto& entry) { return entry.first == 1; });
    EXPECT_EQ(table.Find(one), nullptr);
    ASSERT_NE(table.Find(two), nullptr);
    EXPECT_EQ(shared.use_count(), 2);
}

TEST(HandleTableTest, ThreadsUseTheirOwnObjectsAndStaleHandlesAtTheSameTime) {
    HandleTable<std::string> table;
    const auto work = [&table](int thread) {
        std::uint32_t stale = 0;
        for (int i = 0; i < 5000; ++i) {
            const std::string text = std::to_string(thread * 100000 + i);
            const std::uint32_t handle = table.Add(text);
            // What a slot held for one thread may be another's by now.
            EXPECT_EQ(table.Find(stale), nullptr);
            const std::string* found = table.Find(handle);
            ASSERT_NE(found, nullptr);
            EXPECT_EQ(*found, text);
            table.Remove(handle);
            stale = handle;
        }
    };
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back(work, thread);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

}  // namespace
}  // namespace cqsurvey
