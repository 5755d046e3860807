#include "gdal/PolylineVertices.h"

#include <gtest/gtest.h>

#include "support/Drawing.h"
#include "support/TempDir.h"

namespace cqsurvey::gdal {
namespace {

class PolylineVerticesTest : public testing::Test {
 protected:
    PolylineVerticesTest() { db.CreateNew(folder.Path(u"site.job")); }

    TempDir folder;
    CqSurveyDB db;
};

TEST_F(PolylineVerticesTest, VerticesComeInOrderWithBulgesAndTies) {
    const CqHandle point = DrawPoint(db, u"P", 10, 0, 5);
    const CqHandle line = DrawLine(db, {{0, 0, 0.5}, {10, 0, -1}, {20, 5, 0}});
    DrawLine(db, {{7, 7, 0}, {8, 8, 0}});
    const CqHandle symbol = db.GetCadEntityHandleByCoordRecHandle(point);
    auto vertices = ReadVertices(db, line);
    ASSERT_EQ(vertices.size(), 3U);
    ASSERT_EQ(db.LinkSiPntAndVertex(symbol, vertices[1].handle), 1);
    vertices = ReadVertices(db, line);
    EXPECT_EQ(vertices[0].shape.bulge, 0.5);
    EXPECT_EQ(vertices[1].shape.at.GetX(), 10.0);
    EXPECT_EQ(vertices[1].symbol, symbol);
    EXPECT_EQ(vertices[0].symbol, 0U);
    ASSERT_EQ(ShapeOf(vertices).size(), 3U);
    EXPECT_EQ(ShapeOf(vertices)[2].at.GetY(), 5.0);
}

TEST_F(PolylineVerticesTest, WhatIsNoPolylineHasNone) {
    const CqHandle circle = DrawCircle(db, 1, 2, 3);
    const CqHandle line = DrawLine(db, {{0, 0, 0}, {1, 1, 0}});
    EXPECT_TRUE(ReadVertices(db, circle).empty());
    EXPECT_TRUE(ReadVertices(db, ReadVertices(db, line)[0].handle).empty());
    EXPECT_TRUE(ReadVertices(db, 999).empty());
}

}  // namespace
}  // namespace cqsurvey::gdal
