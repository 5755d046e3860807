#include "cqsurvey/CVector.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <random>
#include <string>

namespace cqsurvey {
namespace {

void ExpectVector(const CVector& v, double x, double y) {
    EXPECT_EQ(v.GetX(), x);
    EXPECT_EQ(v.GetY(), y);
}

/// The centre from the bulge itself, in more digits: the height of the triangle over the chord is
/// (1 - b^2) / (4 b) chords.
CVector CentreFromBulge(const CVector& p, const CVector& q, double bulge) {
    const long double b = bulge;
    const long double h = (1.0L - b) * (1.0L + b) / (4.0L * b);
    const long double dx = static_cast<long double>(q.GetX()) - p.GetX();
    const long double dy = static_cast<long double>(q.GetY()) - p.GetY();
    return {static_cast<double>(p.GetX() + dx / 2.0L - dy * h),
            static_cast<double>(p.GetY() + dy / 2.0L + dx * h)};
}

TEST(CVector, StartsAsZero) {
    ExpectVector(CVector(), 0.0, 0.0);
}

TEST(CVector, KeepsAndChangesItsCoordinates) {
    CVector v(3.0, -4.0);
    ExpectVector(v, 3.0, -4.0);
    v.SetX(7.0);
    v.SetY(8.0);
    ExpectVector(v, 7.0, 8.0);
}

TEST(CVector, AddsAndSubtracts) {
    ExpectVector(CVector(1.0, 2.0) + CVector(10.0, 20.0), 11.0, 22.0);
    ExpectVector(CVector(1.0, 2.0) - CVector(10.0, 20.0), -9.0, -18.0);
}

TEST(CVector, HasALength) {
    EXPECT_EQ(CVector(3.0, -4.0).UNorm(), 5.0);
    EXPECT_EQ(CVector().UNorm(), 0.0);
}

TEST(CVector, HasALengthWhereSquaresOverflowOrVanish) {
    EXPECT_DOUBLE_EQ(CVector(3e300, 4e300).UNorm(), 5e300);
    EXPECT_DOUBLE_EQ(CVector(3e-300, 4e-300).UNorm(), 5e-300);
}

TEST(CVector, FindsTheCentreOnTheLeftOfTheChordForASmallPositiveAngle) {
    const CVector c = CVector::CalcArcCenter({1.0, 0.0}, {0.0, 1.0}, std::numbers::pi / 2.0);
    EXPECT_NEAR(c.GetX(), 0.0, 1e-15);
    EXPECT_NEAR(c.GetY(), 0.0, 1e-15);
}

TEST(CVector, FindsTheCentreOnTheRightOfTheChordForANegativeAngle) {
    const CVector c = CVector::CalcArcCenter({1.0, 0.0}, {0.0, 1.0}, -std::numbers::pi / 2.0);
    EXPECT_NEAR(c.GetX(), 1.0, 1e-15);
    EXPECT_NEAR(c.GetY(), 1.0, 1e-15);
}

TEST(CVector, FindsTheCentreOnTheOtherSideBeyondAHalfCircle) {
    const CVector c = CVector::CalcArcCenter({1.0, 0.0}, {0.0, 1.0}, 1.5 * std::numbers::pi);
    EXPECT_NEAR(c.GetX(), 1.0, 1e-15);
    EXPECT_NEAR(c.GetY(), 1.0, 1e-15);
}

TEST(CVector, FindsTheMiddleOfTheChordExactlyForAHalfCircle) {
    constexpr unsigned kSeed = 77;
    SCOPED_TRACE("seed " + std::to_string(kSeed));
    std::mt19937_64 random(kSeed);
    std::uniform_int_distribution<int> millimetre(-2'000'000'000, 2'000'000'000);
    for (int i = 0; i < 10'000; ++i) {
        // Multiples of 1/1024 have their middles among the doubles.
        const CVector p(millimetre(random) / 1024.0, millimetre(random) / 1024.0);
        const CVector q(millimetre(random) / 1024.0, millimetre(random) / 1024.0);
        for (const double bulge : {1.0, -1.0}) {
            ExpectVector(CVector::CalcArcCenter(p, q, 4.0 * std::atan(bulge)),
                         (p.GetX() + q.GetX()) / 2.0, (p.GetY() + q.GetY()) / 2.0);
        }
    }
    ExpectVector(CVector::CalcArcCenter({-1.0, 0.0}, {1.0, 0.0}, 4.0 * std::atan(1.0)), 0.0, 0.0);
    constexpr double kLargest = std::numeric_limits<double>::max();
    ExpectVector(CVector::CalcArcCenter({kLargest, 1.0}, {kLargest, 3.0}, 4.0 * std::atan(1.0)),
                 kLargest, 2.0);
}

TEST(CVector, FindsThePointItselfForCoincidingPoints) {
    for (const double angle : {0.0, 1e-8, 1.0, std::numbers::pi, -6.0}) {
        ExpectVector(CVector::CalcArcCenter({0.1, -0.7}, {0.1, -0.7}, angle), 0.1, -0.7);
    }
}

TEST(CVector, HasNoCentreForAStraightLine) {
    const CVector c = CVector::CalcArcCenter({0.0, 0.0}, {1.0, 1.0}, 0.0);
    EXPECT_FALSE(std::isfinite(c.GetX()));
    EXPECT_FALSE(std::isfinite(c.GetY()));
}

TEST(CVector, FindsCentresOfTheFlattestAndTheFullestArcsAsWellAsTheirAnglesTell) {
    constexpr unsigned kSeed = 4711;
    SCOPED_TRACE("seed " + std::to_string(kSeed));
    constexpr double kEpsilon = std::numeric_limits<double>::epsilon();
    std::mt19937_64 random(kSeed);
    std::uniform_real_distribution<double> coordinate(-1e6, 1e6);
    std::uniform_real_distribution<double> exponent(-8.0, 8.0);
    for (int i = 0; i < 100'000 && !::testing::Test::HasFailure(); ++i) {
        const CVector p(coordinate(random), coordinate(random));
        const CVector q(coordinate(random), coordinate(random));
        const double b = std::pow(10.0, exponent(random));
        const double bulge = i % 2 == 0 ? b : -b;
        SCOPED_TRACE("bulge 1e" + std::to_string(std::log10(b)));
        const CVector c = CVector::CalcArcCenter(p, q, 4.0 * std::atan(bulge));
        const CVector expected = CentreFromBulge(p, q, bulge);
        const double chord = (q - p).UNorm();
        const double radius = chord * (1.0 + b * b) / (4.0 * b);
        // The angle of a nearly full circle is known to half a unit in its last place only, which
        // moves the centre by radius^2 / chord times that.
        const double tolerance = 4.0 * kEpsilon * (radius + p.UNorm() + q.UNorm()) +
                                 (b > 1.0 ? 4.0 * kEpsilon * radius * radius / chord : 0.0);
        EXPECT_NEAR(c.GetX(), expected.GetX(), tolerance);
        EXPECT_NEAR(c.GetY(), expected.GetY(), tolerance);
    }
}

}  // namespace
}  // namespace cqsurvey
