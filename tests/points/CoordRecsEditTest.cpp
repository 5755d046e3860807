#include <gtest/gtest.h>

#include <array>

#include "points/CoordRecsFixture.h"
#include "support/Points.h"

namespace cqsurvey {
namespace {

using CoordRecs = CoordRecsFixture;

TEST_F(CoordRecs, EditingByNameMovesThePointAndItsCode) {
    const CqHandle handle = AddPoint(m_db, u"P1", 1, 2, 3, 10);
    const std::array<double, 3> coords{11, 12, 13};
    EXPECT_EQ(m_db.EditCoordRec(u"P1", coords.data(), 20), 1);
    EXPECT_EQ(m_db.EditCoordRec(u"P2", coords.data(), 20), 0);
    EXPECT_EQ(m_db.EditCoordRec(u"", coords.data(), 20), 0);
    EXPECT_EQ(PointOf(Read(handle)), coords);
    EXPECT_EQ(Read(handle).GetCode(), 20);
}

TEST_F(CoordRecs, EditingByHandleRenamesThePoint) {
    const CqHandle handle = AddPoint(m_db, u"P1", 1, 2, 3, 10);
    const std::array<double, 3> coords{11, 12, 13};
    EXPECT_EQ(m_db.EditCoordRec(handle, u"Q1", coords.data(), 11), 1);
    EXPECT_EQ(m_db.GetCoordRecHandleByPtName(u"P1"), 0U);
    EXPECT_EQ(m_db.GetCoordRecHandleByPtName(u"Q1"), handle);
    EXPECT_EQ(Read(handle).GetCode(), 11);
    EXPECT_EQ(PointOf(Read(handle)), coords);
}

TEST_F(CoordRecs, EditingByHandleWithItsOwnNameIsTheFormByName) {
    const CqHandle handle = AddPoint(m_db, u"P1", 1, 2, 3, 10);
    const std::array<double, 3> coords{11, 12, 13};
    EXPECT_EQ(m_db.EditCoordRec(handle, u"P1", coords.data(), 12), 1);
    EXPECT_EQ(Read(handle).GetCode(), 12);
    EXPECT_EQ(PointOf(Read(handle)), coords);
}

TEST_F(CoordRecs, OfTwoNamesAlikeAfterCuttingTheOwnNameEditsThePointThatTheIndexHolds) {
    const CString cut = u"ABCDEFGHIJKLMNOPQRS";
    const CqHandle first = AddPoint(m_db, cut + u"1", 1, 2);
    const CqHandle second = AddPoint(m_db, cut + u"2", 3, 4);
    const std::array<double, 3> coords{11, 12, 13};
    EXPECT_EQ(m_db.EditCoordRec(first, cut, coords.data(), 5), 1);
    EXPECT_EQ(PointOf(Read(first)), (std::array<double, 3>{1, 2, 0}));
    EXPECT_EQ(PointOf(Read(second)), coords);
    EXPECT_EQ(Read(second).GetCode(), 5);
    EXPECT_EQ(m_db.DelCoordRec(first), 1);
    EXPECT_EQ(m_db.EditCoordRec(second, cut, coords.data(), 6), 0) << "no point has the name now";
    EXPECT_EQ(Read(second).GetCode(), 5);
}

TEST_F(CoordRecs, ALongNewNameIsComparedAsGivenAndStoredCut) {
    const CString cut = u"ABCDEFGHIJKLMNOPQRS";
    const CqHandle first = AddPoint(m_db, cut, 1, 2);
    const CqHandle second = AddPoint(m_db, u"P2", 3, 4);
    const std::array<double, 3> coords{11, 12, 13};
    EXPECT_EQ(m_db.EditCoordRec(second, cut, coords.data(), 0), 0);
    EXPECT_EQ(m_db.EditCoordRec(second, cut + u"T", coords.data(), 0), 1);
    EXPECT_EQ(Read(second).GetPtName(), cut);
    EXPECT_EQ(m_db.GetCoordRecHandleByPtName(u"P2"), 0U);
    EXPECT_EQ(m_db.GetCoordRecHandleByPtName(cut + u"T"), 0U);
    EXPECT_EQ(m_db.GetCoordRecHandleByPtName(cut), second);
    EXPECT_EQ(m_db.EditCoordRec(first, u"P1", coords.data(), 0), 1);
    EXPECT_EQ(m_db.GetCoordRecHandleByPtName(cut), 0U) << "the old name leaves the index";
    Reopen();
    EXPECT_EQ(m_db.GetCoordRecHandleByPtName(cut), second);
    EXPECT_EQ(m_db.GetCoordRecHandleByPtName(u"P1"), first);
}

TEST_F(CoordRecs, EditingLeavesWhatItIsNotGiven) {
    m_db.AddGroup(u"Road");
    m_db.SetCurrentGroup(u"Road");
    const CqHandle handle =
        AddPoint(m_db, u"P1", 1, 2, 3, 10, static_cast<SurveyCoordType>(4), 0xDEADBEEF);
    Damage<CqPointTable>(u"_PointData", handle,
                         [](CqPointTable& points) { points.Set<"RecTime">(1234567U); });
    const std::array<double, 3> coords{11, 12, 13};
    EXPECT_EQ(m_db.EditCoordRec(u"P1", coords.data(), 11), 1);
    EXPECT_EQ(m_db.EditCoordRec(handle, u"Q1", coords.data(), 12), 1);
    const CqCoordRec rec = Read(handle);
    EXPECT_EQ(rec.GetType(), 4);
    EXPECT_EQ(rec.GetGroup(), 1);
    EXPECT_EQ(rec.GetFlags(), 0xDEADBEEF);
    EXPECT_EQ(rec.GetRecTime(), 1234567U);
}

TEST_F(CoordRecs, EditingByHandleToAnotherPointsNameChangesNothing) {
    const CqHandle handle = AddPoint(m_db, u"P1", 1, 2, 3, 10);
    AddPoint(m_db, u"P2", 4, 5, 6, 20);
    const std::array<double, 3> coords{11, 12, 13};
    EXPECT_EQ(m_db.EditCoordRec(handle, u"P2", coords.data(), 12), 0);
    EXPECT_EQ(Read(handle).GetPtName(), u"P1");
    EXPECT_EQ(Read(handle).GetCode(), 10);
    EXPECT_EQ(PointOf(Read(handle)), (std::array<double, 3>{1, 2, 3}));
}

TEST_F(CoordRecs, EditingByHandleToTheEmptyNameMakesThePointUnnamed) {
    const CqHandle handle = AddPoint(m_db, u"P1", 1, 2, 3, 10);
    const std::array<double, 3> coords{11, 12, 13};
    EXPECT_EQ(m_db.EditCoordRec(handle, u"", coords.data(), 10), 1);
    EXPECT_EQ(Read(handle).GetPtName(), u"");
    EXPECT_EQ(m_db.GetCoordRecHandleByPtName(u"P1"), 0U);
    EXPECT_NE(AddPoint(m_db, u"P1", 1, 2), 0U) << "the name is free again";
}

TEST_F(CoordRecs, EditingNeitherNameNorCodeLeavesTheViewUntouched) {
    AddPoint(m_db, u"P1", 1, 2);
    AddPoint(m_db, u"P01", 3, 4);
    CqCoordRec rec;
    m_db.GetSortCoordAt(0, rec);
    ASSERT_EQ(rec.GetPtName(), u"P01") << "of equal names the later one comes first";
    const std::array<double, 3> coords{11, 12, 13};
    EXPECT_NE(m_db.EditCoordRec(u"P1", coords.data(), 0), 0);
    m_db.GetSortCoordAt(0, rec);
    EXPECT_EQ(rec.GetPtName(), u"P01");
    EXPECT_NE(m_db.EditCoordRec(u"P1", coords.data(), 1), 0);
    m_db.GetSortCoordAt(0, rec);
    EXPECT_EQ(rec.GetPtName(), u"P1") << "a new code enters the point again";
}

TEST_F(CoordRecs, EditingAnUnnamedPointsPlaceAloneLeavesTheViewUntouched) {
    const CqHandle first = AddPoint(m_db, u"", 1, 2);
    const CqHandle second = AddPoint(m_db, u"", 3, 4);
    CqCoordRec rec;
    ASSERT_EQ(m_db.GetSortCoordAt(0, rec), second);
    const std::array<double, 3> coords{11, 12, 13};
    EXPECT_EQ(m_db.EditCoordRec(first, u"", coords.data(), 0), 1);
    EXPECT_EQ(m_db.GetSortCoordAt(0, rec), second);
    EXPECT_EQ(m_db.EditCoordRec(first, u"", coords.data(), 1), 1);
    EXPECT_EQ(m_db.GetSortCoordAt(0, rec), first);
}

TEST_F(CoordRecs, FlagsAreReplacedByHandleAndByName) {
    const CqHandle handle = AddPoint(m_db, u"P1", 1, 2);
    EXPECT_EQ(m_db.EditCoordRecFlags(handle, 5), 1);
    EXPECT_EQ(Read(handle).GetFlags(), 5U);
    EXPECT_EQ(m_db.EditCoordRecFlags(u"P1", 0xFFFFFFFF), 1);
    EXPECT_EQ(Read(handle).GetFlags(), 0xFFFFFFFF);
    EXPECT_EQ(m_db.EditCoordRecFlags(u"P9", 1), 0);
}

TEST_F(CoordRecs, TheTimeOfAPointIsReplacedAndStays) {
    const CqHandle handle = AddPoint(m_db, u"P1", 1, 2);
    EXPECT_EQ(m_db.EditCoordRecTime(handle, 4102444800U), 1);
    EXPECT_EQ(Read(handle).GetRecTime(), 4102444800U);
    Reopen();
    EXPECT_EQ(Read(handle).GetRecTime(), 4102444800U);
    EXPECT_EQ(m_db.EditCoordRecTime(0, 1), 0);
    EXPECT_EQ(CodeThrownBy([&] { m_db.EditCoordRecTime(77, 1); }), error::kNoRecord);
}

}  // namespace
}  // namespace cqsurvey
