#include "cqsurvey/CqJobSystem.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/Text.h"
#include "support/TempDir.h"

namespace cqsurvey {

namespace {

class CqJobSystemTest : public testing::Test {
 protected:
    void SetUp() override { m_db.CreateNew(m_folder.Path(u"job")); }

    [[nodiscard]] CStringList Sections() {
        CStringList sections;
        m_db.GetSettingsSectionList(sections);
        return sections;
    }

    TempDir m_folder;
    CqSurveyDB m_db;
    CqJobSystem m_system{m_db};
};

const CStringList kFixed = {u"SETTINGS", u"BACKGROUND"};

TEST_F(CqJobSystemTest, ANewJobClaimsNothing) {
    EXPECT_EQ(m_system.GetUnit(), std::nullopt);
    EXPECT_EQ(m_system.GetSystem(), u"");
    EXPECT_FALSE(m_system.StatesSystem());
    EXPECT_EQ(Sections(), kFixed);
}

TEST_F(CqJobSystemTest, TheFormOfBearingsIsKeptAndTakenBack) {
    EXPECT_EQ(m_system.GetAngles(), std::nullopt);
    EXPECT_EQ(m_system.SetAngles(CqAngleForm::Gon), 1);
    EXPECT_EQ(m_system.GetAngles(), CqAngleForm::Gon);
    CString word;
    EXPECT_EQ(m_db.GetSettingsString(u"COORDINATES", u"Angles", word, u""), 1);
    EXPECT_EQ(word, u"gon");
    EXPECT_EQ(m_system.SetAngles(std::nullopt), 1);
    EXPECT_EQ(Sections(), kFixed);
}

TEST_F(CqJobSystemTest, UnitAndSystemAreKeptInASectionOfTheirOwn) {
    EXPECT_EQ(m_system.SetUnit(CqLengthUnit::UsSurveyFoot), 1);
    EXPECT_EQ(m_system.SetSystem(u"EPSG:2230"), 1);
    m_db.Close();
    m_db.Open(m_folder.Path(u"job"));
    EXPECT_EQ(m_system.GetUnit(), CqLengthUnit::UsSurveyFoot);
    EXPECT_EQ(m_system.GetSystem(), u"EPSG:2230");
    EXPECT_TRUE(m_system.StatesSystem());
    EXPECT_EQ(Sections(), (CStringList{u"SETTINGS", u"BACKGROUND", u"COORDINATES"}));
}

TEST_F(CqJobSystemTest, TheCoordinateDivisionNamesThePlaneSystemInMetres) {
    for (const int division : {1, 9, 19}) {
        ASSERT_EQ(m_db.SetJCoordDivision(division), 1);
        EXPECT_EQ(m_system.GetSystem(), FromUtf8("EPSG:" + std::to_string(6668 + division)));
        EXPECT_EQ(m_system.GetUnit(), CqLengthUnit::Metre);
        EXPECT_FALSE(m_system.StatesSystem());
    }
}

TEST_F(CqJobSystemTest, AStatedSystemOutweighsTheCoordinateDivision) {
    ASSERT_EQ(m_db.SetJCoordDivision(9), 1);
    ASSERT_EQ(m_system.SetSystem(u"EPSG:2230"), 1);
    EXPECT_EQ(m_system.GetSystem(), u"EPSG:2230");
    EXPECT_EQ(m_system.GetUnit(), std::nullopt);
}

TEST_F(CqJobSystemTest, TakingBothBackLeavesTheSettingsOfANewJob) {
    ASSERT_EQ(m_system.SetUnit(CqLengthUnit::InternationalFoot), 1);
    ASSERT_EQ(m_system.SetSystem(u"EPSG:2222"), 1);
    EXPECT_EQ(m_system.SetSystem(u""), 1);
    EXPECT_EQ(m_system.SetUnit(std::nullopt), 1);
    EXPECT_EQ(m_system.SetUnit(std::nullopt), 1);
    EXPECT_EQ(Sections(), kFixed);
}

TEST_F(CqJobSystemTest, AnUnknownWordInTheSettingsIsNoUnit) {
    ASSERT_EQ(m_db.SetJCoordDivision(9), 1);
    ASSERT_EQ(m_db.AddSettingsSection(u"coordinates"), 1);
    ASSERT_EQ(m_db.WriteSettingsString(u"COORDINATES", u"LengthUnit", u"furlong"), 1);
    EXPECT_EQ(m_system.GetUnit(), std::nullopt);
}

TEST_F(CqJobSystemTest, ASystemThatDoesNotFitOnALineIsRefused) {
    for (const char16_t* text : {u"two\nlines", u" EPSG:2230", u"EPSG:2230\t", u"GEOGCRS[\"x\"]"}) {
        EXPECT_EQ(m_system.SetSystem(text), 0);
    }
    EXPECT_EQ(Sections(), kFixed);
}

}  // namespace

}  // namespace cqsurvey
