#include "tables/CqPointTable.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "cqsurvey/CqSurveyException.h"
#include "cqsurvey/Text.h"
#include "store/Qrfs.h"
#include "support/FakePointRecords.h"
#include "support/TempDir.h"

namespace cqsurvey {
namespace {

class CqPointTableTest : public testing::Test {
 protected:
    void SetUp() override {
        ASSERT_NE(QrfsCreateVolume(dir.Path(u"points.job")), 0);
        ASSERT_NE(QrfsMount(dir.Path(u"points.job"), u"POINTS"), 0);
        table.Create(kPath);
    }
    void TearDown() override {
        table.Close();
        QrfsUnmount(u"POINTS");
    }

    CqHandle Add(const CString& name, std::int32_t code = 0, CqHandle entity = 0) {
        const CqHandle handle = table.AppendRecord(FakePointRecords::Make(name, code, 1, entity));
        table.EnterName(handle);
        table.InsertIntoView();
        return handle;
    }
    void Delete(CqHandle handle) {
        table.GoTo(handle);
        table.RemoveName();
        table.RemoveFromView();
        table.DeleteCurrent();
    }
    void Begin() {
        table.KeepStep();
        ASSERT_NE(QrfsBeginStep(u"POINTS"), 0);
    }
    void Rollback() {
        ASSERT_NE(QrfsRollbackStep(u"POINTS"), 0);
        table.UndoStep();
    }
    [[nodiscard]] std::vector<CqHandle> View() const {
        std::vector<CqHandle> view;
        for (std::int32_t i = 0; i < table.ViewSize(); ++i) {
            view.push_back(table.ViewAt(i));
        }
        return view;
    }

    const CString kPath = u"POINTS:/_PointData";
    TempDir dir;
    CqPointTable table;
};

using List = std::vector<CqHandle>;

TEST_F(CqPointTableTest, IsEmptyWhenCreated) {
    EXPECT_EQ(table.ViewSize(), 0);
    EXPECT_EQ(table.FindByName(u"P1"), 0U);
    EXPECT_FALSE(table.IsEntityInView(0));
}

TEST_F(CqPointTableTest, MakesTheFoundPointTheCurrentRecord) {
    const CqHandle first = Add(u"P1", 5);
    const CqHandle second = Add(u"P2", 6);
    EXPECT_EQ(table.FindByName(u"P1"), first);
    EXPECT_EQ(table.GetCurrentHandle(), first);
    EXPECT_EQ(table.Get<"FeatureCode">(), 5);
    EXPECT_TRUE(table.HasName(u"P2"));
    EXPECT_EQ(table.GetCurrentHandle(), first);
    EXPECT_EQ(table.FindByName(u"P3"), 0U);
    EXPECT_EQ(table.GetCurrentHandle(), first);
    EXPECT_EQ(table.FindByName(u""), 0U);
    EXPECT_EQ(table.FindByName(u"P2"), second);
}

TEST_F(CqPointTableTest, BuildsItsIndexesWhenOpened) {
    Add(u"P10", 0, 20);
    Add(u"P2", 0, 21);
    Add(u"");
    table.Close();
    EXPECT_EQ(table.ViewSize(), 0);
    table.Open(kPath);
    EXPECT_EQ(View(), (List{3, 2, 1}));
    EXPECT_EQ(table.FindByName(u"P10"), 1U);
    EXPECT_TRUE(table.IsEntityInView(21));
    EXPECT_FALSE(table.IsEntityInView(22));
}

TEST_F(CqPointTableTest, OpensWithTheDefaultSetting) {
    Add(u"P1");
    Add(u"P2");
    COORDFILTER filter;
    filter.nameFrom = u"P2";
    EXPECT_EQ(table.SetSetting(0, 1, filter), 1);
    table.Open(kPath);
    std::uint16_t key = 9;
    std::uint16_t order = 9;
    EXPECT_EQ(table.GetSetting(key, order, filter), 2);
    EXPECT_EQ(key, 0);
    EXPECT_EQ(order, 0);
    EXPECT_TRUE(filter.nameFrom.empty());
}

TEST_F(CqPointTableTest, EntersTheLastOfNamesThatAreAlikeWhenOpened) {
    const CqHandle first = Add(CString(19, u'N') + u"1");
    const CqHandle second = Add(CString(19, u'N') + u"2");
    EXPECT_EQ(table.FindByName(CString(19, u'N')), second);
    Delete(first);
    EXPECT_EQ(table.FindByName(CString(19, u'N')), 0U);
    table.Open(kPath);
    EXPECT_EQ(table.FindByName(CString(19, u'N')), second);
}

TEST_F(CqPointTableTest, ForgetsPointsWhoseRecordsTheStoreTookBack) {
    const CqHandle kept = Add(u"P1", 3, 31);
    Begin();
    Add(u"P2", 0, 32);
    Delete(kept);
    Add(u"P1", 0, 33);
    Rollback();
    EXPECT_EQ(View(), (List{kept}));
    EXPECT_EQ(table.FindByName(u"P1"), kept);
    EXPECT_EQ(table.FindByName(u"P2"), 0U);
    EXPECT_TRUE(table.IsEntityInView(31));
    EXPECT_FALSE(table.IsEntityInView(32));
    EXPECT_FALSE(table.IsEntityInView(33));
}

TEST_F(CqPointTableTest, TakesBackASettingWithTheStep) {
    Add(u"P1");
    Add(u"P2");
    Begin();
    Add(u"P0");
    EXPECT_EQ(table.SetSetting(7, 1, COORDFILTER{}), 3);
    EXPECT_EQ(View(), (List{3, 2, 1}));
    Rollback();
    EXPECT_EQ(View(), (List{1, 2}));
    Add(u"P15");
    Add(u"P03");
    EXPECT_EQ(View(), (List{1, 2, 4, 3}));
}

TEST_F(CqPointTableTest, HoldsEntitiesOfAnyNumber) {
    table.EnterEntity(0xFFFFFFFF);
    EXPECT_TRUE(table.IsEntityInView(0xFFFFFFFF));
    EXPECT_FALSE(table.IsEntityInView(0xFFFFFFFE));
}

TEST_F(CqPointTableTest, IsTheSameAfterReopeningAsAfterAddingOneByOne) {
    Begin();
    for (int i = 1; i <= 3000; ++i) {
        Add(FromUtf8("P" + std::to_string(i)), i, static_cast<CqHandle>(i));
    }
    ASSERT_NE(QrfsCommitStep(u"POINTS"), 0);
    table.KeepStep();
    const std::vector<CqHandle> built = View();
    table.Open(kPath);
    EXPECT_EQ(View(), built);
    for (int i = 1; i <= 3000; ++i) {
        ASSERT_EQ(table.FindByName(FromUtf8("P" + std::to_string(i))), static_cast<CqHandle>(i));
    }
}

}  // namespace
}  // namespace cqsurvey
