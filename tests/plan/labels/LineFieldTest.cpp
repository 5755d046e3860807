#include "plan/labels/LineField.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
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

TEST(LineField, TellsWhichLinesCrossAsIfAllWereCompared) {
    std::mt19937 random(6);
    std::uniform_real_distribution<double> place(-100.0, 100.0);
    // Parameters of the crossing along both, by Cramer's rule.
    const auto cross = [](const CVector& p, const CVector& q, const CVector& r, const CVector& s) {
        const CVector a = q - p;
        const CVector b = s - r;
        const CVector c = r - p;
        const double whole = a.GetX() * b.GetY() - a.GetY() * b.GetX();
        const double along = (c.GetX() * b.GetY() - c.GetY() * b.GetX()) / whole;
        const double other = (c.GetX() * a.GetY() - c.GetY() * a.GetX()) / whole;
        return along >= 0.0 && along <= 1.0 && other >= 0.0 && other <= 1.0;
    };
    LineField field(10.0);
    std::vector<std::pair<CVector, CVector>> lines;
    for (int i = 0; i < 15; ++i) {
        // Whole numbers, which the field keeps exactly.
        lines.emplace_back(CVector(std::round(place(random)), std::round(place(random))),
                           CVector(std::round(place(random)), std::round(place(random))));
        field.Add(lines.back().first, lines.back().second);
    }
    int free = 0;
    for (int i = 0; i < 2000; ++i) {
        const CVector from(place(random), place(random));
        const CVector to = from + CVector(place(random) / 3, place(random) / 3);
        const bool expected = std::none_of(lines.begin(), lines.end(), [&](const auto& line) {
            return cross(from, to, line.first, line.second);
        });
        EXPECT_EQ(field.IsFree(from, to), expected) << "seed 6, line " << i;
        free += expected ? 1 : 0;
    }
    EXPECT_GT(free, 200);
    EXPECT_LT(free, 1800);
}

TEST(LineField, ACrowdedCellIsFull) {
    LineField field(10.0);
    for (std::size_t i = 0; i < LineField::kCrowd; ++i) {
        field.Add({1, 1}, {2, 2});
    }
    EXPECT_FALSE(field.IsFree({8, 8, 9, 9}));
    EXPECT_TRUE(field.IsFree({18, 8, 19, 9}));
    EXPECT_FALSE(field.IsFree(CVector(8, 8), CVector(9, 9)));
}

TEST(LineField, IsNotHurtByWhatIsTooLarge) {
    LineField field(1.0);
    field.Add({-1e300, 0}, {1e300, 0});
    EXPECT_TRUE(field.IsFree({0, -1, 1, 1}));
    EXPECT_FALSE(field.IsFree({-1e300, -1e300, 1e300, 1e300}));
}

}  // namespace
}  // namespace cqsurvey::plan
