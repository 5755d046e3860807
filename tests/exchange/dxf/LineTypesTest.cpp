#include "exchange/dxf/LineTypes.h"

#include <gtest/gtest.h>

namespace cqsurvey::exchange::dxf {
namespace {

TEST(LineTypesTest, EveryNumberHasANameThatLeadsBackToIt) {
    for (const int line : {0, 1, 2, 3, 4, 5, 6, 7, 8, 255, 65535}) {
        EXPECT_EQ(LineOfName(LineName(line)), line);
    }
    EXPECT_EQ(LineName(0), "CONTINUOUS");
    EXPECT_EQ(LineName(8), "LINE_8");
    EXPECT_EQ(LineName(-1), "LINE_-1");
    EXPECT_EQ(LineOfName("dashdot"), 3);
    EXPECT_FALSE(LineOfName("HIDDEN2"));
    EXPECT_FALSE(LineOfName("LINE_x"));
    EXPECT_FALSE(LineOfName(""));
}

TEST(LineTypesTest, TheEightNamedLinesHaveAPatternAndOthersAreSolid) {
    EXPECT_TRUE(LinePattern(0).empty());
    for (int line = 1; line <= 7; ++line) {
        EXPECT_FALSE(LinePattern(line).empty()) << line;
        EXPECT_GE(LinePattern(line).front(), 0.0);
        EXPECT_LT(LinePattern(line).back(), 0.0);
    }
    EXPECT_TRUE(LinePattern(8).empty());
    EXPECT_TRUE(LinePattern(-1).empty());
}

TEST(LineTypesTest, AnUnknownLineIsTheOneThatLooksMostLikeIt) {
    EXPECT_EQ(LineOfPattern({}), 0);
    EXPECT_EQ(LineOfPattern({5.0}), 0);
    EXPECT_EQ(LineOfPattern({-5.0, -5.0}), 0);
    EXPECT_EQ(LineOfPattern({3.0, -1.0}), 1);
    EXPECT_EQ(LineOfPattern({0.0, -2.0}), 2);
    EXPECT_EQ(LineOfPattern({3.0, -1.0, 0.0, -1.0}), 3);
    EXPECT_EQ(LineOfPattern({3.0, -1.0, 0.0, -1.0, 0.0, -1.0}), 4);
    EXPECT_EQ(LineOfPattern({9.0, -1.0, 1.0, -1.0}), 7);
}

}  // namespace
}  // namespace cqsurvey::exchange::dxf
