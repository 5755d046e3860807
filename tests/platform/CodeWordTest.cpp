#include "cqsurvey/CodeWord.h"

#include <gtest/gtest.h>

namespace cqsurvey {
namespace {

using namespace std::literals;

TEST(CodeWord, IsTheWordAtTheHead) {
    EXPECT_EQ(CodeWord("EC E"sv), "EC");
    EXPECT_EQ(CodeWord(" \tSW/STEP\nwet"sv), "SW/STEP");
    EXPECT_EQ(CodeWord(u"TREE"sv), u"TREE");
    EXPECT_EQ(CodeWord(u"\u00C4RA 7"sv), u"\u00C4RA");
}

TEST(CodeWord, IsEmptyWithoutAWord) {
    EXPECT_EQ(CodeWord(""sv), "");
    EXPECT_EQ(CodeWord(u" \t"sv), u"");
}

}  // namespace
}  // namespace cqsurvey
