#include "exchange/dxf/read/Blocks.h"

#include <gtest/gtest.h>

#include <string>

#include "cqsurvey/exchange/ExchangeError.h"

namespace cqsurvey::exchange::dxf {
namespace {

class BlocksTest : public testing::Test {
 protected:
    Record Make(const char* type, const std::string& name = {}) {
        constexpr std::size_t kMost = 1'000'000;
        Record record;
        record.Begin(origin, {0, type, 5});
        record.Add({2, name, 6}, kMost);
        record.Add({10, "7", 8}, kMost);
        return record;
    }

    Origin origin{"plan.dxf", false};
};

TEST_F(BlocksTest, ABlockIsFoundByItsNameInEitherLetterCase) {
    Blocks blocks(100'000);
    blocks.Begin(Make("BLOCK", "Tree"));
    blocks.Add(Make("LINE"));
    blocks.Begin(Make("BLOCK", "Pole"));
    blocks.Add(Make("CIRCLE"));
    blocks.Add(Make("TEXT"));
    Block* tree = blocks.Find("TREE");
    ASSERT_NE(tree, nullptr);
    EXPECT_EQ(tree->name, "Tree");
    EXPECT_EQ(tree->base.x, 7.0);
    ASSERT_EQ(tree->entities.size(), 1U);
    EXPECT_EQ(blocks.Find("pole")->entities.size(), 2U);
    EXPECT_EQ(blocks.Find("gone"), nullptr);
}

TEST_F(BlocksTest, OfTwoBlocksOfOneNameTheLastCounts) {
    Blocks blocks(100'000);
    blocks.Begin(Make("BLOCK", "A"));
    blocks.Add(Make("LINE"));
    blocks.Begin(Make("BLOCK", "a"));
    EXPECT_TRUE(blocks.Find("A")->entities.empty());
}

TEST_F(BlocksTest, TooMuchMemoryIsAnErrorWithThePlace) {
    Blocks blocks(10'000);
    blocks.Begin(Make("BLOCK", "A"));
    try {
        for (int i = 0; i < 1000; ++i) {
            blocks.Add(Make("LINE"));
        }
        FAIL();
    } catch (const ExchangeError& error) {
        EXPECT_STREQ(error.what(), "plan.dxf:5: the blocks of the file are too large");
    }
    EXPECT_THROW(blocks.Begin(Make("BLOCK", std::string(6000, 'x'))), ExchangeError);
}

}  // namespace
}  // namespace cqsurvey::exchange::dxf
