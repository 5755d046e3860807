#include "cqsurvey/Ranges.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <ranges>
#include <vector>

#include "cqsurvey/CqSurveyException.h"
#include "cqsurvey/Text.h"
#include "support/TempDir.h"

namespace cqsurvey {
namespace {

using PointIterator = HandleRange<CqPointStep>::Iterator;
using EntityIterator = HandleRange<CqEntityStep>::Iterator;
static_assert(std::input_iterator<PointIterator>);
static_assert(std::input_iterator<EntityIterator>);
static_assert(std::ranges::input_range<HandleRange<CqPointStep>>);
static_assert(std::ranges::view<HandleRange<CqEntityStep>>);

class Ranges : public testing::Test {
 protected:
    Ranges() { m_db.CreateNew(m_folder.Path(u"a.job")); }

    CqHandle AddPoint(const CString& name) {
        const std::array<double, 3> coords{1, 2, 3};
        return m_db.AddCoordRec(coords.data(), name, 7, static_cast<SurveyCoordType>(1), 0);
    }
    CqHandle AddCircle(double radius) {
        const std::array<double, 3> coords{0, 0, 0};
        return m_db.AddCircle(coords.data(), radius, 0, 0);
    }
    CqHandle AddPolyline(int vertices) {
        CqCadEntityList* list = m_db.StartPline(0, 0);
        for (int i = 0; i < vertices; ++i) {
            const std::array<double, 3> coords{1.0 * i, 0, 0};
            m_db.AddVertex(list, coords.data(), 0.0);
        }
        return m_db.EndPline(list);
    }
    [[nodiscard]] std::vector<CqHandle> Walk() const {
        std::vector<CqHandle> handles;
        for (const CqCadEntityPtr& entity : Entities(m_db)) {
            handles.push_back(entity->GetHandle());
        }
        return handles;
    }

    /// Closes the job, changes the file behind the library's back and opens it again.
    void Damage(const char* sql) {
        m_db.Close();
        sqlite3* file = nullptr;
        ASSERT_EQ(sqlite3_open(m_folder.Utf8("a.job").c_str(), &file), SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(file, sql, nullptr, nullptr, nullptr), SQLITE_OK)
            << sqlite3_errmsg(file);
        sqlite3_close(file);
        m_db.Open(m_folder.Path(u"a.job"));
    }

    TempDir m_folder;
    CqSurveyDB m_db;
};

TEST_F(Ranges, OfAnEmptyJobAreEmpty) {
    EXPECT_TRUE(Points(m_db).begin() == Points(m_db).end());
    EXPECT_TRUE(Entities(m_db).begin() == Entities(m_db).end());
}

TEST_F(Ranges, GiveEveryPointOnceInRecordOrder) {
    const std::vector<CqHandle> added{AddPoint(u"B"), AddPoint(u""), AddPoint(u"A")};
    std::vector<CqHandle> handles;
    CStringList names;
    for (const auto& [handle, record] : Points(m_db)) {
        handles.push_back(handle);
        names.push_back(record.GetPtName());
    }
    EXPECT_EQ(handles, added);
    EXPECT_EQ(names, (CStringList{u"B", u"", u"A"}));
}

TEST_F(Ranges, GiveEveryEntityInDrawingOrder) {
    const CqHandle point = AddPoint(u"A");
    const CqHandle entity = m_db.GetCadEntityHandleByCoordRecHandle(point);
    const CqHandle line = AddPolyline(2);
    const CqHandle circle = AddCircle(1.0);
    m_db.InsertVertex(line, std::array<double, 3>{5, 5, 5}.data(), 0.0);
    EXPECT_EQ(Walk(),
              (std::vector<CqHandle>{entity, line, circle + 1, line + 1, line + 2, circle}));
}

TEST_F(Ranges, WorkWithTheStandardAlgorithms) {
    for (int i = 1; i <= 5; ++i) {
        AddCircle(i);
    }
    auto entities = Entities(m_db);
    EXPECT_EQ(std::ranges::distance(entities), 5);
    EXPECT_EQ(std::ranges::count_if(entities, [](const auto& e) { return e->GetRadius() > 2.5; }),
              3);
    const auto found = std::ranges::find(
        entities, 4.0, [](const CqCadEntityPtr& entity) { return entity->GetRadius(); });
    ASSERT_FALSE(found == entities.end());
    EXPECT_EQ((*found)->GetRadius(), 4.0);
}

TEST_F(Ranges, LetAnEntityBeKept) {
    AddCircle(1.0);
    AddCircle(2.0);
    std::vector<CqCadEntityPtr> kept;
    for (CqCadEntityPtr& entity : Entities(m_db)) {
        kept.push_back(std::move(entity));
    }
    m_db.Close();
    ASSERT_EQ(kept.size(), 2U);
    EXPECT_EQ(kept[0]->GetRadius(), 1.0);
    EXPECT_EQ(kept[1]->GetRadius(), 2.0);
}

TEST_F(Ranges, WalksMayBeInterleaved) {
    AddCircle(1.0);
    AddCircle(2.0);
    int pairs = 0;
    for (const CqCadEntityPtr& a : Entities(m_db)) {
        for (const CqCadEntityPtr& b : Entities(m_db)) {
            pairs += a->GetRadius() < b->GetRadius() ? 1 : 0;
        }
    }
    EXPECT_EQ(pairs, 1);
}

TEST_F(Ranges, GoOnWhenTheCurrentOneIsDeleted) {
    for (const char16_t* name : {u"A", u"B", u"C"}) {
        AddPoint(name);
    }
    int deleted = 0;
    for (const auto& [handle, record] : Points(m_db)) {
        deleted += m_db.DelCoordRec(handle);
    }
    EXPECT_EQ(deleted, 3);
    EXPECT_EQ(m_db.GetNumCoordRecs(), 0);
}

TEST_F(Ranges, EndWhenTheNextOneIsDeleted) {
    AddCircle(1.0);
    const CqHandle second = AddCircle(2.0);
    AddCircle(3.0);
    int seen = 0;
    for (const CqCadEntityPtr& entity : Entities(m_db)) {
        seen += entity != nullptr ? 1 : 0;
        m_db.DeleteCircle(second);
        if (seen == 1) {
            ASSERT_EQ(m_db.GetNumCadEntities(), 2);
        }
    }
    EXPECT_EQ(seen, 1);
}

TEST_F(Ranges, EndAfterAsManyStepsAsThereAreRecordsWhenTheChainRunsInACircle) {
    const CqHandle first = AddCircle(1.0);
    const CqHandle second = AddCircle(2.0);
    const CqHandle third = AddCircle(3.0);
    Damage(("UPDATE _EntityData SET NextEntityIndex = " + std::to_string(first) +
            " WHERE Record = " + std::to_string(second))
               .c_str());
    EXPECT_EQ(Walk(), (std::vector<CqHandle>{first, second, first}));
    EXPECT_EQ(m_db.GetNumCadEntities(), 3);
    EXPECT_EQ(third, second + 1);
}

TEST_F(Ranges, EndAtAPointWhoseEntityIsAnother) {
    AddPoint(u"A");
    AddPoint(u"B");
    AddPoint(u"C");
    const CqHandle circle = AddCircle(1.0);
    Damage(
        ("UPDATE _PointData SET EntityIndex = " + std::to_string(circle) + " WHERE PointName = 'B'")
            .c_str());
    EXPECT_EQ(std::ranges::distance(Points(m_db)), 1);
}

TEST_F(Ranges, LetWhatTheJobThrowsThrough) {
    AddCircle(1.0);
    AddCircle(2.0);
    Damage("UPDATE _EntityData SET ObjectType = 3 WHERE Record = 3");
    EXPECT_THROW(Walk(), CqSurveyException);
}

TEST(CqCadEntityPtr, IsAsSmallAsAPointerAndGivesTheObjectBack) {
    static_assert(sizeof(CqCadEntityPtr) == sizeof(CqCadEntity*));
    const TempDir folder;
    CqSurveyDB db;
    db.CreateNew(folder.Path(u"a.job"));
    const std::array<double, 3> coords{0, 0, 0};
    CqHandle handle = db.AddCircle(coords.data(), 4.0, 0, 0);
    CqCadEntity* object = nullptr;
    ASSERT_EQ(db.GetNextCadEntity(handle, object), 1);
    CqCadEntityPtr entity(object);
    EXPECT_EQ(entity->GetRadius(), 4.0);
    entity.reset();
    EXPECT_EQ(entity, nullptr);
}

}  // namespace
}  // namespace cqsurvey
