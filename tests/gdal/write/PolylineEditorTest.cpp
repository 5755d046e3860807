#include "gdal/write/PolylineEditor.h"

#include <cmath>

#include "gdal/DrawingIndex.h"
#include "gdal/EditedJob.h"
#include "gdal/PolylineVertices.h"

namespace cqsurvey::gdal {
namespace {

class PolylineEditorTest : public EditedJob {};

TEST_F(PolylineEditorTest, WhatNobodyChangedOfAPolylineStaysToTheBit) {
    Draw();
    {
        const Dataset dataset = OpenToWrite();
        EXPECT_EQ(Edit(*dataset, "polylines", m_line,
                       [](OGRFeature& line) {
                           line.SetField("line_type", 4);
                           line.SetField("hidden", 1);
                       }),
                  OGRERR_NONE);
    }
    CqSurveyDB db;
    db.OpenReadOnly(FromUtf8(Path()));
    const std::vector<JobVertex> vertices = ReadVertices(db, m_line);
    ASSERT_EQ(vertices.size(), 3U);
    EXPECT_EQ(vertices[0].shape.bulge, 0.3);
    EXPECT_EQ(vertices[1].shape.bulge, -0.7);
    EXPECT_TRUE(std::isnan(vertices[1].shape.height));
    EXPECT_NE(vertices[0].symbol, 0U);
    const CqCadEntityPtr line = ReadEntity(db, m_line, EntPline);
    EXPECT_EQ(line->GetLine(), 4);
    EXPECT_EQ(line->GetColor(), -256);
}

TEST_F(PolylineEditorTest, AVertexThatMovesLeavesItsPointAndTheOthersKeepTheirHandles) {
    Draw();
    const Dataset dataset = OpenToWrite();
    EXPECT_EQ(Edit(*dataset, "polylines", m_line,
                   [](OGRFeature& line) {
                       Move(line, "COMPOUNDCURVE Z ((100 100 1,10 0 2,15 5 2,20 0 3))");
                   }),
              OGRERR_NONE);
    EXPECT_EQ(Shape(*dataset, "polylines", m_line),
              "COMPOUNDCURVE Z ((100 100 1,10 0 2,15 5 2,20 0 3))");
    EXPECT_EQ(Value(*dataset, "vertices", m_vertex, "point"), "null");
    EXPECT_EQ(Shape(*dataset, "vertices", m_vertex + 1), "POINT Z (10 0 2)");
    EXPECT_EQ(Shape(*dataset, "vertices", m_vertex + 2), "POINT Z (20 0 3)");
    EXPECT_EQ(Value(*dataset, "vertices", m_vertex + 2, "number"), "4");
    // The extents follow.
    OGREnvelope extent;
    ASSERT_EQ(dataset->GetLayerByName("polylines")->GetExtent(&extent, FALSE), OGRERR_NONE);
    EXPECT_EQ(extent.MaxY, 100);
    EXPECT_EQ(Edit(*dataset, "polylines", m_line,
                   [](OGRFeature& line) { Move(line, "LINESTRING Z (10 0 2,20 0 3)"); }),
              OGRERR_NONE);
    EXPECT_EQ(Shape(*dataset, "vertices", m_vertex), "gone");
    EXPECT_EQ(Shape(*dataset, "vertices", m_vertex + 1), "POINT Z (10 0 2)");
    EXPECT_EQ(Edit(*dataset, "polylines", m_line,
                   [](OGRFeature& line) {
                       Move(line,
                            "COMPOUNDCURVE Z ((1 1 1,2 2 2,10 0 2),CIRCULARSTRING Z (10 0 2,15 -5 "
                            "2,20 0 3))");
                   }),
              OGRERR_NONE);
    EXPECT_EQ(
        Shape(*dataset, "polylines", m_line),
        "COMPOUNDCURVE Z ((1 1 1,2 2 2,10 0 2),CIRCULARSTRING Z (10 0 2,15.0 -5 2.5,20 0 3))");
    const Messages messages;
    EXPECT_NE(Edit(*dataset, "polylines", m_line,
                   [](OGRFeature& line) { Move(line, "MULTILINESTRING ((0 0,1 1),(2 2,3 3))"); }),
              OGRERR_NONE);
    EXPECT_NE(messages.Text().find("is not one line"), std::string::npos);
}

TEST_F(PolylineEditorTest, AVertexIsMovedBentAndTied) {
    Draw();
    const Dataset dataset = OpenToWrite();
    const Messages messages;
    EXPECT_EQ(Edit(*dataset, "vertices", m_vertex + 1,
                   [&](OGRFeature& vertex) {
                       vertex.SetField("bulge", 0.25);
                       vertex.SetField("point", static_cast<GIntBig>(m_point));
                   }),
              OGRERR_NONE);
    EXPECT_EQ(Value(*dataset, "vertices", m_vertex + 1, "bulge"), "0.25");
    EXPECT_EQ(Value(*dataset, "vertices", m_vertex + 1, "point_name"), "A");
    EXPECT_EQ(Edit(*dataset, "vertices", m_vertex,
                   [](OGRFeature& vertex) { vertex.SetFieldNull(vertex.GetFieldIndex("point")); }),
              OGRERR_NONE);
    EXPECT_EQ(Value(*dataset, "vertices", m_vertex, "point"), "null");
    EXPECT_EQ(messages.Text(), "");
    EXPECT_NE(Edit(*dataset, "vertices", m_vertex,
                   [](OGRFeature& vertex) { vertex.SetField("point", 4711); }),
              OGRERR_NONE);
    OGRLayer* vertices = dataset->GetLayerByName("vertices");
    EXPECT_EQ(vertices->DeleteFeature(static_cast<GIntBig>(m_vertex) + 1), OGRERR_NONE);
    EXPECT_EQ(vertices->GetFeatureCount(), 2);
    // A polyline has two vertices at least.
    EXPECT_NE(vertices->DeleteFeature(static_cast<GIntBig>(m_vertex)), OGRERR_NONE);
    EXPECT_NE(messages.Text().find("one of the last two"), std::string::npos) << messages.Text();
    EXPECT_EQ(vertices->GetFeatureCount(), 2);
}

}  // namespace
}  // namespace cqsurvey::gdal
