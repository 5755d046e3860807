#include "gdal/SpatialIndex.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

namespace cqsurvey::gdal {
namespace {

OGREnvelope Box(double minX, double minY, double maxX, double maxY) {
    OGREnvelope box;
    box.MinX = minX;
    box.MinY = minY;
    box.MaxX = maxX;
    box.MaxY = maxY;
    return box;
}

TEST(SpatialIndexTest, FindsWhatAWalkOverAllBoxesFinds) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> place(0, 100);
    std::vector<std::pair<CqHandle, OGREnvelope>> boxes;
    for (CqHandle handle = 1; handle <= 2000; ++handle) {
        const double x = place(random);
        const double y = place(random);
        boxes.emplace_back(handle, Box(x, y, x + place(random) / 50, y + place(random) / 50));
    }
    const SpatialIndex index(boxes);
    for (int round = 0; round < 50; ++round) {
        const double x = place(random);
        const double y = place(random);
        const OGREnvelope wanted = Box(x, y, x + 5, y + 5);
        std::vector<CqHandle> expected;
        for (const auto& [handle, box] : boxes) {
            if (box.Intersects(wanted) != 0) {
                expected.push_back(handle);
            }
        }
        EXPECT_EQ(index.Find(wanted), expected);
    }
}

TEST(SpatialIndexTest, BoxesThatAreNotAtAPlaceMeetNothing) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double far = std::numeric_limits<double>::max();
    const SpatialIndex index({{1, Box(nan, 0, 1, 1)},
                              {2, Box(5, 5, 4, 4)},
                              {3, Box(0, 0, 1, 1)},
                              {4, Box(-far, -far, far, far)}});
    EXPECT_EQ(index.Find(Box(0.5, 0.5, 0.6, 0.6)), (std::vector<CqHandle>{3, 4}));
    EXPECT_EQ(index.Find(Box(-9, -9, -8, -8)), (std::vector<CqHandle>{4}));
}

TEST(SpatialIndexTest, AnEmptyIndexFindsNothing) {
    EXPECT_TRUE(SpatialIndex({}).Find(Box(-1, -1, 1, 1)).empty());
}

}  // namespace
}  // namespace cqsurvey::gdal
