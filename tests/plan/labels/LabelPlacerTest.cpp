#include "plan/labels/LabelPlacer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace cqsurvey::plan {
namespace {

TEST(LabelPlacer, RoomIsFreeUntilItIsTaken) {
    LabelPlacer placer(10.0);
    const Box box{5, 5, 8, 6};
    EXPECT_TRUE(placer.IsFree(box));
    placer.Take(box);
    EXPECT_FALSE(placer.IsFree(box));
    EXPECT_FALSE(placer.IsFree({7, 0, 20, 5.5}));
    EXPECT_TRUE(placer.IsFree({8.1, 5, 9, 6}));
}

TEST(LabelPlacer, AgreesWithComparingAll) {
    std::mt19937 random(77);
    std::uniform_real_distribution<double> place(-300.0, 300.0);
    std::uniform_real_distribution<double> size(0.1, 15.0);
    LabelPlacer placer(10.0);
    std::vector<Box> taken;
    for (int i = 0; i < 400; ++i) {
        Box box;
        box.Add(CVector(place(random), place(random)));
        box = box.Grow(size(random));
        const bool free = std::none_of(taken.begin(), taken.end(),
                                       [&](const Box& other) { return other.Meets(box); });
        EXPECT_EQ(placer.IsFree(box), free) << "seed 77, box " << i;
        if (free || i % 3 == 0) {
            placer.Take(box);
            taken.push_back(box);
        }
    }
}

TEST(LabelPlacer, IsNotHurtByWhatIsTooLarge) {
    LabelPlacer placer(1.0);
    placer.Take({-1e300, -1e300, 1e300, 1e300});
    placer.Take(Box());
    EXPECT_TRUE(placer.IsFree({0, 0, 1, 1}));
    EXPECT_FALSE(placer.IsFree({-1e300, -1e300, 1e300, 1e300}));
}

TEST(LabelPlacer, ACrowdedPlaceIsFull) {
    LabelPlacer placer(10.0);
    for (int i = 0; i < 100000; ++i) {
        placer.Take({1, 1, 1.5, 1.5});
    }
    EXPECT_FALSE(placer.IsFree({8, 8, 9, 9}));
    EXPECT_TRUE(placer.IsFree({18, 8, 19, 9}));
}

}  // namespace
}  // namespace cqsurvey::plan
