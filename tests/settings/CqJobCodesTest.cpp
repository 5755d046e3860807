#include "cqsurvey/CqJobCodes.h"

#include <gtest/gtest.h>

#include "cqsurvey/CqJobSystem.h"
#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/Limits.h"
#include "support/CodePageScope.h"
#include "support/TempDir.h"

namespace cqsurvey {

namespace {

CqCodeTable Sample() {
    CqCodeTable table;
    EXPECT_EQ(table.Add({.code = u"EP",
                         .number = 12,
                         .layer = u"Road",
                         .color = 7,
                         .line = 0,
                         .kind = CqCodeKind::Line}),
              1);
    EXPECT_EQ(table.Add({.code = u"TREE*",
                         .number = -3,
                         .layer = u" Bäume [alt], 100 % ",
                         .symbol = u"deciduous",
                         .size = 2.5,
                         .label = u"{text} ",
                         .text = u"木="}),
              1);
    EXPECT_EQ(table.Add({.code = u"BLD", .layer = u"a b", .kind = CqCodeKind::ClosedLine}), 1);
    EXPECT_EQ(table.SetWords(u"numbers,begin=I"), 1);
    return table;
}

class CqJobCodesTest : public testing::Test {
 protected:
    void SetUp() override { m_db.CreateNew(m_folder.Path(u"job")); }
    void Reopen() {
        m_db.Close();
        m_db.Open(m_folder.Path(u"job"));
    }

    TempDir m_folder;
    CqSurveyDB m_db;
    CqJobCodes m_codes{m_db};
};

TEST_F(CqJobCodesTest, ANewJobHasNoTable) {
    std::size_t damaged = 7;
    EXPECT_TRUE(m_codes.Get(&damaged) == CqCodeTable());
    EXPECT_EQ(damaged, 0U);
}

TEST_F(CqJobCodesTest, ATableStaysInTheJobAsItIs) {
    ASSERT_EQ(m_codes.Set(Sample()), 1);
    EXPECT_TRUE(m_codes.Get() == Sample());
    Reopen();
    EXPECT_TRUE(m_codes.Get() == Sample());
    CString row;
    m_db.GetSettingsString(CqJobCodes::kSection, u"1", row, u"");
    EXPECT_EQ(row, u"EP,12,Road,7,0,line,,0,,");
}

TEST_F(CqJobCodesTest, ANarrowCodePageLosesNothing) {
    const CodePageScope page(1252);
    ASSERT_EQ(m_codes.Set(Sample()), 1);
    Reopen();
    EXPECT_TRUE(m_codes.Get() == Sample());
}

TEST_F(CqJobCodesTest, ANewTableReplacesTheOldOneAndAnEmptyOneRemovesIt) {
    ASSERT_EQ(m_codes.Set(Sample()), 1);
    CqCodeTable other;
    ASSERT_EQ(other.Add({.code = u"X"}), 1);
    ASSERT_EQ(m_codes.Set(other), 1);
    EXPECT_TRUE(m_codes.Get() == other);
    ASSERT_EQ(m_codes.Set({}), 1);
    EXPECT_TRUE(m_codes.Get().IsEmpty());
    CStringList sections;
    m_db.GetSettingsSectionList(sections);
    EXPECT_EQ(sections.size(), 2U);
}

TEST_F(CqJobCodesTest, RowsThatMakeNoSenseAreCounted) {
    ASSERT_EQ(m_codes.Set(Sample()), 1);
    for (const char16_t* row :
         {u"x", u"X,1,,,,blob,,0,,", u"X,,,,,line,,0,,", u"%00G1,1,,,,line,,0,,",
          u"Y,1,,,,line,,0,,,", u"EP,1,,,,line,,0,,", u"%12"}) {
        ASSERT_EQ(m_db.WriteSettingsString(CqJobCodes::kSection, u"9", row), 1);
        std::size_t damaged = 0;
        EXPECT_TRUE(m_codes.Get(&damaged) == Sample());
        EXPECT_EQ(damaged, 1U);
    }
}

TEST_F(CqJobCodesTest, ATableThatDoesNotFitLeavesTheOldOne) {
    ASSERT_EQ(m_codes.Set(Sample()), 1);
    const CString filler(limits::kSettingsText - 20000, u'x');
    ASSERT_EQ(m_db.AddSettingsSection(u"MINE"), 1);
    ASSERT_EQ(m_db.WriteSettingsString(u"MINE", u"k", filler), 1);
    CqCodeTable large;
    for (char16_t i = 0; i < 500; ++i) {
        ASSERT_EQ(large.Add({.code = CString(60, static_cast<char16_t>(u'a' + i % 26)) +
                                     static_cast<char16_t>(0x4E00 + i)}),
                  1);
    }
    EXPECT_EQ(m_codes.Set(large), 0);
    EXPECT_TRUE(m_codes.Get() == Sample());
    Reopen();
    EXPECT_TRUE(m_codes.Get() == Sample());
}

TEST_F(CqJobCodesTest, TextsAreTwoMillimetresHighAtTheMapScaleInTheUnit) {
    EXPECT_DOUBLE_EQ(m_codes.GetTextHeight(), 1.0);
    EXPECT_EQ(m_db.WriteSettingsInt(CqSurveyDB::m_SettingsSection, u"Mapscale", 250), 1);
    EXPECT_DOUBLE_EQ(m_codes.GetTextHeight(), 0.5);
    CqJobSystem(m_db).SetUnit(CqLengthUnit::InternationalFoot);
    EXPECT_DOUBLE_EQ(m_codes.GetTextHeight(), 0.5 / 0.3048);
    EXPECT_EQ(m_db.WriteSettingsInt(CqSurveyDB::m_SettingsSection, u"Mapscale", -5), 1);
    EXPECT_GT(m_codes.GetTextHeight(), 0.0);
}

}  // namespace

}  // namespace cqsurvey
