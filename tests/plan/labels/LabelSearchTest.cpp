#include "plan/labels/LabelSearch.h"

#include <gtest/gtest.h>

namespace cqsurvey::plan {
namespace {

class LabelSearchTest : public testing::Test {
 protected:
    [[nodiscard]] std::optional<LabelSearch::Place> Find() const {
        return LabelSearch(room, map).Find(at, 2.0, 1.2, size);
    }

    /// Draws three sides of a box close around the point; upper and lower one end at `right`.
    void CloseIn(double right) {
        room.MarkLine({195, 195}, {right, 195});
        room.MarkLine({195, 205}, {right, 205});
        room.MarkLine({195, 195}, {195, 205});
    }

    Box map{0, 0, 400, 400};
    CVector at{200, 200};
    CVector size{20, 5};
    LabelRoom room;
};

TEST_F(LabelSearchTest, TheFirstPlaceIsToTheUpperRight) {
    const auto place = Find();
    ASSERT_TRUE(place);
    EXPECT_GT(place->corner.GetX(), 200);
    EXPECT_LT(place->corner.GetY() + size.GetY(), 200);
    EXPECT_FALSE(place->leader);
}

TEST_F(LabelSearchTest, AvoidsWhatIsTakenAndLines) {
    room.Take(Box{202, 190, 230, 199});
    room.MarkLine({202, 206}, {260, 206});
    const auto place = Find();
    ASSERT_TRUE(place);
    EXPECT_LT(place->corner.GetX() + size.GetX(), 200) << "on the left";
}

TEST_F(LabelSearchTest, GoesAwayWithALeaderWhenThereIsNoRoomAround) {
    // Four walls close around the point, with gaps at their corners.
    for (const double off : {-5.0, 5.0}) {
        room.MarkLine({197, 200 + off}, {203, 200 + off});
        room.MarkLine({200 + off, 197}, {200 + off, 203});
    }
    const auto place = Find();
    ASSERT_TRUE(place);
    ASSERT_TRUE(place->leader);
    const auto& [from, to] = *place->leader;
    EXPECT_LT((from - at).UNorm(), 5.0);
    EXPECT_GT((to - at).UNorm(), 5.0);
    EXPECT_TRUE(room.HasRoom(Box{place->corner.GetX(), place->corner.GetY(),
                                 place->corner.GetX() + 20, place->corner.GetY() + 5}));
}

TEST_F(LabelSearchTest, TheLeaderGoesThroughTheGapOfTheLines) {
    CloseIn(205);
    room.MarkLine({205, 195}, {205, 201});
    const auto place = Find();
    ASSERT_TRUE(place);
    ASSERT_TRUE(place->leader);
    EXPECT_GT(place->corner.GetX(), 205.0) << "beyond the wall";
    EXPECT_GT(place->leader->second.GetY(), 200.0);
    EXPECT_TRUE(room.IsFreeLeader(place->leader->first, place->leader->second));
}

TEST_F(LabelSearchTest, NoLeaderCrossesALine) {
    CloseIn(205);
    room.MarkLine({205, 195}, {205, 205});
    EXPECT_FALSE(Find());
}

TEST_F(LabelSearchTest, FindsNothingWhereEverythingIsTaken) {
    room.Take(Box{100, 100, 300, 300});
    EXPECT_FALSE(Find());
}

TEST_F(LabelSearchTest, NoLabelReachesBeyondTheMap) {
    map = {0, 0, 203, 203};
    const auto place = Find();
    ASSERT_TRUE(place);
    EXPECT_LE(place->corner.GetX() + size.GetX(), 203);
}

}  // namespace
}  // namespace cqsurvey::plan
