#include "plan/labels/LabelRoom.h"

#include <gtest/gtest.h>

#include <numbers>

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

TEST(LabelRoom, ATurnedTextTakesTheRoomOfItsLettersAlone) {
    LabelRoom room;
    // From (100, 100) up to the right, at 45 degrees.
    const TurnedBox text{{100, 100}, 100, 5, -std::numbers::pi / 4};
    room.Take(text);
    EXPECT_FALSE(room.IsFree({130, 62, 135, 67}));
    EXPECT_TRUE(room.IsFree({150, 80, 160, 95})) << "below it";
    EXPECT_TRUE(room.IsFree({105, 40, 115, 60})) << "above it";
    EXPECT_FALSE(room.HasRoom(text));
}

TEST(LabelRoom, ATurnedTextMayStandCloseToItsLine) {
    LabelRoom room;
    room.MarkLine({100, 100}, {200, 0});
    const double angle = -std::numbers::pi / 4;
    const TurnedBox onLine{{120, 80}, 50, 4, angle};
    EXPECT_FALSE(room.HasRoom(onLine));
    EXPECT_TRUE(room.HasRoom(TurnedBox{onLine.At(0, 1.5), 50, 4, angle}));
    EXPECT_TRUE(room.HasRoom(TurnedBox{onLine.At(0, -5.5), 50, 4, angle}));
}

TEST(LabelRoom, ALeaderCrossesNoLineNoLabelAndNoOtherLeader) {
    LabelRoom room;
    room.MarkLine({0, 30}, {100, 30});
    EXPECT_FALSE(room.IsFreeLeader({50, 0}, {50, 40}));
    EXPECT_TRUE(room.IsFreeLeader({50, 0}, {50, 20}));
    room.TakeLeader({50, 0}, {50, 20});
    EXPECT_FALSE(room.IsFreeLeader({40, 12}, {60, 12}));
    EXPECT_FALSE(room.IsFree({49, 5, 51, 6}));
    room.Take(Box{80, 0, 85, 5});
    EXPECT_FALSE(room.IsFreeLeader({75, 2}, {90, 3}));
}

}  // namespace
}  // namespace cqsurvey::plan
