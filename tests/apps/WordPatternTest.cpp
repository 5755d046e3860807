#include "cqjob/WordPattern.h"

#include <gtest/gtest.h>

namespace cqsurvey::cqjob {
namespace {

TEST(WordPattern, MatchesTheWholeTextInAnyLetterCase) {
    EXPECT_TRUE(WordPattern("EP").Matches("ep"));
    EXPECT_TRUE(WordPattern("ära").Matches("ÄRA"));
    EXPECT_FALSE(WordPattern("EP").Matches("EPX"));
    EXPECT_FALSE(WordPattern("EP").Matches("XEP"));
    EXPECT_TRUE(WordPattern("").Matches(""));
    EXPECT_FALSE(WordPattern("").Matches("x"));
}

TEST(WordPattern, AStarIsAnyTextAndAQuestionMarkOneCharacter) {
    EXPECT_TRUE(WordPattern("TREE*").Matches("tree"));
    EXPECT_TRUE(WordPattern("TREE*").Matches("TREE7 oak"));
    EXPECT_FALSE(WordPattern("TREE*").Matches("A TREE"));
    EXPECT_TRUE(WordPattern("*MH*").Matches("STD mh 7"));
    EXPECT_TRUE(WordPattern("B?M").Matches("BÄM"));
    EXPECT_FALSE(WordPattern("B?M").Matches("BM"));
}

TEST(WordPattern, CopiesMatchAlike) {
    const WordPattern copy = WordPattern("A*");
    EXPECT_TRUE(copy.Matches("ab"));
}

}  // namespace
}  // namespace cqsurvey::cqjob
