#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "cqsurvey/CqBatch.h"
#include "cqsurvey/CqJobCheck.h"
#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/Text.h"
#include "support/Points.h"
#include "support/TempDir.h"

namespace cqsurvey {
namespace {

class Batch : public testing::Test {
 protected:
    Batch() { m_db.CreateNew(m_path); }

    void Reopen() {
        m_db.Close();
        m_db.Open(m_path);
    }

    [[nodiscard]] std::vector<CString> ViewNames() {
        std::vector<CString> names;
        CqCoordRec rec;
        for (int i = 0; i < m_db.GetSortCoordRecs(); ++i) {
            EXPECT_NE(m_db.GetSortCoordAt(i, rec), 0U);
            names.push_back(rec.GetPtName());
        }
        return names;
    }

    TempDir m_folder;
    CString m_path = m_folder.Path(u"a.job");
    CqSurveyDB m_db;
};

TEST_F(Batch, IsInTheJobOnceCommitted) {
    CqBatch batch(m_db);
    AddPoint(m_db, u"P1", 1, 2);
    AddPoint(m_db, u"P2", 3, 4);
    batch.Commit();
    Reopen();
    EXPECT_EQ(ViewNames(), (std::vector<CString>{u"P1", u"P2"}));
}

TEST_F(Batch, IsUndoneEverywhereWhenItIsLeft) {
    AddPoint(m_db, u"P1", 1, 2);
    AddPoint(m_db, u"P01", 1, 2);
    m_db.AddGroup(u"Road");
    m_db.SetCurrentGroup(u"Road");
    EXPECT_NE(m_db.AddCoordDescription(1, u"before"), 0);
    m_db.SetCurrentColor(9);
    m_db.SetSiPointSize(2.5);
    const std::array<double, 3> coords{500, 600, 0};
    {
        const CqBatch batch(m_db);
        AddPoint(m_db, u"P2", 100, 200);
        EXPECT_NE(m_db.EditCoordRec(CqHandle{1}, u"Q1", coords.data(), 5), 0);
        m_db.DelCoordRec(CqHandle{2});
        m_db.AddLayer(u"A", 2, 0);
        m_db.SetCurrentLayer(u"A");
        m_db.SetCurrentColor(3);
        m_db.SetCurrentGroup(u"");
        m_db.DelGroup(u"Road");
        EXPECT_NE(m_db.EditCoordDescription(1, u"after"), 0);
        m_db.SetSiPointSize(7.0);
        m_db.AddText(coords.data(), u"text", 0, 0, u"", 1, 0, 0, 0, 0, 0);
        COORDFILTER none;
        none.originMask = 0;
        m_db.SetSortCoordSetting(1, 1, none);
        EXPECT_EQ(m_db.GetSortCoordRecs(), 0);
    }
    EXPECT_EQ(ViewNames(), (std::vector<CString>{u"P01", u"P1"}));
    EXPECT_EQ(m_db.GetCoordRecHandleByPtName(u"P1"), 1U);
    EXPECT_EQ(m_db.GetCoordRecHandleByPtName(u"P01"), 2U);
    EXPECT_EQ(m_db.GetCoordRecHandleByPtName(u"Q1"), 0U);
    EXPECT_EQ(m_db.GetCoordRecHandleByPtName(u"P2"), 0U);
    EXPECT_EQ(m_db.GetCurrentLayer(), u"0");
    EXPECT_EQ(m_db.GetNumLayers(), 1);
    EXPECT_EQ(m_db.GetCurrentColor(), 9);
    EXPECT_EQ(m_db.GetCurrentGroup(), u"Road");
    EXPECT_EQ(m_db.GetSiPointSize(), 2.5);
    CString text;
    EXPECT_EQ(m_db.GetCoordDescription(1, text), 1);
    EXPECT_EQ(text, u"before");
    CVector min;
    CVector max;
    EXPECT_EQ(m_db.GetEntityBound(min, max), 1);
    EXPECT_EQ(max.GetX(), 1.0) << "the extents are those before the batch";
    EXPECT_EQ(CqJobCheck(m_db).GetCount(), 0U);
    Reopen();
    EXPECT_EQ(ViewNames(), (std::vector<CString>{u"P01", u"P1"}));
    EXPECT_EQ(m_db.GetNumCadEntities(), 2);
    EXPECT_EQ(AddPoint(m_db, u"P3", 1, 2), 3U) << "numbers of undone records were never used";
}

TEST_F(Batch, SeesItsOwnChanges) {
    CqBatch batch(m_db);
    const CqHandle handle = AddPoint(m_db, u"P1", 1, 2);
    EXPECT_EQ(m_db.GetCoordRecHandleByPtName(u"P1"), handle);
    EXPECT_EQ(m_db.GetNumCoordRecs(), 1);
    m_db.DelCoordRec(handle);
    EXPECT_EQ(m_db.GetNumCoordRecs(), 0);
    batch.Commit();
    Reopen();
    EXPECT_EQ(m_db.GetNumCoordRecs(), 0);
}

TEST_F(Batch, KeepsTheStepsOfAnOperationThatWasRefusedInIt) {
    CqBatch batch(m_db);
    AddPoint(m_db, u"P1", 1, 2);
    EXPECT_EQ(CodeThrownBy([&] { AddPoint(m_db, u"P1", 1, 2); }), error::kDuplicatePointName);
    EXPECT_EQ(CodeThrownBy([&] { m_db.DelCoordRec(CqHandle{77}); }), error::kNoRecord);
    AddPoint(m_db, u"P2", 1, 2);
    batch.Commit();
    Reopen();
    EXPECT_EQ(ViewNames(), (std::vector<CString>{u"P1", u"P2"}));
}

TEST_F(Batch, ThereIsOneAtATimeAndItCommitsOnce) {
    CqBatch batch(m_db);
    EXPECT_EQ(CodeThrownBy([&] { const CqBatch second(m_db); }), error::kInvalidArgument);
    batch.Commit();
    EXPECT_EQ(CodeThrownBy([&] { batch.Commit(); }), error::kInvalidArgument);
    CqBatch next(m_db);
    EXPECT_EQ(CodeThrownBy([&] { batch.Commit(); }), error::kInvalidArgument)
        << "a batch that is over does not commit another";
    next.Commit();
}

TEST_F(Batch, NeedsAnOpenJob) {
    m_db.Close();
    EXPECT_EQ(CodeThrownBy([&] { const CqBatch batch(m_db); }), error::kNoMount);
}

TEST_F(Batch, IsUndoneByClosingTheJob) {
    AddPoint(m_db, u"P1", 1, 2);
    CqBatch batch(m_db);
    AddPoint(m_db, u"P2", 1, 2);
    m_db.Close();
    EXPECT_EQ(CodeThrownBy([&] { batch.Commit(); }), error::kInvalidArgument);
    m_db.Open(m_path);
    EXPECT_EQ(ViewNames(), (std::vector<CString>{u"P1"}));
    AddPoint(m_db, u"P3", 1, 2);
    Reopen();
    EXPECT_EQ(m_db.GetNumCoordRecs(), 2);
}

TEST_F(Batch, OfManyPointsIsHandedOnAndUndoneAllTheSame) {
    AddPoint(m_db, u"P1", 1, 2);
    const int many = 150000;
    {
        const CqBatch batch(m_db);
        for (int i = 0; i < many; ++i) {
            AddPoint(m_db, FromUtf8("N" + std::to_string(i)), i, i);
        }
        EXPECT_EQ(m_db.GetNumCoordRecs(), many + 1);
    }
    EXPECT_EQ(m_db.GetNumCoordRecs(), 1);
    EXPECT_EQ(CqJobCheck(m_db).GetCount(), 0U);
    {
        CqBatch batch(m_db);
        for (int i = 0; i < many; ++i) {
            AddPoint(m_db, FromUtf8("N" + std::to_string(i)), i, i);
        }
        batch.Commit();
    }
    Reopen();
    EXPECT_EQ(m_db.GetNumCoordRecs(), many + 1);
    EXPECT_EQ(CqJobCheck(m_db).GetCount(), 0U);
}

}  // namespace
}  // namespace cqsurvey
