#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <string>
#include <utility>

#include "cqsurvey/CqBatch.h"
#include "cqsurvey/Limits.h"
#include "job/Job.h"
#include "settings/JobSettingsFixture.h"
#include "support/CodePageScope.h"

namespace cqsurvey {
namespace {

using JobSettingsTest = JobSettingsFixture;

TEST_F(JobSettingsTest, TheNamesAreTheExportedOnes) {
    EXPECT_EQ(CqSurveyDB::m_SettingsPath, u":/Settings.ini");
    EXPECT_EQ(CqSurveyDB::m_SettingsSection, u"SETTINGS");
    EXPECT_EQ(CqSurveyDB::m_BGSettingsSection, u"BACKGROUND");
    EXPECT_EQ(CqSurveyDB::m_Version, u"1.00");
    EXPECT_EQ(CqSurveyDB::m_BGName, u":/BackgroundImage.img");
    CStringList keys;
    m_db.GetSettingsKeyList(CqSurveyDB::m_SettingsSection, keys);
    EXPECT_TRUE(std::equal(keys.begin(), keys.end(), CqSurveyDB::m_SettingsKey.begin(),
                           CqSurveyDB::m_SettingsKey.end()));
    m_db.GetSettingsKeyList(CqSurveyDB::m_BGSettingsSection, keys);
    EXPECT_TRUE(std::equal(keys.begin(), keys.end(), CqSurveyDB::m_BGSettingsKey.begin(),
                           CqSurveyDB::m_BGSettingsKey.end()));
}

TEST_F(JobSettingsTest, ANewJobsFileHoldsTheDefaultsByteForByte) {
    EXPECT_EQ(Exported(), kDefaultSettings);
    m_db.Close();
    EXPECT_EQ(FileOfClosedJob(u"Settings.ini"), kDefaultSettings);
}

TEST_F(JobSettingsTest, ANewJobAfterAnotherBeginsWithTheDefaults) {
    m_db.SetSiPointSize(3);
    m_db.AddSettingsSection(u"MINE");
    m_db.CreateNew(m_folder.Path(u"other"));
    EXPECT_EQ(Exported(), kDefaultSettings);
}

TEST_F(JobSettingsTest, TheDefaultsReadAsTheyWereWritten) {
    EXPECT_EQ(m_db.GetSiPointSize(), 5.0);
    EXPECT_EQ(m_db.GetJCoordDivision(), 0);
    EXPECT_EQ(m_db.GetBackgroundColor(), 0xFFFFFFU);
    int color = 7;
    EXPECT_EQ(m_db.IsDrawingForceMonotone(color), 0);
    EXPECT_EQ(color, -1);
    int brightness = 7;
    int contrast = 7;
    int monotone = 7;
    m_db.GetBackgroundImageSettings(brightness, contrast, monotone);
    EXPECT_EQ(brightness, 0);
    EXPECT_EQ(contrast, 100);
    EXPECT_EQ(monotone, 0);
    int scale = 7;
    EXPECT_EQ(m_db.GetSettingsInt(u"settings", u"mapscale", scale, 1), 1);
    EXPECT_EQ(scale, 500);
}

TEST_F(JobSettingsTest, TheSizeOfASymbolIsReadInSinglePrecision) {
    m_db.SetSiPointSize(2.5);
    EXPECT_EQ(m_db.GetSiPointSize(), 2.5);
    m_db.SetSiPointSize(0.1);
    EXPECT_EQ(m_db.GetSiPointSize(), static_cast<double>(0.1F));
    m_db.SetSiPointSize(-1e9);
    Reopen();
    EXPECT_EQ(m_db.GetSiPointSize(), -1e9);
    EXPECT_EQ(Value(u"SETTINGS", u"SiPointSize"), u"-1000000000.000");
}

TEST_F(JobSettingsTest, TheDivisionNumberIs1To19) {
    EXPECT_EQ(m_db.SetJCoordDivision(19), 1);
    for (const int division : {0, 20, -1, std::numeric_limits<int>::max()}) {
        EXPECT_EQ(m_db.SetJCoordDivision(division), 0);
        EXPECT_EQ(m_db.GetJCoordDivision(), 19);
    }
    EXPECT_EQ(m_db.SetJCoordDivision(1), 1);
    Reopen();
    EXPECT_EQ(m_db.GetJCoordDivision(), 1);
}

TEST_F(JobSettingsTest, TheForcedColourIsNoneOr0To255) {
    int color = 7;
    EXPECT_EQ(m_db.SetDrawingForceMonotone(255), 1);
    EXPECT_EQ(m_db.IsDrawingForceMonotone(color), 1);
    EXPECT_EQ(color, 255);
    EXPECT_EQ(m_db.SetDrawingForceMonotone(256), 0);
    EXPECT_EQ(m_db.SetDrawingForceMonotone(-2), 0);
    EXPECT_EQ(m_db.IsDrawingForceMonotone(color), 1);
    EXPECT_EQ(color, 255);
    EXPECT_EQ(m_db.SetDrawingForceMonotone(0), 1);
    EXPECT_EQ(m_db.IsDrawingForceMonotone(color), 1);
    EXPECT_EQ(color, 0);
    EXPECT_EQ(m_db.SetDrawingForceMonotone(-1), 1);
    EXPECT_EQ(m_db.IsDrawingForceMonotone(color), 0);
    EXPECT_EQ(color, -1);
}

TEST_F(JobSettingsTest, AnAbsentFixedKeyReadsAsItsDefault) {
    for (const CString& key : CqSurveyDB::m_SettingsKey) {
        EXPECT_EQ(m_db.WriteSettingsString(u"SETTINGS", key, u""), 1);
    }
    for (const CString& key : CqSurveyDB::m_BGSettingsKey) {
        EXPECT_EQ(m_db.WriteSettingsString(u"BACKGROUND", key, u""), 1);
    }
    EXPECT_EQ(Exported(), "[SETTINGS]\r\n[BACKGROUND]\r\n");
    EXPECT_EQ(m_db.GetSiPointSize(), 5.0);
    EXPECT_EQ(m_db.GetJCoordDivision(), 0);
    EXPECT_EQ(m_db.GetBackgroundColor(), 0xFFFFFFU);
    int color = 7;
    EXPECT_EQ(m_db.IsDrawingForceMonotone(color), 1);
    EXPECT_EQ(color, 7);
    color = -1;
    EXPECT_EQ(m_db.IsDrawingForceMonotone(color), 0);
    int brightness = 7;
    int contrast = 8;
    int monotone = 9;
    m_db.GetBackgroundImageSettings(brightness, contrast, monotone);
    EXPECT_EQ(brightness, 7);
    EXPECT_EQ(contrast, 8);
    EXPECT_EQ(monotone, 9);
    // Setting brings a key back.
    EXPECT_EQ(m_db.SetJCoordDivision(4), 1);
    EXPECT_EQ(m_db.GetJCoordDivision(), 4);
}

TEST_F(JobSettingsTest, SectionsOfTheCallersOwnAreKept) {
    EXPECT_EQ(m_db.AddSettingsSection(u"Mine"), 1);
    EXPECT_EQ(m_db.AddSettingsSection(u"MINE"), 0);
    EXPECT_EQ(m_db.AddSettingsSection(u"settings"), 0);
    EXPECT_EQ(m_db.WriteSettingsString(u"mine", u"Note", u"caf\u00e9 \u65e5 = [1"), 1);
    EXPECT_EQ(m_db.WriteSettingsInt(u"MINE", u"Count", -7), 1);
    Reopen();
    CStringList list;
    EXPECT_EQ(m_db.GetSettingsSectionList(list), 1);
    EXPECT_EQ(list, (CStringList{u"SETTINGS", u"BACKGROUND", u"Mine"}));
    EXPECT_EQ(m_db.GetSettingsKeyList(u"mine", list), 1);
    EXPECT_EQ(list, (CStringList{u"Note", u"Count"}));
    EXPECT_EQ(m_db.GetSettingsKeyList(u"none", list), 0);
    EXPECT_EQ(Value(u"MINE", u"NOTE"), u"caf\u00e9 \u65e5 = [1");
    int count = 0;
    EXPECT_EQ(m_db.GetSettingsInt(u"Mine", u"Count", count, 1), 1);
    EXPECT_EQ(count, -7);
    EXPECT_EQ(m_db.WriteSettingsString(u"Mine", u"Note", u""), 1);
    EXPECT_EQ(m_db.WriteSettingsString(u"Mine", u"Note", u""), 0);
    EXPECT_EQ(m_db.DeleteSettingsSection(u"MINE"), 1);
    EXPECT_EQ(m_db.DeleteSettingsSection(u"Mine"), 0);
    Reopen();
    EXPECT_EQ(Exported(), kDefaultSettings);
}

TEST_F(JobSettingsTest, TheFixedSectionsCannotBeDeleted) {
    for (const char16_t* name : {u"settings", u"SETTINGS", u"Background", u"BACKGROUND"}) {
        EXPECT_EQ(m_db.DeleteSettingsSection(name), 0);
    }
    EXPECT_EQ(Exported(), kDefaultSettings);
}

TEST_F(JobSettingsTest, AnAbsentValueGivesTheDefaultAndZero) {
    int number = 3;
    CString text = u"old";
    EXPECT_EQ(m_db.GetSettingsInt(u"SETTINGS", u"none", number, 42), 0);
    EXPECT_EQ(number, 42);
    EXPECT_EQ(m_db.GetSettingsInt(u"none", u"Version", number, 43), 0);
    EXPECT_EQ(number, 43);
    EXPECT_EQ(m_db.GetSettingsString(u"none", u"Version", text, u"default"), 0);
    EXPECT_EQ(text, u"default");
    EXPECT_EQ(m_db.GetSettingsString(u"SETTINGS", u"VERSION", text, u"default"), 1);
    EXPECT_EQ(text, u"1.00");
}

TEST_F(JobSettingsTest, WritingIntoAnAbsentSectionIsRefused) {
    EXPECT_EQ(m_db.WriteSettingsString(u"none", u"k", u"v"), 0);
    EXPECT_EQ(m_db.WriteSettingsInt(u"none", u"k", 1), 0);
    EXPECT_EQ(Exported(), kDefaultSettings);
}

TEST_F(JobSettingsTest, TheGenericWritesDoNotGuardTheFixedKeys) {
    EXPECT_EQ(m_db.WriteSettingsString(u"settings", u"sipointsize", u"text"), 1);
    EXPECT_EQ(m_db.GetSiPointSize(), 0);
    EXPECT_EQ(m_db.WriteSettingsInt(u"settings", u"JCoordDivision", 99), 1);
    EXPECT_EQ(m_db.GetJCoordDivision(), 99);
}

TEST_F(JobSettingsTest, EveryChangeIsInTheFileAtOnce) {
    m_db.SetSiPointSize(1);
    m_db.SetJCoordDivision(2);
    m_db.SetDrawingForceMonotone(3);
    m_db.SetBackgroundImageSettings(4, 5, 6);
    m_db.SetBackgroundColor(7);
    m_db.AddSettingsSection(u"S");
    EXPECT_NE(m_db.WriteSettingsInt(u"S", u"k", 8), 0);
    std::string expected = Replaced(kDefaultSettings, "SiPointSize=5.000", "SiPointSize=1.000");
    expected = Replaced(expected, "JCoordDivision=0", "JCoordDivision=2");
    expected = Replaced(expected, "EntityColor=-1", "EntityColor=3");
    expected = Replaced(expected, "Brightness=0", "Brightness=4");
    expected = Replaced(expected, "Contrast=100", "Contrast=5");
    expected = Replaced(expected, "Monotone=0", "Monotone=6");
    expected = Replaced(expected, "BKColor=16777215", "BKColor=7");
    EXPECT_EQ(Exported(), expected + "[S]\r\nk=8\r\n");
}

TEST_F(JobSettingsTest, OpeningReplacesTheModelAndClosingKeepsIt) {
    m_db.SetSiPointSize(3);
    m_db.Close();
    EXPECT_EQ(m_db.GetSiPointSize(), 3);
    CqSurveyDB other;
    EXPECT_EQ(other.GetSiPointSize(), 5);
    other.Open(JobPath());
    EXPECT_EQ(other.GetSiPointSize(), 3);
}

TEST_F(JobSettingsTest, AFixedKeyIsToldFromOneOfTheCallers) {
    const auto reserved = &Job::CheckSettingsIniFileReserved;
    for (const CString& key : CqSurveyDB::m_SettingsKey) {
        EXPECT_EQ(reserved(u"settings", key), 1);
        EXPECT_EQ(reserved(u"BACKGROUND", key), 0);
    }
    for (const CString& key : CqSurveyDB::m_BGSettingsKey) {
        EXPECT_EQ(reserved(u"Background", key), 1);
        EXPECT_EQ(reserved(u"SETTINGS", key), 0);
    }
    EXPECT_EQ(reserved(u"SETTINGS", u"VERSION"), 1);
    EXPECT_EQ(reserved(u"SETTINGS", u"none"), 0);
    EXPECT_EQ(reserved(u"none", u"Version"), 0);
}

TEST_F(JobSettingsTest, TextsOfEveryPageAreReadBack) {
    for (const auto& [number, text] :
         {std::pair{65001, u"\u00e9\u65e5\U0001f600"}, std::pair{1252, u"\u00e9\u20ac"},
          std::pair{932, u"\u65e5\uff76\u8868"}}) {
        const CodePageScope page(number);
        m_db.CreateNew(m_folder.Path(FromUtf8("page" + std::to_string(number))));
        ASSERT_EQ(m_db.AddSettingsSection(u"S"), 1);
        CqBatch batch(m_db);
        for (std::size_t before = 100; before < 260; ++before) {
            CString value(before, u'x');
            for (int i = 0; i < 80; ++i) {
                value += text;
            }
            ASSERT_EQ(m_db.WriteSettingsString(u"S", text, value), 1);
            ASSERT_EQ(m_db.ExportSettingsFile(HostPath()), 1);
            ASSERT_EQ(m_db.ImportSettingsFile(HostPath()), 1);
            ASSERT_EQ(Value(u"S", text), value) << number << ' ' << before;
        }
        batch.Commit();
        m_db.Close();
    }
}

TEST_F(JobSettingsTest, WritesNoMoreThanItReadsAgain) {
    EXPECT_EQ(m_db.AddSettingsSection(u"MINE"), 1);
    EXPECT_EQ(m_db.WriteSettingsString(u"MINE", u"key", CString(limits::kSettingsText, u'x')), 0);
    EXPECT_EQ(m_db.WriteSettingsString(u"MINE", u"key", CString(limits::kSettingsText / 2, u'x')),
              1);
    EXPECT_EQ(m_db.WriteSettingsString(u"MINE", u"more", CString(limits::kSettingsText / 2, u'x')),
              0);
    CString value;
    EXPECT_EQ(m_db.GetSettingsString(u"MINE", u"more", value, u"none"), 0);
}

}  // namespace
}  // namespace cqsurvey
