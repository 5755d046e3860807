#include "cqjob/settings/SettingRules.h"

#include <gtest/gtest.h>

namespace cqsurvey::cqjob {
namespace {

bool IsGood(std::string_view section, std::string_view key, std::string_view value) {
    return SettingRules::FindFault(section, key, value).empty();
}

TEST(SettingRules, AnUnknownKeyOfAFixedSectionIsATypo) {
    EXPECT_EQ(SettingRules::FindTypo("SETTINGS", "Mapscal"),
              "section SETTINGS has no key \"Mapscal\" (is it Mapscale?); --new adds it");
    EXPECT_TRUE(SettingRules::FindTypo("background", "centrex").find("CenterX") !=
                std::string::npos);
    EXPECT_EQ(SettingRules::FindTypo("SETTINGS", "Crew"),
              "section SETTINGS has no key \"Crew\"; --new adds it");
    EXPECT_EQ(SettingRules::FindTypo("settings", "MAPSCALE"), "");
    EXPECT_EQ(SettingRules::FindTypo("MyOffice", "Mapscal"), "");
}

TEST(SettingRules, TheKeysOfEveryJobTakeTheirRange) {
    EXPECT_TRUE(IsGood("SETTINGS", "JCoordDivision", "1"));
    EXPECT_TRUE(IsGood("settings", "jcoorddivision", "19"));
    EXPECT_FALSE(IsGood("SETTINGS", "JCoordDivision", "0"));
    EXPECT_FALSE(IsGood("SETTINGS", "JCoordDivision", "20"));
    EXPECT_TRUE(IsGood("SETTINGS", "Mapscale", "250"));
    EXPECT_FALSE(IsGood("SETTINGS", "Mapscale", "0"));
    EXPECT_FALSE(IsGood("SETTINGS", "Mapscale", "2.5"));
    EXPECT_FALSE(IsGood("SETTINGS", "Mapscale", ""));
    EXPECT_TRUE(IsGood("SETTINGS", "SiPointSize", "2.5"));
    EXPECT_FALSE(IsGood("SETTINGS", "SiPointSize", "big"));
    EXPECT_FALSE(IsGood("SETTINGS", "SiPointSize", "nan"));
    EXPECT_FALSE(IsGood("SETTINGS", "Version", "2.00"));
    EXPECT_TRUE(IsGood("BACKGROUND", "EntityColor", "-1"));
    EXPECT_FALSE(IsGood("BACKGROUND", "EntityColor", "256"));
    EXPECT_TRUE(IsGood("BACKGROUND", "Brightness", "-255"));
    EXPECT_FALSE(IsGood("BACKGROUND", "Brightness", "256"));
    EXPECT_TRUE(IsGood("BACKGROUND", "Contrast", "65000"));
    EXPECT_FALSE(IsGood("BACKGROUND", "Contrast", "65001"));
    EXPECT_TRUE(IsGood("BACKGROUND", "BKColor", "4294967295"));
    EXPECT_FALSE(IsGood("BACKGROUND", "BKColor", "4294967296"));
}

TEST(SettingRules, OtherKeysTakeAnyTextOfOneLine) {
    EXPECT_TRUE(IsGood("MyOffice", "Crew", "A. Berg, T. Lund"));
    EXPECT_TRUE(IsGood("MyOffice", "Crew", ""));
    EXPECT_TRUE(IsGood("MyOffice", "Formula", "a=b"));
    EXPECT_TRUE(IsGood("SETTINGS", "Mine", "x"));
    EXPECT_FALSE(IsGood("MyOffice", "Crew", "a\nb"));
    EXPECT_FALSE(IsGood("MyOffice", "Crew", " a"));
    EXPECT_FALSE(IsGood("MyOffice", "a=b", "x"));
    EXPECT_FALSE(IsGood("MyOffice", "", "x"));
    EXPECT_FALSE(IsGood("My]Office", "Crew", "x"));
    EXPECT_FALSE(IsGood("", "Crew", "x"));
}

TEST(SettingRules, RefusesALineThatWouldBeReadAsASection) {
    EXPECT_FALSE(IsGood("MyOffice", "Crew", "[a]"));
    EXPECT_FALSE(IsGood("MyOffice", "Crew[", "a]"));
    EXPECT_TRUE(IsGood("MyOffice", "Crew", "[a"));
}

TEST(SettingRules, WritesValuesAsTheLibraryDoes) {
    EXPECT_EQ(SettingRules::Normalise("SETTINGS", "SiPointSize", "2.5"), "2.500");
    EXPECT_EQ(SettingRules::Normalise("SETTINGS", "Mapscale", "0250"), "250");
    EXPECT_EQ(SettingRules::Normalise("BACKGROUND", "BKColor", "4294967295"), "-1");
    EXPECT_EQ(SettingRules::Normalise("MyOffice", "Crew", "0250"), "0250");
}

TEST(SettingRules, TheSectionsOfTheJobItselfTakeOnlyTheirKeys) {
    EXPECT_TRUE(IsGood("COORDINATES", "LengthUnit", "us-ft"));
    EXPECT_TRUE(IsGood("coordinates", "system", "EPSG:2230"));
    EXPECT_FALSE(IsGood("COORDINATES", "Unit", "m"));
    EXPECT_FALSE(IsGood("Identity", "Job", "6f1c3d52-8a0e-4b57-9d0c-2f6f0c1b7a44"));
    EXPECT_TRUE(SettingRules::IsOfSystem("Coordinates"));
    EXPECT_TRUE(SettingRules::IsUnit("lengthunit"));
    EXPECT_FALSE(SettingRules::IsUnit("System"));
}

}  // namespace
}  // namespace cqsurvey::cqjob
