#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "cqsurvey/CqBatch.h"
#include "cqsurvey/CqJobCheck.h"
#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/Limits.h"
#include "cqsurvey/Text.h"
#include "store/Qrfs.h"
#include "store/StoreTesting.h"
#include "support/FileSizeLimit.h"
#include "support/HostBytes.h"
#include "support/MountedVolume.h"
#include "support/TempDir.h"

namespace cqsurvey {
namespace {

using testing::HasSubstr;

/// The blocks of the settings file.
const std::string kBlocks =
    "Volume_Block WHERE Position >> 32 = "
    "(SELECT File FROM Volume_File WHERE Name = 'Settings.ini')";

/// A job with settings of its own, which a test damages behind the library's back.
class DamagedSettings : public testing::Test {
 protected:
    DamagedSettings() {
        CqSurveyDB db;
        db.CreateNew(m_path);
        db.SetSiPointSize(3);
        db.AddSettingsSection(u"MINE");
        EXPECT_EQ(db.WriteSettingsString(u"MINE", u"crew", CString(5000, u'x')), 1);
        db.Close();
        m_settings = FileBytes(u"Settings.ini");
    }

    /// The bytes of a file of the closed job, "(none)" when there is no such file.
    std::string FileBytes(const CString& name) {
        EXPECT_DONE(QrfsMount(m_path, u"LOOK"));
        const bool exists = QrfsGetFileAttributes(u"LOOK:/" + name) != 0xFFFF;
        std::string bytes = exists ? VolumeFileBytes(u"LOOK:/" + name) : "(none)";
        EXPECT_DONE(QrfsUnmount(u"LOOK"));
        return bytes;
    }

    void PutSettings(const std::string& bytes) {
        EXPECT_DONE(QrfsMount(m_path, u"LOOK"));
        PutVolumeFile(u"LOOK:/Settings.ini", bytes);
        EXPECT_DONE(QrfsUnmount(u"LOOK"));
    }

    void Damage(const std::string& sql) { RunSql(m_host, sql); }

    /// What is wrong with the settings of the closed job, "" when nothing is.
    std::string WhatIsWrong() {
        CString text;
        return CqSurveyDB::GetSettingsDamage(m_path, text, nullptr) != 0 ? ToUtf8(text) : "";
    }

    /// What a check says of the closed job.
    std::vector<std::string> Findings() {
        CqSurveyDB db;
        db.OpenReadOnly(m_path);
        std::vector<std::string> all;
        const CqJobCheck check(db);
        for (const CqJobFinding& finding : check.GetFindings()) {
            EXPECT_EQ(finding.table, "Settings.ini");
            all.push_back((finding.kind == CqJobFinding::Kind::Note ? "note: " : "") +
                          finding.text);
        }
        return all;
    }

    TempDir m_folder;
    CString m_path = m_folder.Path(u"a.job");
    std::string m_host = m_folder.Utf8("a.job");
    std::string m_settings;
};

TEST_F(DamagedSettings, EveryKindIsTurnedIntoDefaultsToldAndKeptAtTheFirstChange) {
    const std::string first = m_settings.substr(0, 4032);
    const std::string second = m_settings.substr(4032);
    const std::string sound = ReadHostFile(m_host);
    struct {
        std::string sql;
        std::string told;
        std::string kept;
        double size;  // of symbols, as far as it can still be read
    } const cases[] = {
        {"DELETE FROM " + kBlocks, "cannot be read: file 1 of", "", 5},
        {"DELETE FROM " + kBlocks + " AND Position & 1 = 1", "cannot be read", first, 5},
        {"DELETE FROM " + kBlocks + " AND Position & 1 = 0", "cannot be read", second, 5},
        {"UPDATE Volume_Block SET Bytes = x'5B535D' WHERE Position & 1 = 1 AND Position IN "
         "(SELECT Position FROM " +
             kBlocks + ")",
         "cannot be read", first + "[S]", 3},
        {"UPDATE Volume_File SET Length = 0 WHERE Name = 'Settings.ini'", "cannot be read",
         m_settings, 5},
        {"UPDATE Volume_File SET Length = Length + 1 WHERE Name = 'Settings.ini'", "cannot be read",
         m_settings, 3},
        {"UPDATE Volume_File SET Length = 2147483647 WHERE Name = 'Settings.ini'", "cannot be read",
         m_settings, 5},
        {"UPDATE Volume_Block SET Bytes = zeroblob(length(Bytes)) WHERE Position IN "
         "(SELECT Position FROM " +
             kBlocks + ")",
         "lack the section SETTINGS, BACKGROUND", std::string(m_settings.size(), '\0'), 5},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.sql);
        WriteHostFile(m_host, sound);
        EXPECT_EQ(WhatIsWrong(), "");
        Damage(each.sql);
        EXPECT_THAT(WhatIsWrong(), HasSubstr(each.told));
        EXPECT_THAT(Findings(), testing::ElementsAre(HasSubstr(each.told)));
        CqSurveyDB db(m_path);
        EXPECT_EQ(db.GetSiPointSize(), each.size);
        int color = 7;
        EXPECT_EQ(db.IsDrawingForceMonotone(color), 0);
        EXPECT_EQ(color, -1);
        db.Close();
        EXPECT_THAT(WhatIsWrong(), HasSubstr(each.told)) << "opening changes nothing";
        EXPECT_EQ(FileBytes(u"Settings.damaged"), "(none)");
        db.Open(m_path);
        EXPECT_EQ(db.SetJCoordDivision(4), 1);
        db.Close();
        EXPECT_TRUE(FileBytes(u"Settings.damaged") == each.kept);
        EXPECT_THAT(FileBytes(u"Settings.ini"), HasSubstr("JCoordDivision=4\r\n"));
        EXPECT_EQ(WhatIsWrong(), "");
        EXPECT_THAT(Findings(), testing::ElementsAre(HasSubstr("Settings.damaged")));
        db.Open(m_path);
        EXPECT_EQ(db.GetJCoordDivision(), 4);
        EXPECT_EQ(db.GetSiPointSize(), each.size);
        EXPECT_EQ(CqJobCheck(db).GetCount(), 0U);
        // What is in the file now can be imported anywhere: no key is missing.
        ASSERT_EQ(db.ExportSettingsFile(m_folder.Path(u"out")), 1);
        EXPECT_EQ(db.ImportSettingsFile(m_folder.Path(u"out")), 1);
    }
}

TEST_F(DamagedSettings, OneOfTheFixedSectionsMayBeLost) {
    PutSettings("[SETUINGS]\r\nSiPointSize=3\r\n[BACKGROUND]\r\nEntityColor=7\r\n");
    EXPECT_EQ(WhatIsWrong(), "the settings lack the section SETTINGS");
    CqSurveyDB db(m_path);
    EXPECT_EQ(db.GetSiPointSize(), 5);
    int color = 0;
    EXPECT_EQ(db.IsDrawingForceMonotone(color), 1);
    db.SetSiPointSize(2);
    db.Close();
    db.Open(m_path);
    EXPECT_EQ(db.GetSiPointSize(), 2);
    EXPECT_EQ(db.IsDrawingForceMonotone(color), 1);
    EXPECT_EQ(color, 7);
}

TEST_F(DamagedSettings, ASettingsFileThatIsTooLongIsKeptWhole) {
    const std::string bytes =
        "[SETTINGS]\r\nSiPointSize=3\r\n" + std::string(limits::kSettingsBytes, 'x');
    PutSettings(bytes);
    EXPECT_THAT(WhatIsWrong(), HasSubstr("more than 4194304 bytes"));
    CqSurveyDB db(m_path);
    EXPECT_EQ(db.GetSiPointSize(), 5);
    db.SetSiPointSize(2);
    db.Close();
    EXPECT_TRUE(FileBytes(u"Settings.damaged") == bytes);
    EXPECT_EQ(WhatIsWrong(), "");
}

TEST_F(DamagedSettings, WithoutTheFileNothingIsSavedAndItsBlocksStay) {
    Damage("DELETE FROM Volume_File WHERE Name = 'Settings.ini'");
    EXPECT_EQ(WhatIsWrong(), "the settings are gone, and no setting can be saved");
    EXPECT_THAT(Findings(), testing::ElementsAre(HasSubstr("are gone")));
    CqSurveyDB db(m_path);
    EXPECT_EQ(db.GetSiPointSize(), 5);
    EXPECT_EQ(db.AddSettingsSection(u"S"), 0);
    PutHostFile(m_folder.Utf8("image"), "picture");
    EXPECT_EQ(db.StoreBackgroundImageFile(m_folder.Path(u"image"), 1, CVector(), CVector(), 0), 1);
    db.Close();
    EXPECT_EQ(FileBytes(u"Settings.damaged"), "(none)");
    EXPECT_EQ(FileBytes(u"BackgroundImage.img"), "picture");
    Damage("INSERT INTO Volume_File VALUES(1, 'Settings.ini', " +
           std::to_string(m_settings.size()) + ", 128)");
    EXPECT_TRUE(FileBytes(u"Settings.ini") == m_settings);
}

TEST_F(DamagedSettings, AnUndoneChangeUndoesTheKeepingToo) {
    Damage("DELETE FROM " + kBlocks + " AND Position & 1 = 1");
    const std::string wrong = WhatIsWrong();
    CqSurveyDB db(m_path);
    for (int round = 0; round < 2; ++round) {
        const CqBatch batch(db);
        EXPECT_EQ(db.SetJCoordDivision(4), 1);
        EXPECT_EQ(db.AddSettingsSection(u"S"), 1);
        CString text;
        EXPECT_EQ(CqSurveyDB::GetSettingsDamage(CString(), text, &db), 0);
    }
    {
        const FileSizeLimit full(0);
        EXPECT_THROW(db.SetJCoordDivision(4), CqSurveyException);
    }
    EXPECT_EQ(db.GetJCoordDivision(), 0);
    CString text;
    EXPECT_EQ(CqSurveyDB::GetSettingsDamage(m_path, text, &db), 1);
    EXPECT_EQ(ToUtf8(text), wrong);
    EXPECT_EQ(db.SetJCoordDivision(5), 1);
    db.SetSiPointSize(1);
    db.Close();
    EXPECT_TRUE(FileBytes(u"Settings.damaged") == m_settings.substr(0, 4032));
    EXPECT_EQ(FileBytes(u"Settings.damaged2"), "(none)");
}

TEST_F(DamagedSettings, ARefusedChangeLeavesThemAlone) {
    PutSettings("no settings");
    CqSurveyDB db(m_path);
    EXPECT_EQ(db.WriteSettingsString(u"NONE", u"k", u"v"), 0);
    EXPECT_EQ(db.SetJCoordDivision(20), 0);
    EXPECT_EQ(db.DeleteSettingsSection(u"SETTINGS"), 0);
    db.OpenReadOnly(m_path);
    EXPECT_THROW(db.SetSiPointSize(2), CqSurveyException);
    EXPECT_THROW((void)db.SetJCoordDivision(2), CqSurveyException);
    EXPECT_EQ(db.GetSiPointSize(), 5);
    db.Close();
    EXPECT_EQ(FileBytes(u"Settings.ini"), "no settings");
}

TEST_F(DamagedSettings, AnImportKeepsThemAndPutsTheNewOnesInTheirPlace) {
    PutHostFile(m_folder.Utf8("in"), m_settings);
    for (const std::string& sql : {"DELETE FROM " + kBlocks,
                                   "UPDATE Volume_Block SET Bytes = x'00' WHERE Position IN "
                                   "(SELECT Position FROM " +
                                       kBlocks + " AND Position & 1 = 1)"}) {
        Damage(sql);
        CqSurveyDB db(m_path);
        EXPECT_EQ(db.ImportSettingsFile(m_folder.Path(u"in")), 1);
        EXPECT_EQ(db.GetSiPointSize(), 3);
        db.Close();
        EXPECT_TRUE(FileBytes(u"Settings.ini") == m_settings);
    }
    EXPECT_EQ(FileBytes(u"Settings.damaged"), "");
    EXPECT_TRUE(FileBytes(u"Settings.damaged2") ==
                m_settings.substr(0, 4032) + std::string(1, '\0'));
    EXPECT_EQ(WhatIsWrong(), "");
}

TEST_F(DamagedSettings, NoneOfAnotherJobComesIntoTheirPlace) {
    CqSurveyDB db;
    db.CreateNew(m_folder.Path(u"other.job"));
    db.SetSiPointSize(9);
    db.AddSettingsSection(u"OTHER");
    Damage("DELETE FROM " + kBlocks);
    db.Open(m_path);
    EXPECT_EQ(db.GetSiPointSize(), 5);
    EXPECT_EQ(db.SetJCoordDivision(1), 1);
    CStringList sections;
    db.GetSettingsSectionList(sections);
    EXPECT_EQ(sections, (CStringList{u"SETTINGS", u"BACKGROUND"}));
}

TEST_F(DamagedSettings, NineAreKeptAndNoneIsOverwritten) {
    for (int number = 1; number <= 11; ++number) {
        PutSettings("damage " + std::to_string(number));
        CqSurveyDB db(m_path);
        db.SetSiPointSize(number);
    }
    EXPECT_EQ(FileBytes(u"Settings.damaged"), "damage 1");
    for (int number = 2; number <= 9; ++number) {
        EXPECT_EQ(FileBytes(u"Settings.damaged" + FromUtf8(std::to_string(number))),
                  "damage " + std::to_string(number));
    }
    EXPECT_EQ(FileBytes(u"Settings.damaged10"), "(none)");
    EXPECT_EQ(WhatIsWrong(), "");
    EXPECT_THAT(Findings(), testing::ElementsAre(HasSubstr("Settings.damaged, Settings.damaged2")));
}

TEST_F(DamagedSettings, WhatOperationsLeaveIsNoDamage) {
    std::mt19937 random(7);
    CqSurveyDB db(m_path);
    const CString names[] = {u"SETTINGS",   u"background", u"MINE",     u"x]y",
                             u"[",          u"a\r\nb",     u"",         u"k=",
                             u"[SETTINGS]", u"Version",    u"Contrast", CString(u"z\0", 2)};
    const auto name = [&] { return names[random() % std::size(names)]; };
    for (int step = 0; step < 120; ++step) {
        SCOPED_TRACE(step);
        switch (random() % 5) {
            case 0:
                db.AddSettingsSection(name());
                break;
            case 1:
                db.DeleteSettingsSection(name());
                break;
            case 2:
                db.Close();
                ASSERT_EQ(WhatIsWrong(), "");
                db.Open(m_path);
                break;
            default:
                static_cast<void>(db.WriteSettingsString(name(), name(), name()));
                break;
        }
        const CqJobCheck check(db);
        ASSERT_EQ(check.GetCount(), 0U) << check.GetFindings().front().text;
    }
    db.Close();
    EXPECT_EQ(FileBytes(u"Settings.damaged"), "(none)");
}

TEST_F(DamagedSettings, LostKeysValuesOutOfRangeAndForeignBytesAreNotes) {
    CqSurveyDB db(m_path);
    EXPECT_EQ(db.WriteSettingsString(u"SETTINGS", u"Version", u""), 1);
    EXPECT_EQ(db.WriteSettingsString(u"BACKGROUND", u"Contrast", u"65001"), 1);
    db.Close();
    PutSettings(FileBytes(u"Settings.ini") + "old=\xff\r\n");
    EXPECT_EQ(WhatIsWrong(), "");
    EXPECT_EQ(Findings(),
              (std::vector<std::string>{"note: without a value, and so as in a new job: Version",
                                        "note: with a value outside the range: Contrast",
                                        "note: some bytes are not text in code page 65001"}));
}

}  // namespace
}  // namespace cqsurvey
