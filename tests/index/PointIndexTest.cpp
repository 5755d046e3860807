#include "index/PointIndex.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "cqsurvey/CqSurveyException.h"
#include "cqsurvey/Text.h"
#include "store/Qrfs.h"
#include "store/StoreExtras.h"
#include "support/FakePointRecords.h"
#include "support/TempDir.h"

namespace cqsurvey {
namespace {

class PointIndexTest : public testing::Test {
 protected:
    void SetUp() override {
        ASSERT_NE(QrfsCreateVolume(dir.Path(u"points.job")), 0);
        ASSERT_NE(QrfsMount(dir.Path(u"points.job"), u"POINTS"), 0);
        table.Create(kPath);
        index.Build();
    }
    void TearDown() override {
        table.Close();
        QrfsUnmount(u"POINTS");
    }

    CqHandle Add(const CString& name, std::int32_t code = 0, CqHandle entity = 0) {
        const CqHandle handle = table.AppendRecord(FakePointRecords::Make(name, code, 1, entity));
        index.EnterName(handle, table.Record());
        index.EnterIntoView(handle, table.Record());
        return handle;
    }
    void Delete(CqHandle handle) {
        index.RemoveName(table.RecordAt(handle));
        index.RemoveFromView(handle, table.RecordAt(handle));
        table.DeleteRecord(handle);
    }
    void Begin() {
        index.KeepStep();
        ASSERT_NE(StoreBeginStep(u"POINTS"), 0);
    }
    void Rollback() {
        ASSERT_NE(StoreRollbackStep(u"POINTS"), 0);
        index.UndoStep();
    }
    [[nodiscard]] std::vector<CqHandle> View() const {
        std::vector<CqHandle> view;
        for (std::int32_t i = 0; i < index.ViewSize(); ++i) {
            view.push_back(index.ViewAt(i));
        }
        return view;
    }

    const CString kPath = u"POINTS:/_PointData";
    TempDir dir;
    CqPointTable table;
    PointIndex index{table};
};

using List = std::vector<CqHandle>;

TEST_F(PointIndexTest, IsEmptyWhenCreated) {
    EXPECT_EQ(index.ViewSize(), 0);
    EXPECT_EQ(index.FindByName(u"P1"), 0U);
    EXPECT_FALSE(index.IsEntityInView(0));
}

TEST_F(PointIndexTest, FindsAPointByItsName) {
    const CqHandle first = Add(u"P1", 5);
    const CqHandle second = Add(u"P2", 6);
    EXPECT_EQ(index.FindByName(u"P1"), first);
    EXPECT_EQ(index.FindByName(u"P2"), second);
    EXPECT_EQ(index.FindByName(CString(u"P2\0x", 4)), second);
    EXPECT_EQ(index.FindByName(u"P3"), 0U);
    EXPECT_EQ(index.FindByName(u""), 0U);
}

TEST_F(PointIndexTest, BuildsItsIndexesWhenOpened) {
    Add(u"P10", 0, 20);
    Add(u"P2", 0, 21);
    Add(u"");
    index.OnClose();
    EXPECT_EQ(index.ViewSize(), 0);
    index.OnOpen(u"");
    EXPECT_EQ(View(), (List{3, 2, 1}));
    EXPECT_EQ(index.FindByName(u"P10"), 1U);
    EXPECT_TRUE(index.IsEntityInView(21));
    EXPECT_FALSE(index.IsEntityInView(22));
}

TEST_F(PointIndexTest, OpensWithTheDefaultSetting) {
    Add(u"P1");
    Add(u"P2");
    COORDFILTER filter;
    filter.nameFrom = u"P2";
    EXPECT_EQ(index.SetSetting(0, 1, filter), 1);
    index.Build();
    std::uint16_t key = 9;
    std::uint16_t order = 9;
    EXPECT_EQ(index.GetSetting(key, order, filter), 2);
    EXPECT_EQ(key, 0);
    EXPECT_EQ(order, 0);
    EXPECT_TRUE(filter.nameFrom.empty());
}

TEST_F(PointIndexTest, EntersTheLastOfNamesThatAreAlikeWhenOpened) {
    const CqHandle first = Add(CString(19, u'N') + u"1");
    const CqHandle second = Add(CString(19, u'N') + u"2");
    EXPECT_EQ(index.FindByName(CString(19, u'N')), second);
    Delete(first);
    EXPECT_EQ(index.FindByName(CString(19, u'N')), 0U);
    index.Build();
    EXPECT_EQ(index.FindByName(CString(19, u'N')), second);
}

TEST_F(PointIndexTest, ForgetsPointsWhoseRecordsTheStoreTookBack) {
    const CqHandle kept = Add(u"P1", 3, 31);
    Begin();
    Add(u"P2", 0, 32);
    Delete(kept);
    Add(u"P1", 0, 33);
    Rollback();
    EXPECT_EQ(View(), (List{kept}));
    EXPECT_EQ(index.FindByName(u"P1"), kept);
    EXPECT_EQ(index.FindByName(u"P2"), 0U);
    EXPECT_TRUE(index.IsEntityInView(31));
    EXPECT_FALSE(index.IsEntityInView(32));
    EXPECT_FALSE(index.IsEntityInView(33));
}

TEST_F(PointIndexTest, TakesBackASettingWithTheStep) {
    Add(u"P1");
    Add(u"P2");
    Begin();
    Add(u"P0");
    EXPECT_EQ(index.SetSetting(7, 1, COORDFILTER{}), 3);
    EXPECT_EQ(View(), (List{3, 2, 1}));
    Rollback();
    EXPECT_EQ(View(), (List{1, 2}));
    Add(u"P15");
    Add(u"P03");
    EXPECT_EQ(View(), (List{1, 2, 4, 3}));
}

TEST_F(PointIndexTest, HoldsEntitiesOfAnyNumber) {
    Add(u"P1", 0, 0xFFFFFFFF);
    EXPECT_TRUE(index.IsEntityInView(0xFFFFFFFF));
    EXPECT_FALSE(index.IsEntityInView(0xFFFFFFFE));
}

TEST_F(PointIndexTest, IsTheSameAfterReopeningAsAfterAddingOneByOne) {
    Begin();
    for (int i = 1; i <= 3000; ++i) {
        Add(FromUtf8("P" + std::to_string(i)), i, static_cast<CqHandle>(i));
    }
    ASSERT_NE(StoreCommitStep(u"POINTS"), 0);
    index.KeepStep();
    const std::vector<CqHandle> built = View();
    index.Build();
    EXPECT_EQ(View(), built);
    for (int i = 1; i <= 3000; ++i) {
        ASSERT_EQ(index.FindByName(FromUtf8("P" + std::to_string(i))), static_cast<CqHandle>(i));
    }
}

}  // namespace
}  // namespace cqsurvey
