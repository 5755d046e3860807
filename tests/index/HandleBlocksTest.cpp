#include "index/HandleBlocks.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

namespace cqsurvey {
namespace {

TEST(HandleBlocksTest, AnUnknownHandleStandsNowhere) {
    HandleBlocks blocks;
    EXPECT_EQ(blocks.BlockOf(0), HandleBlocks::kNowhere);
    blocks.Add(17, 3);
    EXPECT_EQ(blocks.BlockOf(16), HandleBlocks::kNowhere);
    EXPECT_EQ(blocks.BlockOf(17), 3U);
}

TEST(HandleBlocksTest, AHandleThatWasAddedTwiceStandsInSeveralFromThenOn) {
    HandleBlocks blocks;
    blocks.Add(5, 1);
    blocks.Add(5, 1);
    EXPECT_EQ(blocks.BlockOf(5), HandleBlocks::kSeveral);
    blocks.Move(5, 2);
    blocks.Remove(5);
    blocks.DropEmptyPage(5);
    EXPECT_EQ(blocks.BlockOf(5), HandleBlocks::kSeveral);
}

TEST(HandleBlocksTest, APageIsDroppedOnlyWhenNoHandleOfItStandsAnywhere) {
    HandleBlocks blocks;
    blocks.Add(5, 1);
    blocks.Add(6, 2);
    blocks.Remove(5);
    blocks.DropEmptyPage(5);
    EXPECT_EQ(blocks.BlockOf(6), 2U);
    blocks.Remove(6);
    blocks.DropEmptyPage(6);
    blocks.DropEmptyPage(6);
    EXPECT_EQ(blocks.BlockOf(6), HandleBlocks::kNowhere);
    blocks.Add(6, 4);
    EXPECT_EQ(blocks.BlockOf(6), 4U);
}

TEST(HandleBlocksTest, BehavesLikeAMapOverRandomChanges) {
    const unsigned seed = 13;
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    HandleBlocks blocks;
    std::map<CqHandle, std::uint32_t> model;
    for (int i = 0; i < 40000; ++i) {
        auto handle = static_cast<CqHandle>(random() % 500);
        handle = random() % 2 == 0 ? handle : handle * 8589935U;
        const auto block = static_cast<std::uint32_t>(random() % 5);
        if (model.count(handle) == 0) {
            blocks.Add(handle, block);
            model[handle] = block;
        } else if (random() % 3 == 0) {
            blocks.Move(handle, block);
            model[handle] = block;
        } else {
            blocks.Remove(handle);
            model.erase(handle);
            if (random() % 2 == 0) {
                blocks.DropEmptyPage(handle);
            }
        }
        ASSERT_EQ(blocks.BlockOf(handle),
                  model.count(handle) == 0 ? HandleBlocks::kNowhere : model[handle]);
    }
    for (const auto& [handle, block] : model) {
        ASSERT_EQ(blocks.BlockOf(handle), block);
    }
}

}  // namespace
}  // namespace cqsurvey
