#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <limits>

#include "cqsurvey/CqBatch.h"
#include "cqsurvey/CqCadEntityList.h"
#include "cqsurvey/CqPlineCadEntity.h"
#include "drawing/PolylinesFixture.h"
#include "tables/CqPlineTable.h"

namespace cqsurvey {
namespace {

using Polylines = PolylinesFixture;

TEST_F(Polylines, StartAsAListWithTheirHead) {
    CqCadEntityList* list = m_db.StartPline(3, 40);
    ASSERT_EQ(list->GetCount(), 1U);
    EXPECT_EQ(list->GetAt(0)->GetType(), EntPline);
    const double point[3] = {1.0, 2.0, 3.0};
    EXPECT_EQ(m_db.AddVertex(list, point, 0.5), 1);
    ASSERT_EQ(list->GetCount(), 2U);
    const CqCadEntity& vertex = *list->GetAt(1);
    EXPECT_EQ(vertex.GetType(), EntVertex);
    EXPECT_EQ(vertex.GetBulge(), 0.5);
    double read[3];
    vertex.GetPoint(read);
    EXPECT_EQ(read[0], 1.0);
    EXPECT_EQ(read[1], 2.0);
    EXPECT_EQ(read[2], 3.0);
    EXPECT_EQ(m_db.CancelPline(list), 1);
    EXPECT_EQ(m_db.GetNumCadEntities(), 0);
}

TEST_F(Polylines, OfFewerThanTwoVerticesAreNotWritten) {
    EXPECT_EQ(m_db.EndPline(new CqCadEntityList), 0U);
    EXPECT_EQ(AddPline({}), 0U);
    EXPECT_EQ(AddPline({{{1.0, 2.0, 3.0}, 0.0}}), 0U);
    EXPECT_EQ(m_db.GetNumCadEntities(), 0);
    EXPECT_EQ(m_db.GetFirstCadEntityHandle(), 0U);
    EXPECT_EQ(Counts().numPlines, 0);
    EXPECT_EQ(Counts().numVertices, 0);
    CVector min;
    CVector max;
    EXPECT_EQ(m_db.GetEntityBound(min, max), 0);
}

TEST_F(Polylines, RefuseANullList) {
    const double point[3] = {};
    EXPECT_EQ(m_db.AddVertex(nullptr, point, 0.0), 0);
    EXPECT_EQ(m_db.EndPline(nullptr), 0U);
    EXPECT_EQ(m_db.CancelPline(nullptr), 1);
}

TEST_F(Polylines, GetTheirHandlesInARowAndAreIteratedInOrder) {
    const CqHandle p = AddPline(
        {{{1.0, 2.0, 3.0}, 0.5}, {{4.0, 5.0, 6.0}, 0.0}, {{7.0, 8.0, 9.0}, -0.25}}, 12, 40);
    ASSERT_EQ(p, 2U);
    EXPECT_EQ(Chain(), (Handles{p, p + 1, p + 2, p + 3}));
    const auto pline = Read(p);
    ASSERT_EQ(pline->GetType(), EntPline);
    EXPECT_EQ(pline->GetLine(), 12);
    EXPECT_EQ(pline->GetCode(), 40);
    EXPECT_EQ(PointOf(p), (std::array{0.0, 0.0, 0.0}));
    const std::array<double, 3> bulges{0.5, 0.0, -0.25};
    for (CqHandle i = 1; i <= 3; ++i) {
        const auto vertex = Read(p + i);
        ASSERT_EQ(vertex->GetType(), EntVertex);
        EXPECT_EQ(vertex->GetBulge(), bulges[i - 1]);
        EXPECT_EQ(vertex->GetPlineHandle(), p);
        EXPECT_EQ(vertex->GetPrevVertexHandle(), p + i - 1);
        EXPECT_EQ(vertex->GetNextVertexHandle(), i < 3 ? p + i + 1 : 0);
        EXPECT_EQ(vertex->GetMcadSiPointHandle(), 0U);
    }
    EXPECT_EQ(PointOf(p + 2), (std::array{4.0, 5.0, 6.0}));
    EXPECT_EQ(Counts().numPlines, 1);
    EXPECT_EQ(Counts().numVertices, 3);
}

TEST_F(Polylines, FollowTheTailOfTheDrawingAndAreFollowed) {
    const CqHandle first = AddCircle();
    const CqHandle p = AddPline({{{0.0, 0.0, 0.0}, 0.0}, {{1.0, 1.0, 0.0}, 0.0}});
    const CqHandle last = AddCircle();
    EXPECT_EQ(Chain(), (Handles{first, p, p + 1, p + 2, last}));
    EXPECT_EQ(Read(p + 2)->GetNextVertexHandle(), 0U);
    Reopen();
    EXPECT_EQ(Chain(), (Handles{first, p, p + 1, p + 2, last}));
}

TEST_F(Polylines, TakeNumbersThatWereNeverUsedAfterADeletion) {
    const CqHandle circle = AddCircle();
    m_db.DeleteCircle(circle);
    const CqHandle p = AddPline({{{0.0, 0.0, 0.0}, 0.0}, {{1.0, 1.0, 0.0}, 0.0}});
    EXPECT_EQ(p, circle + 1);
    EXPECT_EQ(Chain(), (Handles{p, p + 1, p + 2}));
    Reopen();
    EXPECT_EQ(Chain(), (Handles{p, p + 1, p + 2}));
}

TEST_F(Polylines, AreDrawnOnTheCurrentLayerInTheCurrentColourOfTheirCommit) {
    m_db.AddLayer(u"Walls", 3, 0);
    CqCadEntityList* list = m_db.StartPline(0, 0);
    const double point[3] = {};
    m_db.AddVertex(list, point, 0.0);
    m_db.AddVertex(list, point, 0.0);
    m_db.SetCurrentLayer(u"Walls");
    m_db.SetCurrentColor(-17);
    const CqHandle p = m_db.EndPline(list);
    for (CqHandle h = p; h <= p + 2; ++h) {
        EXPECT_EQ(Read(h)->GetLayer(), u"Walls");
        EXPECT_EQ(Read(h)->GetColor(), -17);
    }
}

TEST_F(Polylines, TakeLineAndCodeOfTheLastStart) {
    CqCadEntityList* first = m_db.StartPline(1, 10);
    CqCadEntityList* second = m_db.StartPline(2, 20);
    const double point[3] = {};
    for (CqCadEntityList* list : {first, second}) {
        m_db.AddVertex(list, point, 0.0);
        m_db.AddVertex(list, point, 0.0);
    }
    for (CqCadEntityList* list : {first, second}) {
        const auto pline = Read(m_db.EndPline(list));
        EXPECT_EQ(pline->GetLine(), 2);
        EXPECT_EQ(pline->GetCode(), 20);
    }
}

TEST_F(Polylines, TakeTheDefaultsWhereNoStartWasSinceTheNewJob) {
    CqCadEntityList* list = m_db.StartPline(3, 40);
    const double point[3] = {};
    m_db.AddVertex(list, point, 0.0);
    m_db.AddVertex(list, point, 0.0);
    m_db.CreateNew(m_folder.Path(u"other.job"));
    const auto pline = Read(m_db.EndPline(list));
    EXPECT_EQ(pline->GetLine(), 256);
    EXPECT_EQ(pline->GetCode(), 0);
}

TEST_F(Polylines, KeepLineAndCodeOfTheirStartWhenAJobIsOpened) {
    CqCadEntityList* list = m_db.StartPline(3, 40);
    const double point[3] = {};
    m_db.AddVertex(list, point, 0.0);
    m_db.AddVertex(list, point, 0.0);
    Reopen();
    const auto pline = Read(m_db.EndPline(list));
    EXPECT_EQ(pline->GetLine(), 3);
    EXPECT_EQ(pline->GetCode(), 40);
}

TEST_F(Polylines, KeepEveryBulgeAndCoordinateAsGiven) {
    const double infinity = std::numeric_limits<double>::infinity();
    const double smallest = std::numeric_limits<double>::denorm_min();
    const CqHandle p = AddPline({{{-0.0, infinity, std::numeric_limits<double>::quiet_NaN()}, -0.0},
                                 {{1e308, smallest, -infinity}, kKeepBulge},
                                 {{0.1, 0.2, 0.3}, infinity}});
    Reopen();
    EXPECT_TRUE(std::signbit(PointOf(p + 1)[0]));
    EXPECT_EQ(PointOf(p + 1)[1], infinity);
    EXPECT_TRUE(std::isnan(PointOf(p + 1)[2]));
    EXPECT_EQ(PointOf(p + 2), (std::array{1e308, smallest, -infinity}));
    EXPECT_TRUE(std::signbit(Read(p + 1)->GetBulge()));
    EXPECT_EQ(Read(p + 2)->GetBulge(), kKeepBulge);
    EXPECT_EQ(Read(p + 3)->GetBulge(), infinity);
}

TEST_F(Polylines, StoreABoundThatHoldsTheirArcs) {
    const CqHandle right = AddPline({{{0.0, 0.0, 0.0}, 1.0}, {{2.0, 0.0, 0.0}, 0.0}});
    ExpectBound(right, 0.0, -1.0, 2.0, 0.0);
    const CqHandle left = AddPline({{{0.0, 0.0, 0.0}, -1.0}, {{2.0, 0.0, 0.0}, 0.0}});
    ExpectBound(left, 0.0, 0.0, 2.0, 1.0);
    ExpectExtents(0.0, -1.0, 2.0, 1.0);
    Reopen();
    ExpectBound(right, 0.0, -1.0, 2.0, 0.0);
    ExpectBound(left, 0.0, 0.0, 2.0, 1.0);
    ExpectExtents(0.0, -1.0, 2.0, 1.0);
}

TEST_F(Polylines, LeaveTheBulgeOfTheirLastVertexOutOfTheBound) {
    const CqHandle p = AddPline({{{0.0, 0.0, 0.0}, 0.0}, {{2.0, 0.0, 0.0}, 1.0}});
    ExpectBound(p, 0.0, 0.0, 2.0, 0.0);
    EXPECT_EQ(Read(p + 2)->GetBulge(), 1.0);
}

TEST_F(Polylines, StoreNoFirstVertexInTheirOwnRecord) {
    AddPline({{{0.0, 0.0, 0.0}, 0.0}, {{1.0, 0.0, 0.0}, 0.0}});
    ChangeTable<CqPlineTable>(u"_PlineData", [](CqPlineTable& table) {
        ASSERT_EQ(table.First(kRecordOrder), 1);
        EXPECT_EQ(table.Get<"VertexIndex">(), 0U);
    });
}

TEST_F(Polylines, ChangeLineAndCode) {
    const CqHandle p = AddPline({{{0.0, 0.0, 0.0}, 1.0}, {{2.0, 0.0, 0.0}, 0.0}}, 1, 2);
    EXPECT_EQ(m_db.EditPline(p, -3, -4), 1);
    Reopen();
    EXPECT_EQ(Read(p)->GetLine(), -3);
    EXPECT_EQ(Read(p)->GetCode(), -4);
    ExpectBound(p, 0.0, -1.0, 2.0, 0.0);
    EXPECT_EQ(m_db.EditPline(p + 1, 9, 9), 0);
    EXPECT_EQ(m_db.EditPline(AddCircle(), 9, 9), 0);
    EXPECT_EQ(Read(p)->GetLine(), -3);
}

TEST_F(Polylines, DeleteNothingOfAnotherKind) {
    const CqHandle p = AddPline({{{0.0, 0.0, 0.0}, 0.0}, {{1.0, 0.0, 0.0}, 0.0}});
    const CqHandle circle = AddCircle();
    EXPECT_EQ(m_db.DeleteVertex(p), 0);
    EXPECT_EQ(m_db.DeleteVertex(circle), 0);
    EXPECT_EQ(m_db.DeletePline(p + 1), 0);
    EXPECT_EQ(m_db.DeletePline(circle), 0);
    EXPECT_EQ(Chain(), (Handles{p, p + 1, p + 2, circle}));
}

TEST_F(Polylines, AreDeletedWithVerticesAndTiesAndTheChainCloses) {
    const CqHandle point = AddPoint(u"P");
    const CqHandle p = AddPline({{{0.0, 0.0, 0.0}, 0.0}, {{1.0, 0.0, 0.0}, 0.0}});
    const CqHandle q = AddPline({{{0.0, 0.0, 0.0}, 0.0}, {{1.0, 0.0, 0.0}, 0.0}});
    m_db.LinkSiPntAndVertex(point, p + 1);
    m_db.LinkSiPntAndVertex(point, q + 2);
    m_db.LinkSiPntAndVertex(point, p + 2);
    EXPECT_EQ(m_db.DeletePline(p), 1);
    EXPECT_EQ(Chain(), (Handles{point, q, q + 1, q + 2}));
    EXPECT_EQ(TiesOf(point), Handles{q + 2});
    EXPECT_EQ(Counts().numPlines, 1);
    EXPECT_EQ(Counts().numVertices, 2);
    EXPECT_EQ(m_db.DeletePline(q), 1);
    EXPECT_EQ(Chain(), Handles{point});
    EXPECT_TRUE(TiesOf(point).empty());
    Reopen();
    EXPECT_EQ(Chain(), Handles{point});
    EXPECT_TRUE(TiesOf(point).empty());
    EXPECT_EQ(Counts().numVertices, 0);
}

TEST_F(Polylines, RefuseNoHandleAndTheHeaderOfTheChain) {
    AddCircle();
    const double point[3] = {};
    for (const CqHandle h : {CqHandle{0}, CqHandle{1}}) {
        EXPECT_EQ(m_db.EditPline(h, 1, 1), 0);
        EXPECT_EQ(m_db.InsertVertex(h, point, 0.0), 0);
        EXPECT_EQ(m_db.MoveVertex(h, point, 0.0), 0);
        EXPECT_EQ(m_db.DeleteVertex(h), 0);
        EXPECT_EQ(m_db.DeletePline(h), 0);
    }
    EXPECT_EQ(m_db.GetNumCadEntities(), 1);
}

TEST_F(Polylines, ThrowForAnEntityThatIsGone) {
    const double point[3] = {};
    const CqHandle gone = AddCircle();
    m_db.DeleteCircle(gone);
    for (const CqHandle h : {gone, CqHandle{9'999'999}, CqHandle{0xFFFFFFFF}}) {
        EXPECT_EQ(CodeOf([&] { return m_db.EditPline(h, 1, 1); }), kStale);
        EXPECT_EQ(CodeOf([&] { return m_db.InsertVertex(h, point, 0.0); }), kStale);
        EXPECT_EQ(CodeOf([&] { return m_db.MoveVertex(h, point, 0.0); }), kStale);
        EXPECT_EQ(CodeOf([&] { return m_db.DeleteVertex(h); }), kStale);
        EXPECT_EQ(CodeOf([&] { return m_db.DeletePline(h); }), kStale);
    }
    EXPECT_EQ(m_db.GetNumCadEntities(), 0);
}

TEST_F(Polylines, AreDeletedInEndlessChainsWithoutEnd) {
    const CqHandle p = AddPline({{{0.0, 0.0, 0.0}, 0.0}, {{1.0, 0.0, 0.0}, 0.0}});
    ChangeTable<CqEntityTable>(u"_EntityData",
                               [&](CqEntityTable& table) { table.SetNext(p + 2, p + 1); });
    EXPECT_EQ(CodeOf([&] { return m_db.DeletePline(p); }), kStale);
    EXPECT_EQ(Counts().numVertices, 0);
}

TEST_F(Polylines, DisappearWithTheBatchTheyWereDrawnIn) {
    const CqHandle circle = AddCircle();
    {
        CqBatch batch(m_db);
        AddPline({{{50.0, 50.0, 0.0}, 1.0}, {{60.0, 50.0, 0.0}, 0.0}});
        m_db.DeleteCircle(circle);
    }
    EXPECT_EQ(Chain(), Handles{circle});
    ExpectExtents(-1.0, -1.0, 1.0, 1.0);
    const CqHandle p = AddPline({{{0.0, 0.0, 0.0}, 0.0}, {{1.0, 0.0, 0.0}, 0.0}});
    EXPECT_EQ(Chain(), (Handles{circle, p, p + 1, p + 2}));
}

TEST_F(Polylines, AreNotDrawnIntoAJobThatIsOnlyRead) {
    const CqHandle p = AddPline({{{0.0, 0.0, 0.0}, 0.5}, {{1.0, 0.0, 0.0}, 0.0}});
    m_db.Close();
    m_db.OpenReadOnly(m_path);
    const double point[3] = {9.0, 9.0, 9.0};
    constexpr std::int32_t kReadOnly = 0x30000004;
    EXPECT_EQ(CodeOf([&] {
                  return AddPline({{{9.0, 9.0, 0.0}, 0.0}, {{8.0, 8.0, 0.0}, 0.0}});
              }),
              kReadOnly);
    EXPECT_EQ(CodeOf([&] { return m_db.MoveVertex(p + 1, point, 0.0); }), kReadOnly);
    EXPECT_EQ(CodeOf([&] { return m_db.InsertVertex(p + 1, point, 0.0); }), kReadOnly);
    EXPECT_EQ(CodeOf([&] { return m_db.DeletePline(p); }), kReadOnly);
    EXPECT_EQ(Chain(), (Handles{p, p + 1, p + 2}));
    EXPECT_EQ(Read(p + 1)->GetBulge(), 0.5);
    EXPECT_EQ(PointOf(p + 1), (std::array{0.0, 0.0, 0.0}));
    CVector min;
    CVector max;
    m_db.GetEntityBound(min, max);
    EXPECT_EQ(max.GetX(), 1.0);
}

}  // namespace
}  // namespace cqsurvey
