#include "settings/FixedSettings.h"

#include <gtest/gtest.h>

#include "cqsurvey/CqSurveyDB.h"

namespace cqsurvey {
namespace {

TEST(FixedSettings, TheDefaultsLackNothingAndAreInTheirRanges) {
    CqSettingsFile settings;
    settings.AddSection(u"OLD");
    PutDefaultSettings(settings);
    CStringList sections;
    settings.GetSectionList(sections);
    EXPECT_EQ(sections, (CStringList{u"SETTINGS", u"BACKGROUND"}));
    EXPECT_TRUE(FindMissingSections(settings).empty());
    EXPECT_TRUE(FindMissingKeys(settings).empty());
    EXPECT_TRUE(FindKeysOutOfRange(settings).empty());
}

TEST(FixedSettings, WhatIsMissingIsFilledInAndTheRestStays) {
    CqSettingsFile settings;
    settings.AddSection(u"MINE");
    settings.AddSection(u"settings");
    settings.WriteString(u"settings", u"VERSION", u"7");
    EXPECT_EQ(FindMissingSections(settings), CStringList{u"BACKGROUND"});
    CStringList missing = FindMissingKeys(settings);
    EXPECT_EQ(missing.size(), 14U);
    EXPECT_EQ(missing.front(), u"SiPointSize");
    EXPECT_EQ(missing.back(), u"BKColor");
    FillInDefaultSettings(settings);
    EXPECT_TRUE(FindMissingSections(settings).empty());
    EXPECT_TRUE(FindMissingKeys(settings).empty());
    CString value;
    EXPECT_EQ(settings.GetString(u"SETTINGS", u"Version", value), 1);
    EXPECT_EQ(value, u"7");
    EXPECT_EQ(settings.GetString(u"BACKGROUND", u"Contrast", value), 1);
    EXPECT_EQ(value, u"100");
    CStringList sections;
    settings.GetSectionList(sections);
    EXPECT_EQ(sections, (CStringList{u"MINE", u"settings", u"BACKGROUND"}));
}

TEST(FixedSettings, AValueOutsideItsRangeIsFoundAndOneThatIsMissingIsNot) {
    CqSettingsFile settings;
    PutDefaultSettings(settings);
    settings.WriteInt(u"SETTINGS", u"JCoordDivision", 20);
    settings.WriteInt(u"BACKGROUND", u"Brightness", -256);
    settings.WriteInt(u"BACKGROUND", u"EntityColor", 255);
    settings.WriteString(u"BACKGROUND", u"Contrast", u"");
    EXPECT_EQ(FindKeysOutOfRange(settings), (CStringList{u"JCoordDivision", u"Brightness"}));
}

}  // namespace
}  // namespace cqsurvey
