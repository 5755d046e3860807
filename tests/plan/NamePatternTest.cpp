#include "plan/NamePattern.h"

#include <gtest/gtest.h>

#include <string>

namespace cqsurvey::plan {
namespace {

TEST(NamePattern, AStarStandsForAnyCharacters) {
    EXPECT_TRUE(FitsPattern("Contours", "contours"));
    EXPECT_TRUE(FitsPattern("Contour*", "Contours 5 m"));
    EXPECT_TRUE(FitsPattern("*", ""));
    EXPECT_TRUE(FitsPattern("a*b*c", "aXbbYc"));
    EXPECT_FALSE(FitsPattern("a*b*c", "aXbbY"));
    EXPECT_FALSE(FitsPattern("", "a"));
    EXPECT_FALSE(FitsPattern("Contours", "Contour"));
}

TEST(NamePattern, ManyStarsTakeNoTime) {
    std::string stars;
    for (int i = 0; i < 2000; ++i) {
        stars += "*a";
    }
    EXPECT_FALSE(FitsPattern(stars + "b", std::string(20000, 'a')));
}

}  // namespace
}  // namespace cqsurvey::plan
