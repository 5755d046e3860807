#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <ctime>
#include <vector>

#include "points/CoordRecsFixture.h"
#include "support/Points.h"
#include "tables/CqEntityTable.h"

namespace cqsurvey {
namespace {

using CoordRecs = CoordRecsFixture;

TEST_F(CoordRecs, AnAddedPointReadsBackWithEveryAttribute) {
    const auto before = static_cast<std::uint32_t>(std::time(nullptr));
    const std::array<double, 3> coords{100.25, 200.5, -0.0};
    const CqHandle handle = m_db.AddCoordRec(coords.data(), u"P1", -7,
                                             static_cast<SurveyCoordType>(0x10004), 0xDEADBEEF);
    const CqCoordRec rec = Read(handle);
    EXPECT_EQ(rec.GetPtName(), u"P1");
    EXPECT_EQ(rec.GetCode(), -7);
    EXPECT_EQ(rec.GetType(), 4) << "the low 16 bits of the origin";
    EXPECT_EQ(rec.GetFlags(), 0xDEADBEEF);
    EXPECT_EQ(rec.GetGroup(), 0);
    EXPECT_EQ(PointOf(rec), coords);
    EXPECT_TRUE(std::signbit(PointOf(rec)[2]));
    EXPECT_GE(rec.GetRecTime(), before);
    EXPECT_LE(rec.GetRecTime(), before + 60);
}

TEST_F(CoordRecs, AZeroEndsANameWhereverOneIsGiven) {
    const CString longer(u"P1\0X", 4);
    const CqHandle handle = AddPoint(m_db, u"P1", 1, 2);
    EXPECT_EQ(CodeThrownBy([&] { AddPoint(m_db, longer, 3, 4); }), error::kDuplicatePointName);
    EXPECT_EQ(m_db.GetCoordRecHandleByPtName(longer), handle);
    const std::array<double, 3> far{30, 40, 50};
    EXPECT_NE(m_db.EditCoordRec(handle, longer, far.data(), 7), 0);
    CqCoordRec rec;
    CqHandle next = handle;
    ASSERT_NE(m_db.GetNextCoordRec(next, rec), 0);
    EXPECT_EQ(rec.GetPtName(), u"P1");
    EXPECT_EQ(rec.GetCode(), 7);
    EXPECT_NE(AddPoint(m_db, CString(u"\0Y", 2), 5, 6), 0U);
    EXPECT_NE(AddPoint(m_db, CString(u"\0Y", 2), 5, 6), 0U) << "that is no name";
}

TEST_F(CoordRecs, ASecondPointOfTheSameNameIsRefusedByException) {
    AddPoint(m_db, u"P1", 1, 2);
    EXPECT_EQ(CodeThrownBy([&] { AddPoint(m_db, u"P1", 3, 4); }), error::kDuplicatePointName);
    EXPECT_EQ(m_db.GetNumCoordRecs(), 1);
    EXPECT_EQ(m_db.GetNumCadEntities(), 1);
}

TEST_F(CoordRecs, UnnamedPointsAreManyAndFoundByNoName) {
    EXPECT_NE(AddPoint(m_db, u"", 1, 2), 0U);
    EXPECT_NE(AddPoint(m_db, u"", 3, 4), 0U);
    EXPECT_EQ(m_db.GetNumCoordRecs(), 2);
    EXPECT_EQ(m_db.GetCoordRecHandleByPtName(u""), 0U);
    EXPECT_EQ(Names(), (std::vector<CString>{u"", u""}));
}

TEST_F(CoordRecs, ALongNameIsCutTo19AndFoundOnlyCut) {
    const CString name = u"ABCDEFGHIJKLMNOPQRSTUVWXY";
    const CqHandle handle = AddPoint(m_db, name, 1, 2);
    EXPECT_EQ(Read(handle).GetPtName(), name.substr(0, 19));
    EXPECT_EQ(m_db.GetCoordRecHandleByPtName(name), 0U);
    EXPECT_EQ(m_db.GetCoordRecHandleByPtName(name.substr(0, 19)), handle);
}

TEST_F(CoordRecs, OfTwoNamesAlikeAfterCuttingTheIndexHoldsTheLast) {
    const CString cut = u"ABCDEFGHIJKLMNOPQRS";
    const CqHandle first = AddPoint(m_db, cut + u"1", 1, 2);
    const CqHandle second = AddPoint(m_db, cut + u"2", 3, 4);
    EXPECT_EQ(m_db.GetCoordRecHandleByPtName(cut), second);
    EXPECT_EQ(m_db.DelCoordRec(first), 1);
    EXPECT_EQ(m_db.GetCoordRecHandleByPtName(cut), 0U) << "deleting either removes the name";
    Reopen();
    EXPECT_EQ(m_db.GetCoordRecHandleByPtName(cut), second);
}

TEST_F(CoordRecs, NamesAreMatchedWithTheirCase) {
    const CqHandle upper = AddPoint(m_db, u"P1", 1, 2);
    const CqHandle lower = AddPoint(m_db, u"p1", 3, 4);
    EXPECT_EQ(m_db.GetCoordRecHandleByPtName(u"P1"), upper);
    EXPECT_EQ(m_db.GetCoordRecHandleByPtName(u"p1"), lower);
}

TEST_F(CoordRecs, AnEmptyJobHasNothingToIterate) {
    EXPECT_EQ(m_db.GetFirstCoordRecHandle(), 0U);
    CqHandle handle = 0;
    CqCoordRec rec;
    EXPECT_EQ(m_db.GetNextCoordRec(handle, rec), 0);
}

TEST_F(CoordRecs, AHandleThatNamesNothingEndsTheIterationUnchanged) {
    AddPoint(m_db, u"P1", 1, 2);
    CqHandle handle = 99;
    CqCoordRec rec;
    EXPECT_EQ(m_db.GetNextCoordRec(handle, rec), 0);
    EXPECT_EQ(handle, 99U);
}

TEST_F(CoordRecs, AJobWhoseEveryPointWasDeletedHasNothingToIterate) {
    AddPoint(m_db, u"P1", 1, 2);
    AddPoint(m_db, u"", 1, 2);
    EXPECT_EQ(m_db.DelCoordRec(CqHandle{2}), 1);
    EXPECT_EQ(m_db.DelCoordRec(CqHandle{1}), 1);
    EXPECT_EQ(m_db.GetFirstCoordRecHandle(), 0U);
    Reopen();
    EXPECT_EQ(m_db.GetFirstCoordRecHandle(), 0U);
}

TEST_F(CoordRecs, TheIterationEndsAtAPointWhoseEntityIsOfAnotherKind) {
    AddPoint(m_db, u"P1", 1, 2);
    AddPoint(m_db, u"P2", 3, 4);
    const std::array<double, 3> coords{1, 2, 3};
    NameEntity(2, m_db.AddCircle(coords.data(), 5.0, 0, 0));
    CqHandle handle = 1;
    CqCoordRec rec;
    ASSERT_EQ(m_db.GetNextCoordRec(handle, rec), 1);
    EXPECT_EQ(handle, 2U);
    EXPECT_EQ(m_db.GetNextCoordRec(handle, rec), 0);
    EXPECT_EQ(handle, 2U);
    EXPECT_EQ(rec.GetPtName(), u"P1");
}

TEST_F(CoordRecs, APointIsReadFromTheSurveyPointEntityThatItNamesWhicheverThatShows) {
    AddPoint(m_db, u"P1", 1, 2);
    AddPoint(m_db, u"P2", 3, 4);
    NameEntity(1, 3);
    EXPECT_EQ(Read(1).GetPtName(), u"P1");
    EXPECT_EQ(PointOf(Read(1)), (std::array<double, 3>{3, 4, 0}));
    NameEntity(1, 99);
    CqHandle handle = 1;
    CqCoordRec rec;
    EXPECT_EQ(CodeThrownBy([&] { m_db.GetNextCoordRec(handle, rec); }), error::kNoRecord);
    EXPECT_EQ(handle, 1U);
}

TEST_F(CoordRecs, APointThatItsEntityDoesNotNameBackIsNeitherEditedNorDeleted) {
    const std::array<double, 3> coords{11, 12, 13};
    AddPoint(m_db, u"P1", 1, 2);
    AddPoint(m_db, u"P2", 3, 4);
    const CqHandle circle = m_db.AddCircle(coords.data(), 5.0, 0, 0);
    const std::array<double, 3> far{900, 900, 900};
    EXPECT_NE(m_db.AddCoordDescription(1, u"text"), 0);
    for (const CqHandle named : {CqHandle{0}, CqHandle{1}, CqHandle{3}, circle, CqHandle{99}}) {
        SCOPED_TRACE(testing::Message() << "entity " << named);
        NameEntity(1, named);
        EXPECT_EQ(m_db.EditCoordRec(u"P1", far.data(), 8), 0);
        EXPECT_EQ(m_db.EditCoordRec(CqHandle{1}, u"P1", far.data(), 8), 0);
        EXPECT_EQ(m_db.EditCoordRec(CqHandle{1}, u"Q", far.data(), 8), 0);
        EXPECT_EQ(m_db.DelCoordRec(u"P1"), 0);
        EXPECT_EQ(m_db.DelCoordRec(CqHandle{1}), 0);
        EXPECT_EQ(m_db.GetNumCoordRecs(), 2);
        EXPECT_EQ(m_db.GetNumCadEntities(), 3);
        EXPECT_EQ(m_db.GetCoordRecHandleByPtName(u"P1"), 1U);
        EXPECT_EQ(m_db.GetCoordRecHandleByPtName(u"Q"), 0U);
        EXPECT_EQ(PointOf(Read(2)), (std::array<double, 3>{3, 4, 0}));
        EXPECT_EQ(PlaceOf(circle), coords);
        CString text;
        EXPECT_EQ(m_db.GetCoordDescription(1, text), 1);
    }
    NameEntity(1, 2);
    EXPECT_EQ(PointOf(Read(1)), (std::array<double, 3>{1, 2, 0}));
    EXPECT_EQ(Read(1).GetCode(), 0);
}

TEST_F(CoordRecs, TheHeaderOfTheChainIsDeletedWithNoPoint) {
    AddPoint(m_db, u"P1", 1, 2);
    AddPoint(m_db, u"P2", 3, 4);
    NameEntity(1, 1);
    Damage<CqEntityTable>(u"_EntityData", 1, [](CqEntityTable& entities) {
        entities.Set<"ObjectIndex">(CqHandle{1});
    });
    EXPECT_EQ(m_db.DelCoordRec(CqHandle{1}), 1);
    EXPECT_EQ(m_db.GetNumCoordRecs(), 1);
    EXPECT_EQ(m_db.GetNumCadEntities(), 2);
    Reopen();
    EXPECT_EQ(m_db.GetFirstCadEntityHandle(), 2U);
}

TEST_F(CoordRecs, IterationGoesInRecordOrderOverDeletedRecords) {
    for (const char16_t* name : {u"C", u"A", u"", u"B"}) {
        AddPoint(m_db, name, 1, 2);
    }
    m_db.DelCoordRec(u"A");
    EXPECT_EQ(Names(), (std::vector<CString>{u"C", u"", u"B"}));
}

TEST_F(CoordRecs, PointAndEntityNameEachOther) {
    const CqHandle point = AddPoint(m_db, u"P1", 1, 2);
    const CqHandle entity = m_db.GetCadEntityHandleByCoordRecHandle(point);
    EXPECT_NE(entity, 0U);
    EXPECT_EQ(m_db.GetCoordRecHandleByCadEntityHandle(entity), point);
    EXPECT_EQ(m_db.GetCadEntityHandleByPtName(u"P1"), entity);
    EXPECT_EQ(m_db.GetCadEntityHandleByPtName(u""), 0U);
    EXPECT_EQ(m_db.GetCadEntityHandleByPtName(u"P2"), 0U);
}

TEST_F(CoordRecs, AnEntityOfAnotherKindShowsNoPoint) {
    const std::array<double, 3> coords{1, 2, 3};
    const CqHandle circle = m_db.AddCircle(coords.data(), 5.0, 0, 0);
    EXPECT_EQ(m_db.GetCoordRecHandleByCadEntityHandle(circle), 0U);
}

TEST_F(CoordRecs, AZeroHandleIsRefusedAndAStaleOneThrows) {
    const std::array<double, 3> coords{1, 2, 3};
    EXPECT_EQ(m_db.GetCoordRecHandleByCadEntityHandle(0), 0U);
    EXPECT_EQ(m_db.GetCadEntityHandleByCoordRecHandle(0), 0U);
    EXPECT_EQ(m_db.EditCoordRec(CqHandle{0}, u"X", coords.data(), 1), 0);
    EXPECT_EQ(m_db.DelCoordRec(CqHandle{0}), 0);
    EXPECT_EQ(m_db.EditCoordRecFlags(CqHandle{0}, 1), 0);
    EXPECT_EQ(m_db.EditCoordRecGroup(CqHandle{0}, 1), 0);
    EXPECT_EQ(CodeThrownBy([&] { (void)m_db.GetCoordRecHandleByCadEntityHandle(77); }),
              error::kNoRecord);
    EXPECT_EQ(CodeThrownBy([&] { (void)m_db.GetCadEntityHandleByCoordRecHandle(77); }),
              error::kNoRecord);
    EXPECT_EQ(CodeThrownBy([&] { (void)m_db.EditCoordRec(77, u"X", coords.data(), 1); }),
              error::kNoRecord);
    EXPECT_EQ(CodeThrownBy([&] { m_db.DelCoordRec(77); }), error::kNoRecord);
    EXPECT_EQ(CodeThrownBy([&] { m_db.EditCoordRecFlags(77, 1); }), error::kNoRecord);
    EXPECT_EQ(CodeThrownBy([&] { m_db.EditCoordRecGroup(77, 1); }), error::kNoRecord);
}

TEST_F(CoordRecs, ADeletedPointTakesEntityNameAndDescriptionWithIt) {
    const CqHandle handle = AddPoint(m_db, u"P1", 1, 2);
    AddPoint(m_db, u"P2", 3, 4);
    const CqHandle entity = m_db.GetCadEntityHandleByCoordRecHandle(handle);
    EXPECT_NE(m_db.AddCoordDescription(handle, u"corner of the wall"), 0);
    EXPECT_EQ(m_db.DelCoordRec(u"P1"), 1);
    EXPECT_EQ(m_db.DelCoordRec(u"P1"), 0);
    EXPECT_EQ(m_db.GetNumCoordRecs(), 1);
    EXPECT_EQ(m_db.GetNumCadEntities(), 1);
    CString text;
    EXPECT_EQ(m_db.GetCoordDescription(handle, text), 0);
    EXPECT_EQ(CodeThrownBy([&] { (void)m_db.GetCoordRecHandleByCadEntityHandle(entity); }),
              error::kNoRecord);
    EXPECT_NE(AddPoint(m_db, u"P1", 5, 6), handle) << "a record number is never used again";
}

TEST_F(CoordRecs, TheLastRecordNumberIsNotUsedAgainAfterReopening) {
    AddPoint(m_db, u"P1", 1, 2);
    const CqHandle last = AddPoint(m_db, u"P2", 1, 2);
    m_db.DelCoordRec(last);
    Reopen();
    EXPECT_EQ(AddPoint(m_db, u"P3", 1, 2), last + 1);
}

TEST_F(CoordRecs, EverythingIsThereAgainAfterReopening) {
    const CqHandle handle = AddPoint(m_db, u"Säule 日本 1", 1.5, -2.5, 3.25, 42, kMeasured, 9);
    Reopen();
    const CqCoordRec rec = Read(handle);
    EXPECT_EQ(rec.GetPtName(), u"Säule 日本 1");
    EXPECT_EQ(PointOf(rec), (std::array<double, 3>{1.5, -2.5, 3.25}));
    EXPECT_EQ(rec.GetCode(), 42);
    EXPECT_EQ(rec.GetFlags(), 9U);
    EXPECT_EQ(m_db.GetCoordRecHandleByPtName(u"Säule 日本 1"), handle);
}

}  // namespace
}  // namespace cqsurvey
