#include "cqjob/PolylineMeasure.h"

#include <gtest/gtest.h>

#include <array>
#include <numbers>

namespace cqsurvey::cqjob {
namespace {

void Add(PolylineMeasure& line, double x, double y, double bulge = 0.0) {
    CqVertexCadEntity vertex;
    const std::array<double, 3> point{x, y, 7.0};
    vertex.SetPoint(point.data());
    vertex.SetBulge(bulge);
    line.Add(vertex);
}

TEST(PolylineMeasure, CountsAndMeasuresStraightSegments) {
    PolylineMeasure line;
    EXPECT_EQ(line.GetVertices(), 0U);
    Add(line, 10, 20);
    EXPECT_EQ(line.GetLength(), 0.0);
    EXPECT_EQ(line.GetExtents().min.GetX(), 10.0);
    Add(line, 13, 24);
    Add(line, 13, 14);
    EXPECT_EQ(line.GetVertices(), 3U);
    EXPECT_DOUBLE_EQ(line.GetLength(), 15.0);
    EXPECT_EQ(line.GetExtents().min.GetY(), 14.0);
    EXPECT_EQ(line.GetExtents().max.GetX(), 13.0);
    EXPECT_EQ(line.GetExtents().max.GetY(), 24.0);
}

TEST(PolylineMeasure, FollowsArcs) {
    PolylineMeasure line;
    Add(line, 0, 0, 1.0);
    Add(line, 10, 0, 5.0);
    EXPECT_NEAR(line.GetLength(), 5.0 * std::numbers::pi, 1e-9);
    EXPECT_NEAR(line.GetExtents().min.GetY(), -5.0, 1e-9) << "a positive arc lies to the right";
    EXPECT_NEAR(line.GetExtents().max.GetY(), 0.0, 1e-9);
}

}  // namespace
}  // namespace cqsurvey::cqjob
