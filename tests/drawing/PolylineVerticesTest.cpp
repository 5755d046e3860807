#include <gtest/gtest.h>

#include <array>
#include <cmath>

#include "drawing/PolylinesFixture.h"
#include "tables/CqVertexTable.h"

namespace cqsurvey {
namespace {

using Polylines = PolylinesFixture;

TEST_F(Polylines, TakeAFirstVertexBehindTheirHead) {
    const CqHandle p = AddPline({{{0.0, 0.0, 0.0}, 0.0}, {{1.0, 0.0, 0.0}, 0.0}});
    const CqHandle circle = AddCircle();
    const double point[3] = {-1.0, 2.0, 3.0};
    EXPECT_EQ(m_db.InsertVertex(p, point, 0.75), 1);
    const CqHandle v = circle + 1;
    EXPECT_EQ(Chain(), (Handles{p, v, p + 1, p + 2, circle}));
    const auto vertex = Read(v);
    EXPECT_EQ(vertex->GetBulge(), 0.75);
    EXPECT_EQ(vertex->GetPlineHandle(), p);
    EXPECT_EQ(vertex->GetPrevVertexHandle(), p);
    EXPECT_EQ(vertex->GetNextVertexHandle(), p + 1);
    EXPECT_EQ(Read(p + 1)->GetPrevVertexHandle(), v);
    EXPECT_EQ(PointOf(v), (std::array{-1.0, 2.0, 3.0}));
    Reopen();
    EXPECT_EQ(Chain(), (Handles{p, v, p + 1, p + 2, circle}));
}

TEST_F(Polylines, TakeAVertexBetweenTwoAndBehindTheLast) {
    const CqHandle p = AddPline({{{0.0, 0.0, 0.0}, 0.0}, {{1.0, 0.0, 0.0}, 0.0}});
    const CqHandle circle = AddCircle();
    const double point[3] = {5.0, 5.0, 5.0};
    EXPECT_EQ(m_db.InsertVertex(p + 1, point, 0.0), 1);
    EXPECT_EQ(m_db.InsertVertex(p + 2, point, 0.0), 1);
    EXPECT_EQ(Chain(), (Handles{p, p + 1, circle + 1, p + 2, circle + 2, circle}));
    EXPECT_EQ(Read(circle + 2)->GetPlineHandle(), p);
    EXPECT_EQ(Read(circle + 2)->GetNextVertexHandle(), 0U);
}

TEST_F(Polylines, TakeAVertexAtTheEndOfTheDrawing) {
    const CqHandle p = AddPline({{{0.0, 0.0, 0.0}, 0.0}, {{1.0, 0.0, 0.0}, 0.0}});
    const double point[3] = {5.0, 5.0, 5.0};
    EXPECT_EQ(m_db.InsertVertex(p + 2, point, 0.0), 1);
    EXPECT_EQ(Chain(), (Handles{p, p + 1, p + 2, p + 3}));
    const CqHandle circle = AddCircle();
    EXPECT_EQ(Chain(), (Handles{p, p + 1, p + 2, p + 3, circle}));
    Reopen();
    EXPECT_EQ(Chain(), (Handles{p, p + 1, p + 2, p + 3, circle}));
    m_db.DeleteCircle(circle);
    m_db.DeleteVertex(p + 3);
    EXPECT_EQ(Chain(), (Handles{p, p + 1, p + 2}));
}

TEST_F(Polylines, TakeAVertexOnTheirOwnLayerAndInTheirOwnColour) {
    const CqHandle p = AddPline({{{0.0, 0.0, 0.0}, 0.0}, {{1.0, 0.0, 0.0}, 0.0}});
    m_db.EditLayer(p + 1, u"Fences");
    m_db.EditCadEntityColor(p + 1, 9);
    m_db.AddLayer(u"Walls", 1, 0);
    m_db.SetCurrentLayer(u"Walls");
    m_db.SetCurrentColor(5);
    const double point[3] = {};
    m_db.InsertVertex(p + 1, point, 0.0);
    EXPECT_EQ(Read(p + 3)->GetLayer(), u"Fences");
    EXPECT_EQ(Read(p + 3)->GetColor(), 9);
    m_db.InsertVertex(p, point, 0.0);
    EXPECT_EQ(Read(p + 4)->GetLayer(), u"0");
    EXPECT_EQ(Read(p + 4)->GetColor(), 256);
}

TEST_F(Polylines, TakeNoVertexBehindAnotherEntity) {
    const double point[3] = {};
    EXPECT_EQ(m_db.InsertVertex(AddCircle(), point, 0.0), 0);
    EXPECT_EQ(m_db.InsertVertex(AddText(), point, 0.0), 0);
    EXPECT_EQ(m_db.InsertVertex(AddPoint(u"P"), point, 0.0), 0);
    EXPECT_EQ(m_db.GetNumCadEntities(), 3);
    EXPECT_EQ(Counts().numVertices, 0);
}

TEST_F(Polylines, TakeNoVertexBehindOneWhoseOwnRecordIsGone) {
    const CqHandle p = AddPline({{{0.0, 0.0, 0.0}, 0.0}, {{1.0, 0.0, 0.0}, 0.0}});
    ChangeTable<CqVertexTable>(u"_VertexData", [](CqVertexTable& table) { table.DeleteRecord(1); });
    const double point[3] = {};
    EXPECT_EQ(m_db.InsertVertex(p + 1, point, 0.0), 0);
    EXPECT_EQ(m_db.GetNumCadEntities(), 3);
    EXPECT_EQ(m_db.InsertVertex(p + 2, point, 0.0), 1);
}

TEST_F(Polylines, MoveAVertexWithOrWithoutItsBulge) {
    const CqHandle p = AddPline({{{0.0, 0.0, 0.0}, 0.5}, {{1.0, 0.0, 0.0}, 0.0}});
    const double point[3] = {7.0, 8.0, 9.0};
    EXPECT_EQ(m_db.MoveVertex(p + 1, point, kKeepBulge), 1);
    EXPECT_EQ(PointOf(p + 1), (std::array{7.0, 8.0, 9.0}));
    EXPECT_EQ(Read(p + 1)->GetBulge(), 0.5);
    EXPECT_EQ(m_db.MoveVertex(p + 1, point, 1.4013e-45), 1);
    EXPECT_EQ(Read(p + 1)->GetBulge(), 0.5);
    EXPECT_EQ(m_db.MoveVertex(p + 1, point, 0.0), 1);
    EXPECT_EQ(Read(p + 1)->GetBulge(), 0.0);
    EXPECT_EQ(m_db.MoveVertex(p + 1, point, -2.0), 1);
    Reopen();
    EXPECT_EQ(Read(p + 1)->GetBulge(), -2.0);
    EXPECT_EQ(PointOf(p + 1), (std::array{7.0, 8.0, 9.0}));
}

TEST_F(Polylines, MoveAVertexToABulgeThatOnlyNearlyIsTheReservedOne) {
    const CqHandle p = AddPline({{{0.0, 0.0, 0.0}, 0.5}, {{1.0, 0.0, 0.0}, 0.0}});
    const double point[3] = {};
    for (const double bulge : {std::nextafter(kKeepBulge, 0.0), std::nextafter(kKeepBulge, 1.0),
                               -kKeepBulge, 1.401298464324817e-45}) {
        EXPECT_EQ(m_db.MoveVertex(p + 1, point, bulge), 1);
        EXPECT_EQ(Read(p + 1)->GetBulge(), bulge);
    }
}

TEST_F(Polylines, MoveNothingButAVertex) {
    const CqHandle p = AddPline({{{0.0, 0.0, 0.0}, 0.5}, {{1.0, 0.0, 0.0}, 0.0}});
    const CqHandle circle = AddCircle(3.0, 4.0);
    const double point[3] = {9.0, 9.0, 9.0};
    EXPECT_EQ(m_db.MoveVertex(p, point, 0.0), 0);
    EXPECT_EQ(m_db.MoveVertex(circle, point, 0.0), 0);
    EXPECT_EQ(PointOf(p), (std::array{0.0, 0.0, 0.0}));
    EXPECT_EQ(PointOf(circle), (std::array{3.0, 4.0, 0.0}));
}

TEST_F(Polylines, KeepBoundAndExtentsWhenAVertexIsInsertedMovedOrDeleted) {
    const CqHandle p = AddPline({{{0.0, 0.0, 0.0}, 0.0}, {{1.0, 1.0, 0.0}, 0.0}});
    const double far[3] = {100.0, 100.0, 0.0};
    m_db.InsertVertex(p + 2, far, 3.0);
    m_db.MoveVertex(p + 1, far, 3.0);
    m_db.DeleteVertex(p + 2);
    ExpectBound(p, 0.0, 0.0, 1.0, 1.0);
    ExpectExtents(0.0, 0.0, 1.0, 1.0);
    Reopen();
    ExpectExtents(0.0, 0.0, 1.0, 1.0);
}

TEST_F(Polylines, LoseAVertexWithItsTie) {
    const CqHandle point = AddPoint(u"P");
    const CqHandle p =
        AddPline({{{0.0, 0.0, 0.0}, 0.0}, {{1.0, 0.0, 0.0}, 0.0}, {{2.0, 0.0, 0.0}, 0.0}});
    m_db.LinkSiPntAndVertex(point, p + 1);
    m_db.LinkSiPntAndVertex(point, p + 2);
    EXPECT_EQ(m_db.DeleteVertex(p + 2), 1);
    EXPECT_EQ(Chain(), (Handles{point, p, p + 1, p + 3}));
    EXPECT_EQ(Read(p + 3)->GetPrevVertexHandle(), p + 1);
    EXPECT_EQ(Read(p + 1)->GetNextVertexHandle(), p + 3);
    EXPECT_EQ(TiesOf(point), Handles{p + 1});
    EXPECT_EQ(Counts().numVertices, 2);
    Reopen();
    EXPECT_EQ(Chain(), (Handles{point, p, p + 1, p + 3}));
    EXPECT_EQ(TiesOf(point), Handles{p + 1});
}

TEST_F(Polylines, MayLoseAllTheirVertices) {
    const CqHandle p = AddPline({{{0.0, 0.0, 0.0}, 0.0}, {{1.0, 0.0, 0.0}, 0.0}});
    EXPECT_EQ(m_db.DeleteVertex(p + 2), 1);
    EXPECT_EQ(m_db.DeleteVertex(p + 1), 1);
    EXPECT_EQ(Chain(), Handles{p});
    EXPECT_EQ(m_db.DeletePline(p), 1);
    EXPECT_EQ(m_db.GetFirstCadEntityHandle(), 0U);
    const CqHandle circle = AddCircle();
    EXPECT_EQ(Chain(), Handles{circle});
}

}  // namespace
}  // namespace cqsurvey
