#include "index/HandleBlocks.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <set>

namespace cqsurvey {
namespace {

std::multiset<std::uint32_t> BlocksOf(const HandleBlocks& blocks, CqHandle handle) {
    std::multiset<std::uint32_t> found;
    blocks.ForEach(handle, [&](std::uint32_t block) { found.insert(block); });
    return found;
}

using Found = std::multiset<std::uint32_t>;

TEST(HandleBlocksTest, AnUnknownHandleStandsNowhere) {
    HandleBlocks blocks;
    EXPECT_EQ(BlocksOf(blocks, 0), Found{});
    blocks.Add(17, 3);
    EXPECT_EQ(BlocksOf(blocks, 16), Found{});
    EXPECT_EQ(BlocksOf(blocks, 17), Found{3});
}

TEST(HandleBlocksTest, AHandleMayStandInABlockTwice) {
    HandleBlocks blocks;
    blocks.Add(5, 1);
    blocks.Add(5, 1);
    blocks.Add(5, 2);
    EXPECT_EQ(BlocksOf(blocks, 5), (Found{1, 1, 2}));
    blocks.Move(5, 1, 7);
    EXPECT_EQ(BlocksOf(blocks, 5), (Found{1, 2, 7}));
    blocks.Remove(5, 1);
    blocks.Remove(5, 7);
    EXPECT_EQ(BlocksOf(blocks, 5), (Found{2}));
    blocks.Remove(5, 2);
    EXPECT_EQ(BlocksOf(blocks, 5), Found{});
}

TEST(HandleBlocksTest, BehavesLikeAMultimapOverRandomChanges) {
    const unsigned seed = 13;
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    HandleBlocks blocks;
    std::map<CqHandle, Found> model;
    for (int i = 0; i < 40000; ++i) {
        auto handle = static_cast<CqHandle>(random() % 500);
        handle = random() % 2 == 0 ? handle : handle * 8589935U;
        Found& known = model[handle];
        const auto block = static_cast<std::uint32_t>(random() % 5);
        if (known.empty() || random() % 3 == 0) {
            blocks.Add(handle, block);
            known.insert(block);
        } else if (random() % 3 == 0) {
            const std::uint32_t from = *known.begin();
            blocks.Move(handle, from, block);
            known.erase(known.begin());
            known.insert(block);
        } else {
            blocks.Remove(handle, *known.rbegin());
            known.erase(std::prev(known.end()));
        }
        ASSERT_EQ(BlocksOf(blocks, handle), known);
    }
    for (const auto& [handle, known] : model) {
        ASSERT_EQ(BlocksOf(blocks, handle), known);
    }
}

}  // namespace
}  // namespace cqsurvey
