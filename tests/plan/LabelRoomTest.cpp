#include "plan/LabelRoom.h"

#include <gtest/gtest.h>

namespace cqsurvey::plan {
namespace {

TEST(LabelRoom, WhatIsTakenIsNotFree) {
    LabelRoom room;
    room.Take({10, 10, 20, 20});
    EXPECT_FALSE(room.IsFree({15, 15, 30, 30}));
    EXPECT_TRUE(room.IsFree({21, 21, 30, 30}));
    EXPECT_TRUE(room.IsOffLines({15, 15, 30, 30}));
}

TEST(LabelRoom, ALineLeavesItsRoomFreeButIsPassedThere) {
    LabelRoom room;
    room.MarkLine({0, 0}, {100, 100});
    EXPECT_TRUE(room.IsFree({40, 40, 60, 60}));
    EXPECT_FALSE(room.IsOffLines({40, 40, 60, 60}));
    EXPECT_TRUE(room.IsOffLines({40, 60, 50, 80}));
}

TEST(LabelRoom, ALineOfNoEndGoesUnmarked) {
    LabelRoom room;
    room.MarkLine({0, 0}, {1e15, 0});
    EXPECT_TRUE(room.IsOffLines({0, -1, 10, 1}));
    room.MarkLine({0, 0}, {50, 0});
    EXPECT_FALSE(room.IsOffLines({0, -1, 10, 1}));
}

}  // namespace
}  // namespace cqsurvey::plan
