#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>

#include "cqsurvey/CqBatch.h"
#include "drawing/DrawingFixture.h"

namespace cqsurvey {
namespace {

constexpr double kLargest = std::numeric_limits<double>::max();

class Extents : public DrawingFixture {
 protected:
    void ExpectNone() {
        CVector min(1.0, 1.0);
        CVector max(1.0, 1.0);
        EXPECT_EQ(m_db.GetEntityBound(min, max), 0);
        EXPECT_EQ(min.GetX(), 0.0);
        EXPECT_EQ(min.GetY(), 0.0);
        EXPECT_EQ(max.GetX(), 0.0);
        EXPECT_EQ(max.GetY(), 0.0);
    }
};

TEST_F(Extents, OfANewJobAreZero) {
    ExpectNone();
    Reopen();
    ExpectNone();
}

TEST_F(Extents, OfOnePointAreThatPoint) {
    AddPoint(u"P", 100.0, 200.0);
    ExpectExtents(100.0, 200.0, 100.0, 200.0);
    Reopen();
    ExpectExtents(100.0, 200.0, 100.0, 200.0);
}

TEST_F(Extents, OfACircleHoldItsRadius) {
    AddCircle(0.0, 0.0, 5.0);
    ExpectExtents(-5.0, -5.0, 5.0, 5.0);
    Reopen();
    ExpectExtents(-5.0, -5.0, 5.0, 5.0);
}

TEST_F(Extents, OfACircleWithANegativeRadiusAreTheSame) {
    AddCircle(10.0, 20.0, -5.0);
    ExpectExtents(5.0, 15.0, 15.0, 25.0);
    Reopen();
    ExpectExtents(5.0, 15.0, 15.0, 25.0);
}

TEST_F(Extents, OfATextOrABitmapAreItsInsertionPoint) {
    AddText(u"a wide text", 1.0, 2.0);
    ExpectExtents(1.0, 2.0, 1.0, 2.0);
    const std::array point{3.0, -4.0, 0.0};
    m_db.AddBitmap(point.data(), u"tree.bmp", CVector(100.0, 100.0));
    ExpectExtents(1.0, -4.0, 3.0, 2.0);
    Reopen();
    ExpectExtents(1.0, -4.0, 3.0, 2.0);
}

TEST_F(Extents, OfAPolylineAreItsStoredBoundAndNotItsVertices) {
    const CqHandle p = AddPline({{{10.0, 10.0, 0.0}, 1.0}, {{12.0, 10.0, 0.0}, 0.0}});
    ExpectExtents(10.0, 9.0, 12.0, 10.0);
    const std::array far{500.0, 500.0, 0.0};
    m_db.MoveVertex(p + 1, far.data(), 0.0);
    m_db.InsertVertex(p + 1, far.data(), 0.0);
    ExpectExtents(10.0, 9.0, 12.0, 10.0);
    Reopen();
    ExpectExtents(10.0, 9.0, 12.0, 10.0);
}

TEST_F(Extents, FollowEveryEditAndNeverShrink) {
    const CqHandle point = AddPoint(u"P");
    const CqHandle text = AddText();
    const CqHandle circle = AddCircle(0.0, 0.0, 0.0);
    const std::array origin{0.0, 0.0, 0.0};
    const CqHandle bitmap = m_db.AddBitmap(origin.data(), u"", CVector());
    ExpectExtents(0.0, 0.0, 0.0, 0.0);

    const std::array east{10.0, 0.0, 0.0};
    m_db.EditText(text, east.data(), u"", 0, 0, u"", 0, 0, 0, 0, 0, 0);
    ExpectExtents(0.0, 0.0, 10.0, 0.0);
    const std::array north{0.0, 20.0, 0.0};
    m_db.EditBitmap(bitmap, north.data(), u"", CVector());
    ExpectExtents(0.0, 0.0, 10.0, 20.0);
    const std::array west{-30.0, 0.0, 0.0};
    m_db.EditCircle(circle, west.data(), 1.0, 0, 0);
    ExpectExtents(-31.0, -1.0, 10.0, 20.0);
    const std::array south{0.0, -40.0, 0.0};
    EXPECT_NE(m_db.EditCoordRec(u"P", south.data(), 0), 0);
    ExpectExtents(-31.0, -40.0, 10.0, 20.0);
    EXPECT_NE(
        m_db.EditCoordRec(m_db.GetCoordRecHandleByCadEntityHandle(point), u"Q", north.data(), 0),
        0);

    m_db.EditText(text, origin.data(), u"", 0, 0, u"", 0, 0, 0, 0, 0, 0);
    m_db.EditBitmap(bitmap, origin.data(), u"", CVector());
    m_db.EditCircle(circle, origin.data(), 0.0, 0, 0);
    EXPECT_NE(m_db.EditCoordRec(u"Q", origin.data(), 0), 0);
    ExpectExtents(-31.0, -40.0, 10.0, 20.0);
    Reopen();
    ExpectExtents(0.0, 0.0, 0.0, 0.0);
}

TEST_F(Extents, HoldWhatWasDeletedUntilTheJobIsReopened) {
    AddPoint(u"near", 1.0, 1.0);
    AddPoint(u"far", 100.0, 100.0);
    m_db.DelCoordRec(u"far");
    ExpectExtents(1.0, 1.0, 100.0, 100.0);
    Reopen();
    ExpectExtents(1.0, 1.0, 1.0, 1.0);
    m_db.DelCoordRec(u"near");
    ExpectNone();
    Reopen();
    ExpectNone();
}

TEST_F(Extents, HoldDeletedAnnotationsAndPolylinesUntilTheJobIsReopened) {
    AddCircle(0.0, 0.0, 1.0);
    const std::array point{0.0, -40.0, 0.0};
    EXPECT_EQ(m_db.DeleteText(AddText(u"", 10.0, 0.0)), 1);
    EXPECT_EQ(m_db.DeleteCircle(AddCircle(0.0, 20.0, 5.0)), 1);
    EXPECT_EQ(m_db.DeleteBitmap(m_db.AddBitmap(point.data(), u"", CVector())), 1);
    EXPECT_EQ(m_db.DeletePline(AddPline({{{-30.0, 0.0, 0.0}, 0.0}, {{0.0, 0.0, 0.0}, 0.0}})), 1);
    ExpectExtents(-30.0, -40.0, 10.0, 25.0);
    Reopen();
    ExpectExtents(-1.0, -1.0, 1.0, 1.0);
}

TEST_F(Extents, AreNotWidenedByACoordinateThatIsNoNumber) {
    AddPoint(u"P", 1.0, 2.0);
    AddPoint(u"Q", std::nan(""), 5.0);
    ExpectExtents(1.0, 2.0, 1.0, 5.0);
    AddCircle(0.0, 0.0, std::nan(""));
    ExpectExtents(1.0, 2.0, 1.0, 5.0);
    Reopen();
    ExpectExtents(1.0, 2.0, 1.0, 5.0);
}

TEST_F(Extents, StandMinimumAboveMaximumWhileNothingWidenedThem) {
    AddPoint(u"P", std::nan(""), std::nan(""));
    ExpectExtents(kLargest, kLargest, -kLargest, -kLargest);
    Reopen();
    ExpectExtents(kLargest, kLargest, -kLargest, -kLargest);
}

TEST_F(Extents, StartAnewWithANewJob) {
    AddPoint(u"P", 100.0, 200.0);
    m_db.CreateNew(m_folder.Path(u"other.job"));
    ExpectNone();
    AddPoint(u"P", 1.0, 2.0);
    ExpectExtents(1.0, 2.0, 1.0, 2.0);
}

TEST_F(Extents, AreLeftAsTheyWereByOpeningAJobWithoutEntities) {
    const CString empty = m_folder.Path(u"empty.job");
    m_db.CreateNew(empty);
    m_db.Open(m_path);
    AddPoint(u"P", 100.0, 200.0);
    m_db.Open(empty);
    ExpectNone();
    AddPoint(u"Q", 1.0, 2.0);
    ExpectExtents(1.0, 2.0, 100.0, 200.0);
    m_db.Open(empty);
    ExpectExtents(1.0, 2.0, 1.0, 2.0);
}

TEST_F(Extents, AreRebuiltOnceWhenTheChainRunsInACircle) {
    const CqHandle a = AddCircle(0.0, 0.0, 1.0);
    const CqHandle b = AddCircle(5.0, 5.0, 1.0);
    ChangeTable<CqEntityTable>(u"_EntityData", [&](CqEntityTable& table) { table.SetNext(b, a); });
    ExpectExtents(-1.0, -1.0, 6.0, 6.0);
}

TEST_F(Extents, DoNotHoldTheHeaderOfAChainThatRunsBackToIt) {
    const CqHandle a = AddCircle(50.0, 50.0, 1.0);
    AddCircle(60.0, 60.0, 1.0);
    ChangeTable<CqEntityTable>(
        u"_EntityData", [&](CqEntityTable& table) { table.SetNext(a, CqEntityTable::kHeader); });
    ExpectExtents(49.0, 49.0, 51.0, 51.0);
}

TEST_F(Extents, CannotBeRebuiltWhenTheChainNamesARecordThatIsGone) {
    const CqHandle a = AddCircle();
    AddCircle();
    m_db.Close();
    ASSERT_NE(QrfsMount(m_path, u"RAW"), 0);
    {
        CqEntityTable table;
        table.Open(u"RAW:/_EntityData");
        table.SetNext(a, 77);
    }
    ASSERT_NE(QrfsUnmount(u"RAW"), 0);
    EXPECT_EQ(CodeOf([&] {
                  m_db.Open(m_path);
                  return 0;
              }),
              kStale);
}

TEST_F(Extents, ComeBackWithAnUndoneBatch) {
    AddPoint(u"P", 1.0, 2.0);
    {
        CqBatch batch(m_db);
        AddPoint(u"Q", 100.0, 200.0);
        ExpectExtents(1.0, 2.0, 100.0, 200.0);
    }
    ExpectExtents(1.0, 2.0, 1.0, 2.0);
}

}  // namespace
}  // namespace cqsurvey
