#include "plan/labels/LineField.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <utility>
#include <vector>

#include "plan/Geometry.h"

namespace cqsurvey::plan {
namespace {

TEST(LineField, ALinePassesItsBoxesAndNoOthers) {
    LineField field(10.0);
    field.Add({0, 0}, {100, 100});
    EXPECT_FALSE(field.IsFree({40, 40, 60, 60}));
    EXPECT_TRUE(field.IsFree({40, 60, 50, 80}));
    EXPECT_FALSE(field.IsFree({49.9, 50, 50, 50.1}));
}

TEST(LineField, AgreesWithComparingAll) {
    std::mt19937 random(5);
    std::uniform_real_distribution<double> place(-200.0, 200.0);
    std::uniform_real_distribution<double> size(0.1, 20.0);
    LineField field(10.0);
    std::vector<std::pair<CVector, CVector>> lines;
    for (int i = 0; i < 60; ++i) {
        lines.emplace_back(CVector(place(random), place(random)),
                           CVector(place(random), i % 7 == 0 ? 5.0 : place(random)));
        field.Add(lines.back().first, lines.back().second);
    }
    for (int i = 0; i < 2000; ++i) {
        Box box;
        box.Add(CVector(place(random), place(random)));
        box = box.Grow(size(random));
        const bool free = std::none_of(lines.begin(), lines.end(), [&](const auto& line) {
            auto [p, q] = line;
            return Clip(p, q, box);
        });
        EXPECT_EQ(field.IsFree(box), free) << "seed 5, box " << i;
    }
}

TEST(LineField, ACrowdedCellIsFull) {
    LineField field(10.0);
    for (std::size_t i = 0; i < LineField::kCrowd; ++i) {
        field.Add({1, 1}, {2, 2});
    }
    EXPECT_FALSE(field.IsFree({8, 8, 9, 9}));
    EXPECT_TRUE(field.IsFree({18, 8, 19, 9}));
}

TEST(LineField, IsNotHurtByWhatIsTooLarge) {
    LineField field(1.0);
    field.Add({-1e300, 0}, {1e300, 0});
    EXPECT_TRUE(field.IsFree({0, -1, 1, 1}));
    EXPECT_FALSE(field.IsFree({-1e300, -1e300, 1e300, 1e300}));
}

}  // namespace
}  // namespace cqsurvey::plan
