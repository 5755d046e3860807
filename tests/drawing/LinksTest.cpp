#include <gtest/gtest.h>

#include "drawing/DrawingFixture.h"
#include "index/LinkIndex.h"
#include "tables/CqLinkTable.h"

namespace cqsurvey {
namespace {

class Links : public DrawingFixture {
 protected:
    void SetUp() override {
        DrawingFixture::SetUp();
        m_point = AddPoint(u"P1");
        m_other = AddPoint(u"P2");
        m_pline =
            AddPline({{{0.0, 0.0, 0.0}, 0.0}, {{1.0, 0.0, 0.0}, 0.0}, {{2.0, 0.0, 0.0}, 0.0}});
        m_vertex = m_pline + 1;
    }

    [[nodiscard]] CqHandle PointAt(CqHandle vertex) const {
        return Read(vertex)->GetMcadSiPointHandle();
    }

    CqHandle m_point = 0;
    CqHandle m_other = 0;
    CqHandle m_pline = 0;
    CqHandle m_vertex = 0;
};

TEST_F(Links, AreSeenFromBothSides) {
    EXPECT_EQ(m_db.LinkSiPntAndVertex(m_point, m_vertex), 1);
    EXPECT_EQ(PointAt(m_vertex), m_point);
    EXPECT_EQ(TiesOf(m_point), Handles{m_vertex});
    EXPECT_EQ(PointAt(m_vertex + 1), 0U);
    EXPECT_TRUE(TiesOf(m_other).empty());
    Reopen();
    EXPECT_EQ(PointAt(m_vertex), m_point);
    EXPECT_EQ(TiesOf(m_point), Handles{m_vertex});
}

TEST_F(Links, HaveNoVertexAtTheIndexOfTheirCount) {
    m_db.LinkSiPntAndVertex(m_point, m_vertex);
    const auto point = Read(m_point);
    ASSERT_EQ(point->GetMcadNumVertex(), 1);
    EXPECT_EQ(point->GetMcadVertexHandle(0), m_vertex);
    EXPECT_EQ(point->GetMcadVertexHandle(1), 0U);
    EXPECT_EQ(point->GetMcadVertexHandle(2), 0U);
    EXPECT_EQ(point->GetMcadVertexHandle(-1), 0U);
}

TEST_F(Links, TieNothingButAVertexToNothingButASurveyPoint) {
    const CqHandle text = AddText();
    EXPECT_EQ(m_db.LinkSiPntAndVertex(m_point, text), 0);
    EXPECT_EQ(m_db.LinkSiPntAndVertex(m_point, m_pline), 0);
    EXPECT_EQ(m_db.LinkSiPntAndVertex(m_point, m_other), 0);
    EXPECT_EQ(m_db.LinkSiPntAndVertex(m_vertex + 1, m_vertex), 0);
    EXPECT_EQ(m_db.LinkSiPntAndVertex(m_pline, m_vertex), 0);
    EXPECT_EQ(m_db.LinkSiPntAndVertex(text, m_vertex), 0);
    EXPECT_EQ(PointAt(m_vertex), 0U);
    EXPECT_TRUE(TiesOf(m_point).empty());
}

TEST_F(Links, RefuseNoHandleAndTheHeaderOfTheChain) {
    for (const CqHandle h : {CqHandle{0}, CqHandle{1}}) {
        EXPECT_EQ(m_db.LinkSiPntAndVertex(h, m_vertex), 0);
        EXPECT_EQ(m_db.LinkSiPntAndVertex(m_point, h), 0);
        EXPECT_EQ(m_db.UnlinkSiPntAndVertex(m_point, h), 0);
    }
    EXPECT_EQ(PointAt(m_vertex), 0U);
}

TEST_F(Links, ThrowForAnEntityThatIsGone) {
    const CqHandle gone = AddCircle();
    m_db.DeleteCircle(gone);
    EXPECT_EQ(CodeOf([&] { return m_db.LinkSiPntAndVertex(gone, m_vertex); }), kStale);
    EXPECT_EQ(CodeOf([&] { return m_db.LinkSiPntAndVertex(m_point, gone); }), kStale);
    EXPECT_EQ(m_db.UnlinkSiPntAndVertex(0, gone), 0) << "no vertex that is gone is tied";
}

TEST_F(Links, AskForTheVertexThenForThePointThenForATie) {
    const CqHandle text = AddText();
    const CqHandle gone = AddCircle();
    m_db.DeleteCircle(gone);
    EXPECT_EQ(m_db.LinkSiPntAndVertex(gone, text), 0);
    EXPECT_EQ(CodeOf([&] { return m_db.LinkSiPntAndVertex(text, gone); }), kStale);
    m_db.LinkSiPntAndVertex(m_point, m_vertex);
    EXPECT_EQ(CodeOf([&] { return m_db.LinkSiPntAndVertex(gone, m_vertex); }), kStale);
    EXPECT_EQ(m_db.LinkSiPntAndVertex(text, m_vertex), 0);
}

TEST_F(Links, DoNotReplaceATie) {
    EXPECT_EQ(m_db.LinkSiPntAndVertex(m_point, m_vertex), 1);
    EXPECT_EQ(m_db.LinkSiPntAndVertex(m_other, m_vertex), 0);
    EXPECT_EQ(m_db.LinkSiPntAndVertex(m_point, m_vertex), 0);
    EXPECT_EQ(TiesOf(m_point), Handles{m_vertex});
    EXPECT_EQ(m_db.UnlinkSiPntAndVertex(0, m_vertex), 1);
    EXPECT_EQ(m_db.LinkSiPntAndVertex(m_other, m_vertex), 1);
    EXPECT_EQ(PointAt(m_vertex), m_other);
    EXPECT_TRUE(TiesOf(m_point).empty());
}

TEST_F(Links, LetAPointHaveAnyNumberOfVertices) {
    EXPECT_EQ(m_db.LinkSiPntAndVertex(m_point, m_vertex + 2), 1);
    EXPECT_EQ(m_db.LinkSiPntAndVertex(m_point, m_vertex), 1);
    EXPECT_EQ(TiesOf(m_point), (Handles{m_vertex + 2, m_vertex}));
    EXPECT_EQ(m_db.UnlinkSiPntAndVertex(0, m_vertex + 2), 1);
    EXPECT_EQ(TiesOf(m_point), Handles{m_vertex});
    EXPECT_EQ(m_db.UnlinkSiPntAndVertex(m_point, m_vertex), 1);
    EXPECT_TRUE(TiesOf(m_point).empty());
    EXPECT_EQ(m_db.UnlinkSiPntAndVertex(0, m_vertex), 0);
}

TEST_F(Links, AreForgottenByTheVertexWhenTheWrongPointIsUnlinkedAndComeBackOnReopening) {
    m_db.LinkSiPntAndVertex(m_point, m_vertex);
    EXPECT_EQ(m_db.UnlinkSiPntAndVertex(m_other, m_vertex), 0);
    EXPECT_EQ(PointAt(m_vertex), 0U);
    EXPECT_EQ(TiesOf(m_point), Handles{m_vertex}) << "the point's side stays";
    EXPECT_EQ(m_db.UnlinkSiPntAndVertex(m_point, m_vertex), 0);
    Reopen();
    EXPECT_EQ(PointAt(m_vertex), m_point);
    EXPECT_EQ(TiesOf(m_point), Handles{m_vertex});
    EXPECT_EQ(m_db.UnlinkSiPntAndVertex(m_point, m_vertex), 1);
    Reopen();
    EXPECT_EQ(PointAt(m_vertex), 0U);
}

TEST_F(Links, ForgottenByTheVertexLetItBeTiedAgain) {
    m_db.LinkSiPntAndVertex(m_point, m_vertex);
    m_db.UnlinkSiPntAndVertex(m_other, m_vertex);
    EXPECT_EQ(m_db.LinkSiPntAndVertex(m_other, m_vertex), 1);
    EXPECT_EQ(PointAt(m_vertex), m_other);
    EXPECT_EQ(TiesOf(m_point), Handles{m_vertex});
    EXPECT_EQ(TiesOf(m_other), Handles{m_vertex});
    Reopen();
    EXPECT_EQ(PointAt(m_vertex), m_other) << "the last in record order is the vertex's";
}

TEST_F(Links, OutliveADeletedCoordinateRecord) {
    const CqHandle record = m_db.GetCoordRecHandleByCadEntityHandle(m_point);
    m_db.LinkSiPntAndVertex(m_point, m_vertex);
    m_db.LinkSiPntAndVertex(m_point, m_vertex + 1);
    EXPECT_EQ(m_db.DelCoordRec(record), 1);
    EXPECT_EQ(PointAt(m_vertex), 0U);
    EXPECT_EQ(PointAt(m_vertex + 1), 0U);
    Reopen();
    EXPECT_EQ(PointAt(m_vertex), m_point) << "the handle of an entity that is gone";
    EXPECT_EQ(PointAt(m_vertex + 1), m_point);
    EXPECT_EQ(Read(m_point), nullptr);
    EXPECT_EQ(m_db.UnlinkSiPntAndVertex(0, m_vertex), 1);
    EXPECT_EQ(m_db.DeleteVertex(m_vertex + 1), 1);
    ChangeTable<CqLinkTable>(u"_PointToVertexLink",
                             [](CqLinkTable& table) { EXPECT_EQ(table.GetRecordCount(), 0); });
}

TEST_F(Links, AreForgottenForAPointThatNeverWas) {
    for (const CqHandle never : {CqHandle{1}, CqHandle{9'999'999}}) {
        m_db.LinkSiPntAndVertex(m_point, m_vertex);
        EXPECT_EQ(m_db.UnlinkSiPntAndVertex(never, m_vertex), 0) << "the point is only compared";
        EXPECT_EQ(PointAt(m_vertex), 0U);
    }
    EXPECT_EQ(TiesOf(m_point), (Handles{m_vertex, m_vertex}));
}

TEST_F(Links, GoWithACoordinateRecordThatHasTheNumberOfItsEntity) {
    // The two points exchange their entities: coordinate record 2 is shown by entity 2 then.
    ASSERT_EQ(m_point, 2U);
    ASSERT_EQ(m_other, 3U);
    ChangeTable<CqRecordTable<PointLayout>>(u"_PointData", [](auto& points) {
        for (const CqHandle point : {CqHandle{1}, CqHandle{2}}) {
            points.GoTo(point);
            points.template Set<"EntityIndex">(4 - point);
            points.Store();
        }
    });
    ChangeTable<CqEntityTable>(u"_EntityData", [](CqEntityTable& entities) {
        for (const CqHandle entity : {CqHandle{2}, CqHandle{3}}) {
            entities.GoTo(entity);
            entities.Set<"ObjectIndex">(4 - entity);
            entities.Store();
        }
    });
    m_db.LinkSiPntAndVertex(m_point, m_vertex);
    m_db.UnlinkSiPntAndVertex(m_other, m_vertex);
    m_db.LinkSiPntAndVertex(m_point, m_vertex);
    m_db.LinkSiPntAndVertex(m_point, m_vertex + 1);
    EXPECT_EQ(TiesOf(m_point), (Handles{m_vertex, m_vertex, m_vertex + 1}));
    EXPECT_EQ(m_db.DelCoordRec(m_point), 1);
    ChangeTable<CqLinkTable>(u"_PointToVertexLink", [this](CqLinkTable& table) {
        LinkIndex index(table);
        index.Build();
        EXPECT_EQ(index.ListByPoint(m_point), Handles{1})
            << "the one that its vertex had forgotten";
        EXPECT_EQ(table.GetRecordCount(), 1);
    });
    EXPECT_EQ(PointAt(m_vertex), m_point);
    EXPECT_EQ(PointAt(m_vertex + 1), 0U);
}

TEST_F(Links, ForgottenByADeletedVertexStayInTheTable) {
    m_db.LinkSiPntAndVertex(m_point, m_vertex);
    m_db.UnlinkSiPntAndVertex(m_other, m_vertex);
    EXPECT_EQ(m_db.DeleteVertex(m_vertex), 1);
    EXPECT_EQ(TiesOf(m_point), Handles{m_vertex});
    Reopen();
    EXPECT_EQ(TiesOf(m_point), Handles{m_vertex});
    EXPECT_EQ(m_db.UnlinkSiPntAndVertex(m_point, m_vertex), 1);
    EXPECT_TRUE(TiesOf(m_point).empty());
}

TEST_F(Links, FindTheEntityOfAPoint) {
    EXPECT_EQ(m_db.GetCadEntityHandleByPtName(u"P1"), m_point);
    EXPECT_EQ(m_db.GetCadEntityHandleByPtName(u"P2"), m_other);
    EXPECT_EQ(m_db.GetCadEntityHandleByPtName(u"p1"), 0U);
    EXPECT_EQ(m_db.GetCadEntityHandleByPtName(u"P3"), 0U);
    EXPECT_EQ(m_db.GetCadEntityHandleByPtName(u""), 0U);
    AddPoint(u"");
    EXPECT_EQ(m_db.GetCadEntityHandleByPtName(u""), 0U);
    const CqHandle record = m_db.GetCoordRecHandleByPtName(u"P2");
    EXPECT_EQ(m_db.GetCadEntityHandleByCoordRecHandle(record), m_other);
    EXPECT_EQ(m_db.GetCadEntityHandleByCoordRecHandle(0), 0U);
    m_db.DelCoordRec(record);
    EXPECT_EQ(CodeOf([&] { return m_db.GetCadEntityHandleByCoordRecHandle(record); }), kStale);
}

TEST_F(Links, ShowThePointAsItIsNow) {
    EXPECT_NE(m_db.EditCoordRec(m_db.GetCoordRecHandleByPtName(u"P1"), u"New",
                                PointOf(m_point).data(), 77),
              0);
    const auto point = Read(m_point);
    EXPECT_EQ(point->GetName(), u"New");
    EXPECT_EQ(point->GetCode(), 77);
}

TEST_F(Links, StayInAJobThatIsOnlyRead) {
    m_db.LinkSiPntAndVertex(m_point, m_vertex);
    m_db.Close();
    m_db.OpenReadOnly(m_path);
    constexpr std::int32_t kReadOnly = 0x30000004;
    EXPECT_EQ(CodeOf([&] { return m_db.LinkSiPntAndVertex(m_point, m_vertex + 1); }), kReadOnly);
    EXPECT_EQ(CodeOf([&] { return m_db.UnlinkSiPntAndVertex(0, m_vertex); }), kReadOnly);
    EXPECT_EQ(PointAt(m_vertex), m_point);
    EXPECT_EQ(PointAt(m_vertex + 1), 0U);
    EXPECT_EQ(TiesOf(m_point), Handles{m_vertex});
}

}  // namespace
}  // namespace cqsurvey
