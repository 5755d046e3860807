#include "cqsurvey/CqVertexCadEntity.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <random>
#include <string>
#include <utility>

#include "cqsurvey/CqPlineCadEntity.h"
#include "drawing/NeutralValues.h"
#include "support/Box.h"
#include "support/SampledArc.h"

namespace cqsurvey {
namespace {

void Place(CqVertexCadEntity& vertex, double x, double y, double bulge = 0.0) {
    const double point[3] = {x, y, 7.0};
    vertex.SetPoint(point);
    vertex.SetBulge(bulge);
}

/// The bound of a polyline that is widened by one segment.
Box BoundOfSegment(const CVector& p, const CVector& q, double bulge) {
    CqVertexCadEntity first;
    CqVertexCadEntity second;
    Place(first, p.GetX(), p.GetY(), bulge);
    Place(second, q.GetX(), q.GetY());
    CqPlineCadEntity pline;
    first.UpdateExtent(&pline, &second);
    second.UpdateExtent(&pline, nullptr);
    CVector min;
    CVector max;
    pline.GetBound(min, max);
    return {min.GetX(), min.GetY(), max.GetX(), max.GetY()};
}

void ExpectBox(const Box& box, double minX, double minY, double maxX, double maxY,
               double tolerance) {
    EXPECT_NEAR(box.minX, minX, tolerance);
    EXPECT_NEAR(box.minY, minY, tolerance);
    EXPECT_NEAR(box.maxX, maxX, tolerance);
    EXPECT_NEAR(box.maxY, maxY, tolerance);
}

void ExpectBoundOfSamples(const CVector& p, const CVector& q, double bulge) {
    SCOPED_TRACE("from " + std::to_string(p.GetX()) + ", " + std::to_string(p.GetY()) + " to " +
                 std::to_string(q.GetX()) + ", " + std::to_string(q.GetY()) + " bulge 1e" +
                 std::to_string(std::log10(std::fabs(bulge))) + (bulge < 0.0 ? " negative" : ""));
    constexpr int kDepth = 10;
    Box samples;
    SampleArc(p, q, bulge, kDepth, [&](const CVector& v) { samples.Add(v.GetX(), v.GetY()); });
    ExpectBox(BoundOfSegment(p, q, bulge), samples.minX, samples.minY, samples.maxX, samples.maxY,
              ArcTolerance(p, q, bulge, kDepth));
}

TEST(CqVertexCadEntity, StartsStraightAndAlone) {
    const CqVertexCadEntity vertex;
    EXPECT_EQ(vertex.GetType(), EntVertex);
    EXPECT_EQ(vertex.GetBulge(), 0.0);
    EXPECT_EQ(vertex.GetPlineHandle(), 0U);
    EXPECT_EQ(vertex.GetPrevVertexHandle(), 0U);
    EXPECT_EQ(vertex.GetNextVertexHandle(), 0U);
    EXPECT_EQ(vertex.GetMcadSiPointHandle(), 0U);
}

TEST(CqVertexCadEntity, KeepsItsBulge) {
    CqVertexCadEntity vertex;
    EXPECT_EQ(vertex.SetBulge(-0.5), 1);
    EXPECT_EQ(vertex.GetBulge(), -0.5);
    EXPECT_EQ(vertex.SetBulge(std::numeric_limits<double>::infinity()), 1);
    EXPECT_EQ(vertex.GetBulge(), std::numeric_limits<double>::infinity());
}

TEST(CqVertexCadEntity, IsCopiedWhole) {
    CqVertexCadEntity vertex;
    Mark(vertex);
    vertex.SetBulge(0.25);
    const CqVertexCadEntity copy(vertex);
    CqVertexCadEntity assigned;
    assigned = vertex;
    vertex.SetBulge(1.0);
    for (const CqVertexCadEntity* each : {&copy, &std::as_const(assigned)}) {
        ExpectMarked(*each);
        EXPECT_EQ(each->GetBulge(), 0.25);
    }
}

TEST(CqVertexCadEntity, HasNoOtherAttribute) {
    CqVertexCadEntity vertex;
    ExpectNeutralBut(vertex, {Attribute::kBulge});
}

TEST(CqVertexCadEntity, WidensByItselfWhenItsSegmentIsStraightOrOnlyJustBent) {
    for (const double bulge : {0.0, 1e-9, -1e-9, 1e-8, -1e-8}) {
        CqVertexCadEntity first;
        CqVertexCadEntity second;
        Place(first, 1.0, 2.0, bulge);
        Place(second, 9.0, 9.0);
        CqPlineCadEntity pline;
        first.UpdateExtent(&pline, &second);
        CVector min;
        CVector max;
        pline.GetBound(min, max);
        ExpectBox({min.GetX(), min.GetY(), max.GetX(), max.GetY()}, 1.0, 2.0, 1.0, 2.0, 0.0);
    }
}

TEST(CqVertexCadEntity, WidensByItselfWhenNoVertexFollows) {
    CqVertexCadEntity last;
    Place(last, 1.0, 2.0, 1.0);
    CqPlineCadEntity pline;
    last.UpdateExtent(&pline, nullptr);
    CVector min;
    CVector max;
    pline.GetBound(min, max);
    ExpectBox({min.GetX(), min.GetY(), max.GetX(), max.GetY()}, 1.0, 2.0, 1.0, 2.0, 0.0);
}

TEST(CqVertexCadEntity, WidensNothingButAPolyline) {
    CqVertexCadEntity first;
    CqVertexCadEntity second;
    CqVertexCadEntity noPline;
    Place(first, 0.0, 0.0, 1.0);
    Place(second, 2.0, 0.0);
    first.UpdateExtent(&noPline, &second);
    CVector min(5.0, 5.0);
    CVector max(6.0, 6.0);
    noPline.GetBound(min, max);
    EXPECT_EQ(min.GetX(), 5.0);
    EXPECT_EQ(max.GetX(), 6.0);
}

TEST(CqVertexCadEntity, BendsToTheRightOfTheChordForAPositiveBulge) {
    ExpectBox(BoundOfSegment({0.0, 0.0}, {2.0, 0.0}, 1.0), 0.0, -1.0, 2.0, 0.0, 0.0);
    ExpectBox(BoundOfSegment({0.0, 0.0}, {2.0, 0.0}, -1.0), 0.0, 0.0, 2.0, 1.0, 0.0);
    ExpectBox(BoundOfSegment({2.0, 0.0}, {0.0, 0.0}, 1.0), 0.0, 0.0, 2.0, 1.0, 0.0);
    ExpectBox(BoundOfSegment({0.0, 0.0}, {0.0, 2.0}, 1.0), 0.0, 0.0, 1.0, 2.0, 0.0);
}

TEST(CqVertexCadEntity, TakesNoExtremeOfAnArcWithinOneQuadrant) {
    // From 30 to 60 degrees of the unit circle.
    const double c = std::cos(std::numbers::pi / 6.0);
    const double bulge = std::tan(std::numbers::pi / 24.0);
    ExpectBox(BoundOfSegment({c, 0.5}, {0.5, c}, bulge), 0.5, 0.5, c, c, 0.0);
}

TEST(CqVertexCadEntity, TakesAllExtremesOfALargeArcThatEndsInItsFirstQuadrant) {
    // The unit circle from 60 degrees all the way round to 30.
    const double c = std::cos(std::numbers::pi / 6.0);
    const double bulge = std::tan(330.0 / 720.0 * std::numbers::pi);
    ExpectBox(BoundOfSegment({0.5, c}, {c, 0.5}, bulge), -1.0, -1.0, 1.0, 1.0, 1e-13);
    ExpectBox(BoundOfSegment({c, 0.5}, {0.5, c}, -bulge), -1.0, -1.0, 1.0, 1.0, 1e-13);
}

TEST(CqVertexCadEntity, StaysAPointWhenBothEndsOfAnArcCoincide) {
    for (const double bulge : {0.5, 1.0, 2.0, -3.0}) {
        ExpectBox(BoundOfSegment({3.0, 4.0}, {3.0, 4.0}, bulge), 3.0, 4.0, 3.0, 4.0, 0.0);
    }
}

TEST(CqVertexCadEntity, EndsForCoordinatesAndBulgesThatAreNoNumbers) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinity = std::numeric_limits<double>::infinity();
    for (const double odd : {nan, infinity, -infinity}) {
        for (const double bulge : {1.0, -2.0, nan, infinity, -infinity}) {
            const Box box = BoundOfSegment({odd, 1.0}, {5.0, odd}, bulge);
            EXPECT_LE(box.minX, 5.0);
            EXPECT_GE(box.maxX, 5.0);
            EXPECT_LE(box.minY, 1.0);
            EXPECT_GE(box.maxY, 1.0);
        }
    }
}

TEST(CqVertexCadEntity, BoundsRandomArcsLikeADenseSampling) {
    constexpr unsigned kSeed = 20240607;
    std::mt19937_64 random(kSeed);
    std::uniform_real_distribution<double> coordinate(-1000.0, 1000.0);
    std::uniform_real_distribution<double> exponent(-8.0, 8.0);
    std::uniform_int_distribution<int> coin(0, 1);
    SCOPED_TRACE("seed " + std::to_string(kSeed));
    for (int i = 0; i < 6000 && !::testing::Test::HasFailure(); ++i) {
        const CVector p(coordinate(random), coordinate(random));
        const CVector q(coordinate(random), coordinate(random));
        // Every third arc is of the size that surveys have, between a sliver and a full circle.
        const double power = i % 3 == 0 ? exponent(random) / 8.0 : exponent(random);
        const double bulge = std::pow(10.0, power);
        ExpectBoundOfSamples(p, q, coin(random) != 0 ? bulge : -bulge);
    }
}

TEST(CqVertexCadEntity, BoundsArcsBetweenTheAxesOfTheirCircleLikeADenseSampling) {
    // Ends on the axes and to either side of them, in all quadrants.
    const double pi = std::numbers::pi;
    for (int from = 0; from < 24; ++from) {
        for (int span = 1; span < 24; ++span) {
            const double start = from * pi / 12.0 + 1e-3 * (from % 3 - 1);
            const double angle = span * pi / 12.0;
            const CVector p(std::cos(start), std::sin(start));
            const CVector q(std::cos(start + angle), std::sin(start + angle));
            ExpectBoundOfSamples(p, q, std::tan(angle / 4.0));
            ExpectBoundOfSamples(q, p, -std::tan(angle / 4.0));
        }
    }
}

}  // namespace
}  // namespace cqsurvey
