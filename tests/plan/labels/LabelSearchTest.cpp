#include "plan/labels/LabelSearch.h"

#include <gtest/gtest.h>

namespace cqsurvey::plan {
namespace {

class LabelSearchTest : public testing::Test {
 protected:
    [[nodiscard]] std::optional<LabelSearch::Place> Find() const {
        return LabelSearch(room, map).Find(at, 2.0, 1.2, size);
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
    // Four lines close around the point.
    for (const double off : {-5.0, 5.0}) {
        room.MarkLine({180, 200 + off}, {220, 200 + off});
        room.MarkLine({200 + off, 180}, {200 + off, 220});
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
