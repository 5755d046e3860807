#include "exchange/drawing/ImagePlace.h"

#include <gtest/gtest.h>

namespace cqsurvey::exchange {
namespace {

TEST(ImagePlaceTest, CornersTurnCounterClockwiseAboutTheCentre) {
    const auto corners = CornersOf(CqImagePlace{100, 200, 20, 10, 90});
    EXPECT_NEAR(corners[0].x, 105, 1e-12);
    EXPECT_NEAR(corners[0].y, 190, 1e-12);
    EXPECT_NEAR(corners[1].x, 105, 1e-12);
    EXPECT_NEAR(corners[1].y, 210, 1e-12);
    EXPECT_NEAR(corners[2].x, 95, 1e-12);
    EXPECT_NEAR(corners[3].x, 95, 1e-12);
    EXPECT_NEAR(corners[3].y, 190, 1e-12);
}

}  // namespace
}  // namespace cqsurvey::exchange
