#include "plan/Wording.h"

#include <gtest/gtest.h>

namespace cqsurvey::plan {
namespace {

TEST(Wording, CountsOneAndMore) {
    EXPECT_EQ(Count(0, "point"), "0 points");
    EXPECT_EQ(Count(1, "point"), "1 point");
    EXPECT_EQ(Count(2, "point"), "2 points");
}

TEST(Wording, QuotedTextIsOneLine) {
    EXPECT_EQ(Quoted(""), "\"\"");
    EXPECT_EQ(Quoted("Stra\xC3\x9F"
                     "e"),
              "\"Stra\xC3\x9F"
              "e\"");
    EXPECT_EQ(Quoted("a\nb\rc\td\x1B"
                     "e\x7F\xC2\x85"),
              "\"a\\nb\\rc\\td\\x1be\\x7f\\x85\"");
    EXPECT_EQ(Quoted(std::string_view("\0", 1)), "\"\\x00\"");
}

TEST(Wording, ALongTextIsCutBetweenCharacters) {
    const std::string sixty(60, 'x');
    EXPECT_EQ(Quoted(sixty), "\"" + sixty + "\"");
    EXPECT_EQ(Quoted(sixty + "y"), "\"" + sixty + "...\"");
    const std::string most(58, 'x');
    EXPECT_EQ(Quoted(most + "\xE2\x82\xAC"
                            "yz"),
              "\"" + most + "...\"");
}

}  // namespace
}  // namespace cqsurvey::plan
