#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "cqsurvey/CqBitmapCadEntity.h"
#include "cqsurvey/CqCircleCadEntity.h"
#include "cqsurvey/CqPlineCadEntity.h"
#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/CqTextCadEntity.h"
#include "cqsurvey/CqVertexCadEntity.h"
#include "store/Qrfs.h"
#include "support/Points.h"
#include "support/TempDir.h"
#include "tables/CqEntityTable.h"

namespace cqsurvey {
namespace {

constexpr std::array<double, 3> kOrigin{0, 0, 0};

class EntityStore : public testing::Test {
 protected:
    EntityStore() { m_db.CreateNew(m_folder.Path(u"a.job")); }

    struct Seen {
        CqHandle handle;
        EntType type;
        int color;
        CString layer;
        bool operator==(const Seen&) const = default;
    };

    [[nodiscard]] std::vector<CqHandle> Handles() const {
        std::vector<CqHandle> handles;
        for (const Seen& seen : Walk()) {
            handles.push_back(seen.handle);
        }
        return handles;
    }

    [[nodiscard]] std::vector<Seen> Walk() const {
        std::vector<Seen> all;
        for (CqHandle h = m_db.GetFirstCadEntityHandle(); h != 0;) {
            CqCadEntity* entity = nullptr;
            EXPECT_EQ(m_db.GetNextCadEntity(h, entity), 1);
            all.push_back(
                {entity->GetHandle(), entity->GetType(), entity->GetColor(), entity->GetLayer()});
            CqSurveyDB::DeleteCqCadEntityObject(entity);
            EXPECT_EQ(entity, nullptr);
        }
        return all;
    }

    CqHandle AddPolyline(int vertices) {
        CqCadEntityList* list = m_db.StartPline(0, 0);
        for (int i = 0; i < vertices; ++i) {
            const std::array<double, 3> coords{1.0 * i, 2.0 * i, 0};
            m_db.AddVertex(list, coords.data(), 0.0);
        }
        return m_db.EndPline(list);
    }

    TempDir m_folder;
    CqSurveyDB m_db;
};

TEST_F(EntityStore, ANewJobHasNoEntities) {
    EXPECT_EQ(m_db.GetNumCadEntities(), 0);
    EXPECT_EQ(m_db.GetFirstCadEntityHandle(), 0U);
}

TEST_F(EntityStore, AClosedJobHasNoFirstEntity) {
    m_db.AddCircle(kOrigin.data(), 1, 0, 0);
    m_db.Close();
    EXPECT_EQ(m_db.GetFirstCadEntityHandle(), 0U);
}

TEST_F(EntityStore, IterationFollowsTheOrderOfAdding) {
    const CqHandle a = m_db.AddCircle(kOrigin.data(), 1, 0, 0);
    const CqHandle b = m_db.AddCircle(kOrigin.data(), 2, 0, 0);
    const CqHandle c = m_db.AddCircle(kOrigin.data(), 3, 0, 0);
    EXPECT_EQ(Handles(), (std::vector<CqHandle>{a, b, c}));
    EXPECT_EQ(m_db.DeleteCircle(b), 1);
    EXPECT_EQ(Handles(), (std::vector<CqHandle>{a, c}));
    CqHandle h = a;
    CqCadEntity* entity = nullptr;
    m_db.GetNextCadEntity(h, entity);
    EXPECT_EQ(h, c);
    CqSurveyDB::DeleteCqCadEntityObject(entity);
}

TEST_F(EntityStore, DeletingTheOnlyEntityEmptiesTheChain) {
    const CqHandle a = m_db.AddCircle(kOrigin.data(), 1, 0, 0);
    m_db.DeleteCircle(a);
    EXPECT_EQ(m_db.GetFirstCadEntityHandle(), 0U);
    EXPECT_EQ(m_db.GetNumCadEntities(), 0);
    const CqHandle b = m_db.AddCircle(kOrigin.data(), 1, 0, 0);
    EXPECT_EQ(Handles(), (std::vector<CqHandle>{b}));
}

TEST_F(EntityStore, TheHeaderAndUnknownHandlesAreNoEntities) {
    m_db.AddCircle(kOrigin.data(), 1, 0, 0);
    for (CqHandle handle : {0U, 1U, 99U}) {
        CqHandle h = handle;
        CqCadEntity* entity = nullptr;
        EXPECT_EQ(m_db.GetNextCadEntity(h, entity), 0);
        EXPECT_EQ(h, handle);
        EXPECT_EQ(entity, nullptr);
    }
}

TEST_F(EntityStore, APointerThatIsNotEmptyIsRefused) {
    const CqHandle a = m_db.AddCircle(kOrigin.data(), 1, 0, 0);
    CqHandle h = a;
    CqCadEntity* entity = nullptr;
    ASSERT_EQ(m_db.GetNextCadEntity(h, entity), 1);
    CqCadEntity* kept = entity;
    h = a;
    EXPECT_EQ(m_db.GetNextCadEntity(h, entity), 0);
    EXPECT_EQ(entity, kept);
    EXPECT_EQ(h, a);
    CqSurveyDB::DeleteCqCadEntityObject(entity);
    CqSurveyDB::DeleteCqCadEntityObject(entity);
}

TEST_F(EntityStore, ColoursOfEntitiesHaveARange) {
    const CqHandle a = m_db.AddCircle(kOrigin.data(), 1, 0, 0);
    EXPECT_EQ(m_db.EditCadEntityColor(a, 256), 1);
    EXPECT_EQ(m_db.EditCadEntityColor(a, -256), 1);
    EXPECT_EQ(m_db.EditCadEntityColor(a, 257), 0);
    EXPECT_EQ(m_db.EditCadEntityColor(a, -257), 0);
    EXPECT_EQ(Walk().front().color, -256);
    EXPECT_EQ(m_db.EditCadEntityColor(0, 1), 0);
    EXPECT_EQ(m_db.EditCadEntityColor(1, 1), 0);
    EXPECT_EQ(CodeThrownBy([&] { m_db.EditCadEntityColor(99, 1); }), error::kNoRecord);
}

TEST_F(EntityStore, APolylinesVerticesFollowItToAnotherLayerAndColour) {
    m_db.AddLayer(u"A", 3, 0);
    const CqHandle first = AddPolyline(2);
    const CqHandle circle = m_db.AddCircle(kOrigin.data(), 1, 0, 0);
    EXPECT_EQ(m_db.EditCadEntityLayer(first, u"A"), 1);
    EXPECT_EQ(m_db.EditCadEntityLayer(first, u"B"), 0);
    EXPECT_EQ(m_db.EditCadEntityLayer(0, u"A"), 0);
    EXPECT_EQ(m_db.EditCadEntityColor(first, 7), 1);
    EXPECT_EQ(Walk(), (std::vector<Seen>{{first, EntPline, 7, u"A"},
                                         {first + 1, EntVertex, 7, u"A"},
                                         {first + 2, EntVertex, 7, u"A"},
                                         {circle, EntCircle, 256, u"0"}}));
}

TEST_F(EntityStore, TheEditStopsAtTheFirstRecordThatIsNoVertex) {
    m_db.AddLayer(u"A", 3, 0);
    const CqHandle pline = AddPolyline(2);
    m_db.AddCircle(kOrigin.data(), 1, 0, 0);
    // The new vertex is third in the polyline, but its record stands behind the circle's.
    m_db.InsertVertex(pline + 2, kOrigin.data(), 0.0);
    const CqHandle inserted = pline + 4;
    m_db.EditCadEntityLayer(pline, u"A");
    const std::vector<Seen> all = Walk();
    ASSERT_EQ(all.size(), 5U);
    EXPECT_EQ(all[2].layer, u"A");
    EXPECT_EQ(all[3].handle, inserted);
    EXPECT_EQ(all[3].layer, u"0") << "records are walked in their order, not along the chain";
}

TEST_F(EntityStore, TheEditTakesAnotherPolylinesVertexThatFollowsInRecordOrder) {
    const CqHandle first = AddPolyline(2);
    const CqHandle second = AddPolyline(2);
    // A vertex of the first, whose record stands behind those of the second.
    m_db.InsertVertex(first + 2, kOrigin.data(), 0.0);
    m_db.DeleteVertex(second + 1);
    EXPECT_EQ(m_db.EditCadEntityColor(second, 7), 1);
    EXPECT_EQ(Walk(), (std::vector<Seen>{{first, EntPline, 256, u"0"},
                                         {first + 1, EntVertex, 256, u"0"},
                                         {first + 2, EntVertex, 256, u"0"},
                                         {second + 3, EntVertex, 7, u"0"},
                                         {second, EntPline, 7, u"0"},
                                         {second + 2, EntVertex, 7, u"0"}}));
}

TEST_F(EntityStore, AnEditOfAnEntityThatIsGoneThrowsAndOfAnUnknownLayerWritesNothing) {
    const CqHandle circle = m_db.AddCircle(kOrigin.data(), 1, 0, 0);
    m_db.DeleteCircle(circle);
    EXPECT_EQ(CodeThrownBy([&] { m_db.EditCadEntityLayer(circle, u"0"); }), error::kNoRecord);
    EXPECT_EQ(m_db.EditCadEntityLayer(circle, u"B"), 0) << "the layer is looked for first";
    EXPECT_EQ(m_db.EditCadEntityColor(circle, 257), 0);
    EXPECT_EQ(m_db.EditCadEntityLayer(1, u"0"), 0);
    EXPECT_EQ(m_db.GetNumLayers(), 1);
}

TEST_F(EntityStore, AVertexAloneIsEditedAlone) {
    const CqHandle pline = AddPolyline(3);
    EXPECT_EQ(m_db.EditCadEntityColor(pline + 1, 5), 1);
    const std::vector<Seen> all = Walk();
    EXPECT_EQ(all[0].color, 256);
    EXPECT_EQ(all[1].color, 5);
    EXPECT_EQ(all[2].color, 256);
}

TEST_F(EntityStore, SeveralWalksGoOnSideBySide) {
    AddPolyline(2);
    CqHandle one = m_db.GetFirstCadEntityHandle();
    CqHandle two = one;
    CqCadEntity* entity = nullptr;
    m_db.GetNextCadEntity(one, entity);
    CqSurveyDB::DeleteCqCadEntityObject(entity);
    m_db.GetNextCadEntity(two, entity);
    EXPECT_EQ(entity->GetType(), EntPline);
    CqSurveyDB::DeleteCqCadEntityObject(entity);
    EXPECT_EQ(one, two);
}

TEST_F(EntityStore, AWalkGoesOnThroughEditsOfOtherEntities) {
    const CqHandle a = m_db.AddCircle(kOrigin.data(), 1, 0, 0);
    const CqHandle b = m_db.AddCircle(kOrigin.data(), 2, 0, 0);
    const CqHandle c = m_db.AddCircle(kOrigin.data(), 3, 0, 0);
    CqHandle h = a;
    CqCadEntity* entity = nullptr;
    ASSERT_EQ(m_db.GetNextCadEntity(h, entity), 1);
    CqSurveyDB::DeleteCqCadEntityObject(entity);
    ASSERT_EQ(h, b);
    m_db.DeleteCircle(a);
    m_db.DeleteCircle(c);
    const CqHandle d = m_db.AddCircle(kOrigin.data(), 4, 0, 0);
    ASSERT_EQ(m_db.GetNextCadEntity(h, entity), 1);
    EXPECT_EQ(entity->GetHandle(), b);
    EXPECT_EQ(h, d);
    CqSurveyDB::DeleteCqCadEntityObject(entity);
}

TEST_F(EntityStore, AnObjectIsASnapshot) {
    CqHandle h = m_db.AddCircle(kOrigin.data(), 1, 0, 0);
    const CqHandle circle = h;
    CqCadEntity* entity = nullptr;
    ASSERT_EQ(m_db.GetNextCadEntity(h, entity), 1);
    entity->SetColor(9);
    entity->SetLayer(u"A");
    entity->SetRadius(50.0);
    CqSurveyDB::DeleteCqCadEntityObject(entity);
    h = circle;
    ASSERT_EQ(m_db.GetNextCadEntity(h, entity), 1);
    EXPECT_EQ(entity->GetRadius(), 1.0);
    EXPECT_EQ(Walk(), (std::vector<Seen>{{circle, EntCircle, 256, u"0"}}));
    m_db.EditCircle(circle, kOrigin.data(), 7, 0, 0);
    EXPECT_EQ(entity->GetRadius(), 1.0);
    CqSurveyDB::DeleteCqCadEntityObject(entity);
}

TEST_F(EntityStore, ACopyOfAnObjectHasAllThatWasRead) {
    const auto copied = [&](CqHandle h, auto empty, auto&& expect) {
        using Kind = decltype(empty);
        CqCadEntity* entity = nullptr;
        const CqHandle handle = h;
        ASSERT_EQ(m_db.GetNextCadEntity(h, entity), 1);
        const auto* read = dynamic_cast<const Kind*>(entity);
        ASSERT_NE(read, nullptr);
        const Kind copy(*read);
        empty = *read;
        CqSurveyDB::DeleteCqCadEntityObject(entity);
        for (const CqCadEntity* each :
             {static_cast<const CqCadEntity*>(&copy), static_cast<const CqCadEntity*>(&empty)}) {
            EXPECT_EQ(each->GetHandle(), handle);
            EXPECT_EQ(each->GetLayer(), u"0");
            EXPECT_EQ(each->GetColor(), 256);
            expect(*each);
        }
    };
    CqCadEntityList* list = m_db.StartPline(11, 12);
    for (int i = 0; i < 3; ++i) {
        m_db.AddVertex(list, std::array<double, 3>{1.0 * i, 2.0 * i, 0}.data(), 0.0);
    }
    const CqHandle pline = m_db.EndPline(list);
    const CqHandle point = m_db.GetCadEntityHandleByCoordRecHandle(AddPoint(m_db, u"P1", 1, 2));
    m_db.LinkSiPntAndVertex(point, pline + 2);
    copied(pline, CqPlineCadEntity(), [&](const CqCadEntity& each) {
        EXPECT_EQ(each.GetLine(), 11);
        EXPECT_EQ(each.GetCode(), 12);
        CVector min;
        CVector max;
        each.GetBound(min, max);
        EXPECT_EQ(min.GetX(), 0.0);
        EXPECT_EQ(max.GetY(), 4.0);
    });
    copied(pline + 2, CqVertexCadEntity(), [&](const CqCadEntity& each) {
        EXPECT_EQ(each.GetPlineHandle(), pline);
        EXPECT_EQ(each.GetPrevVertexHandle(), pline + 1);
        EXPECT_EQ(each.GetNextVertexHandle(), pline + 3);
        EXPECT_EQ(each.GetMcadSiPointHandle(), point);
    });
    copied(m_db.AddText(kOrigin.data(), u"text", 1, 2, u"style", 3, 4, 5, 6, 7, 8),
           CqTextCadEntity(), [&](const CqCadEntity& each) {
               EXPECT_EQ(each.GetText(), u"text");
               EXPECT_EQ(each.GetAlign(), 0x20001);
               EXPECT_EQ(each.GetOptionStyle(), 6U);
               EXPECT_EQ(each.GetInterval(), 7);
               EXPECT_EQ(each.GetThickness(), 8);
           });
    copied(m_db.AddCircle(kOrigin.data(), 1, 21, 22), CqCircleCadEntity(),
           [&](const CqCadEntity& each) {
               EXPECT_EQ(each.GetRadius(), 1.0);
               EXPECT_EQ(each.GetLine(), 21);
               EXPECT_EQ(each.GetCode(), 22);
           });
    copied(m_db.AddBitmap(kOrigin.data(), u"north", CVector(4, 3)), CqBitmapCadEntity(),
           [&](const CqCadEntity& each) {
               EXPECT_EQ(each.GetSize().GetX(), 4.0);
               EXPECT_EQ(each.GetResName(), u"north");
           });
}

TEST_F(EntityStore, ABitmapReadsBackWithoutItsHeight) {
    m_db.AddBitmap(kOrigin.data(), u"north", CVector(4, 3));
    CqHandle h = m_db.GetFirstCadEntityHandle();
    CqCadEntity* entity = nullptr;
    ASSERT_EQ(m_db.GetNextCadEntity(h, entity), 1);
    EXPECT_EQ(entity->GetSize().GetX(), 4.0);
    EXPECT_EQ(entity->GetSize().GetY(), 0.0);
    EXPECT_EQ(entity->GetResName(), u"north");
    CqSurveyDB::DeleteCqCadEntityObject(entity);
}

TEST_F(EntityStore, TheEndsOfAPolylineSayWhatStandsBesideThem) {
    const CqHandle pline = AddPolyline(2);
    m_db.AddCircle(kOrigin.data(), 1, 0, 0);
    CqHandle h = pline + 1;
    CqCadEntity* entity = nullptr;
    m_db.GetNextCadEntity(h, entity);
    EXPECT_EQ(entity->GetPrevVertexHandle(), pline) << "the polyline's own handle, as it is";
    EXPECT_EQ(entity->GetNextVertexHandle(), pline + 2);
    EXPECT_EQ(entity->GetPlineHandle(), pline);
    CqSurveyDB::DeleteCqCadEntityObject(entity);
    m_db.GetNextCadEntity(h, entity);
    EXPECT_EQ(entity->GetNextVertexHandle(), 0U) << "the circle behind is no vertex";
    CqSurveyDB::DeleteCqCadEntityObject(entity);
}

TEST_F(EntityStore, ARecordOfUnknownTypeThrows) {
    const CqHandle circle = m_db.AddCircle(kOrigin.data(), 1, 0, 0);
    m_db.Close();
    for (const std::uint16_t type : {std::uint16_t{3}, std::uint16_t{7}, std::uint16_t{0xFFFF}}) {
        const CString mount = u"RAW";
        ASSERT_NE(QrfsMount(m_folder.Path(u"a.job"), mount), 0);
        CqEntityTable table;
        table.Open(mount + u":/_EntityData");
        table.GoTo(circle);
        table.Set<"ObjectType">(type);
        table.Store();
        table.Close();
        ASSERT_NE(QrfsUnmount(mount), 0);
        m_db.Open(m_folder.Path(u"a.job"));
        CqHandle h = circle;
        CqCadEntity* entity = nullptr;
        EXPECT_EQ(CodeThrownBy([&] { m_db.GetNextCadEntity(h, entity); }), error::kUnknown);
        EXPECT_EQ(entity, nullptr);
        m_db.Close();
    }
}

TEST_F(EntityStore, TheChainIsTheSameAfterReopening) {
    const CqHandle a = m_db.AddCircle(kOrigin.data(), 1, 0, 0);
    const CqHandle pline = AddPolyline(3);
    m_db.DeleteVertex(pline + 2);
    const std::vector<CqHandle> before = Handles();
    EXPECT_EQ(before, (std::vector<CqHandle>{a, pline, pline + 1, pline + 3}));
    m_db.Close();
    m_db.Open(m_folder.Path(u"a.job"));
    EXPECT_EQ(Handles(), before);
}

}  // namespace
}  // namespace cqsurvey
