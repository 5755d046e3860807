#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "cqsurvey/CqSurveyDB.h"
#include "storage/CqEntityTable.h"
#include "storage/Qrfs.h"
#include "support/Points.h"
#include "support/TempDir.h"

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
