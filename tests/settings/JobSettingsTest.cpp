#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <limits>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "cqsurvey/CQrfsFileException.h"
#include "cqsurvey/CqBatch.h"
#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/Limits.h"
#include "cqsurvey/Text.h"
#include "job/Job.h"
#include "settings/SettingsBytes.h"
#include "support/SettingsModel.h"
#include "store/Qrfs.h"
#include "support/CodePageScope.h"
#include "support/FileSizeLimit.h"
#include "support/HostBytes.h"
#include "support/MountedVolume.h"
#include "support/TempDir.h"

namespace cqsurvey {

namespace {

const std::string kDefaultFile =
    "[SETTINGS]\r\n"
    "SiPointSize=5.000\r\n"
    "JCoordDivision=0\r\n"
    "Version=1.00\r\n"
    "Mapscale=500\r\n"
    "[BACKGROUND]\r\n"
    "EntityColor=-1\r\n"
    "Type=0\r\n"
    "CenterX=0\r\n"
    "CenterY=0\r\n"
    "SizeX=0\r\n"
    "SizeY=0\r\n"
    "Rotation=0\r\n"
    "Brightness=0\r\n"
    "Contrast=100\r\n"
    "Monotone=0\r\n"
    "BKColor=16777215\r\n";

/// `text` with the first `from` in it replaced.
std::string Replaced(std::string text, const std::string& from, const std::string& to) {
    const std::size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return text.replace(at, from.size(), to);
}

class JobSettingsTest : public testing::Test {
 protected:
    void SetUp() override { m_db.CreateNew(JobPath()); }

    [[nodiscard]] CString JobPath() const { return m_folder.Path(u"job"); }
    [[nodiscard]] CString HostPath() const { return m_folder.Path(u"settings"); }

    /// The bytes of a file of the closed job.
    std::string FileOfClosedJob(const CString& name) {
        EXPECT_NE(QrfsMount(JobPath(), u"LOOK"), 0);
        std::string bytes = VolumeFileBytes(u"LOOK:/" + name);
        QrfsUnmount(u"LOOK");
        return bytes;
    }

    std::string Exported() {
        std::remove(ToUtf8(HostPath()).c_str());
        EXPECT_EQ(m_db.ExportSettingsFile(HostPath()), 1);
        return HostFileBytes(ToUtf8(HostPath()));
    }

    int Import(const std::string& bytes) {
        PutHostFile(ToUtf8(HostPath()), bytes);
        return m_db.ImportSettingsFile(HostPath());
    }

    void Reopen() {
        m_db.Close();
        m_db.Open(JobPath());
    }

    CString Value(const CString& section, const CString& key) {
        CString value;
        m_db.GetSettingsString(section, key, value, u"(none)");
        return value;
    }

    TempDir m_folder;
    CqSurveyDB m_db;
};

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
    EXPECT_EQ(Exported(), kDefaultFile);
    m_db.Close();
    EXPECT_EQ(FileOfClosedJob(u"Settings.ini"), kDefaultFile);
}

TEST_F(JobSettingsTest, ANewJobAfterAnotherBeginsWithTheDefaults) {
    m_db.SetSiPointSize(3);
    m_db.AddSettingsSection(u"MINE");
    m_db.CreateNew(m_folder.Path(u"other"));
    EXPECT_EQ(Exported(), kDefaultFile);
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
    EXPECT_EQ(Exported(), kDefaultFile);
}

TEST_F(JobSettingsTest, TheFixedSectionsCannotBeDeleted) {
    for (const char16_t* name : {u"settings", u"SETTINGS", u"Background", u"BACKGROUND"}) {
        EXPECT_EQ(m_db.DeleteSettingsSection(name), 0);
    }
    EXPECT_EQ(Exported(), kDefaultFile);
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
    EXPECT_EQ(Exported(), kDefaultFile);
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
    std::string expected = Replaced(kDefaultFile, "SiPointSize=5.000", "SiPointSize=1.000");
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

TEST_F(JobSettingsTest, AGoodFileReplacesTheSettingsAndLeavesABackup) {
    m_db.SetSiPointSize(3);
    const std::string before = Exported();
    const std::string bytes = "\xef\xbb\xbf; brought from outside\n" +
                              Replaced(Replaced(kDefaultFile, "SiPointSize=5.000", "SIPOINTSIZE=9"),
                                       "[SETTINGS]", "[settings]") +
                              "[Mine]\nk=v";
    EXPECT_EQ(Import(bytes), 1);
    EXPECT_EQ(m_db.GetSiPointSize(), 9);
    EXPECT_EQ(Value(u"MINE", u"k"), u"v");
    EXPECT_EQ(Exported(), bytes);
    m_db.Close();
    EXPECT_EQ(FileOfClosedJob(u"Settings.bak"), before);
    EXPECT_EQ(FileOfClosedJob(u"Settings.ini"), bytes);
    m_db.Open(JobPath());
    EXPECT_EQ(m_db.GetSiPointSize(), 9);
    // The next change brings the file into its own form.
    EXPECT_EQ(m_db.SetJCoordDivision(5), 1);
    const std::string own = Exported();
    EXPECT_EQ(own.substr(0, 34), "[settings]\r\nSIPOINTSIZE=9\r\nJCoordD");
    // The next import replaces the backup.
    EXPECT_EQ(Import(kDefaultFile), 1);
    m_db.Close();
    EXPECT_EQ(FileOfClosedJob(u"Settings.bak"), own);
}

TEST_F(JobSettingsTest, EveryFixedKeyMustBeThere) {
    m_db.SetSiPointSize(3);
    const std::string before = Exported();
    std::size_t begin = 0;
    for (std::size_t end = 0; (end = kDefaultFile.find("\r\n", begin)) != std::string::npos;
         begin = end + 2) {
        SCOPED_TRACE(kDefaultFile.substr(begin, end - begin));
        std::string bytes = kDefaultFile;
        bytes.erase(begin, end + 2 - begin);
        EXPECT_EQ(Import(bytes), 0);
        EXPECT_EQ(Exported(), before);
        EXPECT_EQ(m_db.GetSiPointSize(), 3);
    }
    EXPECT_EQ(Import(kDefaultFile), 1);
}

TEST_F(JobSettingsTest, AKeyMustBeInItsOwnSection) {
    EXPECT_EQ(Import(Replaced(kDefaultFile, "Mapscale=500\r\n", "") + "Mapscale=500\r\n"), 0);
    EXPECT_EQ(Import(Replaced(kDefaultFile, "[SETTINGS]", "[SETTINGS ]")), 0);
    // Of two sections alike only the first is asked.
    EXPECT_EQ(Import(Replaced(kDefaultFile, "Mapscale=500\r\n", "[Settings]\r\nMapscale=500\r\n")),
              0);
    EXPECT_EQ(Import(kDefaultFile + "[settings]\r\nJCoordDivision=99\r\n"), 1);
    EXPECT_EQ(Import(Replaced(kDefaultFile, "Version=", "Version =")), 0);
}

TEST_F(JobSettingsTest, TheRangedKeysAreCheckedAndTheOthersNot) {
    const struct {
        std::string line;
        std::string key;
        std::vector<std::string> good;
        std::vector<std::string> bad;
    } cases[] = {
        {"JCoordDivision=0",
         "JCoordDivision",
         {"0", "1", "19", "", "x", "+5", "19x", " 7"},
         {"-1", "20", "2147483648"}},
        {"Brightness=0", "Brightness", {"-255", "0", "255", "bright"}, {"-256", "256"}},
        {"Contrast=100", "Contrast", {"0", "65000"}, {"-1", "65001", "-2147483648"}},
        {"EntityColor=-1", "EntityColor", {"-1", "0", "255", ""}, {"-2", "256"}},
        {"Monotone=0", "Monotone", {"-999999", "999999", "x"}, {}},
        {"BKColor=16777215", "BKColor", {"-1", "x", "99999999999"}, {}},
        {"SiPointSize=5.000", "SiPointSize", {"-1", "nan", "x"}, {}},
        {"Mapscale=500", "Mapscale", {"0", "-5"}, {}},
        {"Version=1.00", "Version", {"9.99", ""}, {}},
        {"Type=0", "Type", {"77"}, {}},
        {"Rotation=0", "Rotation", {"400"}, {}},
    };
    for (const auto& each : cases) {
        for (const std::string& value : each.good) {
            SCOPED_TRACE(each.key + "=" + value);
            const std::string bytes = Replaced(kDefaultFile, each.line, each.key + "=" + value);
            EXPECT_EQ(Import(bytes), 1);
            EXPECT_EQ(Exported(), bytes);
        }
        for (const std::string& value : each.bad) {
            SCOPED_TRACE(each.key + "=" + value);
            ASSERT_EQ(Import(kDefaultFile), 1);
            EXPECT_EQ(Import(Replaced(kDefaultFile, each.line, each.key + "=" + value)), 0);
            EXPECT_EQ(Exported(), kDefaultFile);
        }
    }
}

TEST_F(JobSettingsTest, ARefusedFileLeavesSettingsAndFileAsTheyWereAndNoBackup) {
    m_db.SetSiPointSize(3);
    const std::string before = Exported();
    ASSERT_EQ(Import(kDefaultFile), 1);
    m_db.SetSiPointSize(3);
    EXPECT_EQ(Import(Replaced(kDefaultFile, "Contrast=100", "Contrast=65001")), 0);
    EXPECT_EQ(m_db.GetSiPointSize(), 3);
    Reopen();
    EXPECT_EQ(m_db.GetSiPointSize(), 3);
    EXPECT_EQ(Exported(), before);
    m_db.Close();
    EXPECT_NE(QrfsMount(JobPath(), u"LOOK"), 0);
    EXPECT_EQ(QrfsGetFileAttributes(u"LOOK:/Settings.bak"), 0xFFFF);
    QrfsUnmount(u"LOOK");
}

TEST_F(JobSettingsTest, AMissingOrUnreadableFileImportsNothing) {
    m_db.SetSiPointSize(3);
    const std::string before = Exported();
    EXPECT_EQ(m_db.ImportSettingsFile(m_folder.Path(u"none")), 0);
    EXPECT_EQ(m_db.ImportSettingsFile(m_folder.Path(u"")), 0);
    EXPECT_EQ(m_db.ImportSettingsFile(JobPath()), 0);
    EXPECT_EQ(m_db.ImportSettingsFile(u""), 0);
    EXPECT_EQ(Exported(), before);
    Reopen();
    EXPECT_EQ(m_db.GetSiPointSize(), 3);
}

TEST_F(JobSettingsTest, AJobIsNotOverwrittenByItsOwnSettings) {
    EXPECT_EQ(m_db.ExportSettingsFile(JobPath()), 0);
    EXPECT_EQ(m_db.ExportSettingsFile(m_folder.Path(u"none/settings")), 0);
    Reopen();
    EXPECT_EQ(Exported(), kDefaultFile);
}

TEST_F(JobSettingsTest, NoFileThatSqliteKeepsBesideAnOpenJobIsATargetOfAnExport) {
    const std::string folder = ToUtf8(m_folder.Path(u""));
    std::filesystem::create_directory_symlink(folder, folder + "way");
    std::filesystem::create_symlink("job-journal", folder + "symbolic");
    for (const char16_t* name :
         {u"job-journal", u"job-wal", u"job-shm", u"./job-wal", u"way\\job-shm", u"symbolic"}) {
        EXPECT_EQ(m_db.ExportSettingsFile(m_folder.Path(name)), 0) << ToUtf8(name);
    }
    EXPECT_FALSE(std::filesystem::exists(folder + "job-wal"));
    m_db.SetSiPointSize(3);
    Reopen();
    EXPECT_EQ(m_db.GetSiPointSize(), 3);
    // Other names are free.
    EXPECT_EQ(m_db.ExportSettingsFile(m_folder.Path(u"other-journal")), 1);
    EXPECT_EQ(m_db.ExportSettingsFile(m_folder.Path(u"job-journal2")), 1);
}

TEST_F(JobSettingsTest, AnyBytesAreImportedWhollyOrNotAtAll) {
    std::mt19937 random(99);
    int accepted = 0;
    m_db.SetSiPointSize(3);
    CqBatch batch(m_db);
    for (int round = 0; round < 300; ++round) {
        SCOPED_TRACE(round);
        std::string bytes = kDefaultFile + "[Own]\r\nnote=\xe6\x97\xa5\r\n";
        for (std::size_t changes = 1 + random() % 2; changes > 0; --changes) {
            const std::size_t at = random() % bytes.size();
            if (random() % 2 == 0) {
                bytes[at] = static_cast<char>(random());
            } else {
                bytes.insert(at, 1, "[]=\r\n 19"[random() % 8]);
            }
        }
        const std::string before = Exported();
        if (Import(bytes) != 0) {
            ++accepted;
            ASSERT_EQ(Exported(), bytes);
            ASSERT_GE(m_db.GetJCoordDivision(), 0);
            ASSERT_LE(m_db.GetJCoordDivision(), 19);
        } else {
            ASSERT_EQ(Exported(), before);
        }
        ASSERT_EQ(m_db.WriteSettingsInt(u"BACKGROUND", u"Type", round), 1);
        ASSERT_EQ(Exported(), SettingsBytes(Exported()).Text());
    }
    EXPECT_GT(accepted, 50);
    EXPECT_LT(accepted, 270);
}

TEST_F(JobSettingsTest, RandomSequencesAgreeWithTheModelAcrossReopening) {
    for (unsigned seed = 1; seed <= 3; ++seed) {
        SCOPED_TRACE(seed);
        m_db.CreateNew(m_folder.Path(u"job" + FromUtf8(std::to_string(seed))));
        SettingsModel model = SettingsModel::Parse(FromUtf8(kDefaultFile));
        std::mt19937 random(seed);
        const CString sections[] = {u"SETTINGS", u"background", u"Mine", u"\u00c9t\u00e9", u"none"};
        const CString keys[] = {u"SiPointSize", u"JCOORDDIVISION", u"EntityColor", u"k", u"\u044f"};
        for (int step = 0; step < 100; ++step) {
            SCOPED_TRACE(step);
            const CString& section = sections[random() % std::size(sections)];
            const CString& key = keys[random() % std::size(keys)];
            const int number = static_cast<int>(random() % 400) - 100;
            switch (random() % 9) {
                case 0:
                    ASSERT_EQ(m_db.AddSettingsSection(section), model.Add(section) ? 1 : 0);
                    break;
                case 1: {
                    const bool fixed = SettingsModel::Alike(section, u"SETTINGS") ||
                                       SettingsModel::Alike(section, u"BACKGROUND");
                    ASSERT_EQ(m_db.DeleteSettingsSection(section),
                              !fixed && model.Delete(section) ? 1 : 0);
                    break;
                }
                case 2:
                case 3: {
                    const CString value = random() % 3 == 0 ? CString() : CString(u"v=\u65e5 ;x");
                    ASSERT_EQ(m_db.WriteSettingsString(section, key, value),
                              model.Set(section, key, value) ? 1 : 0);
                    break;
                }
                case 4: {
                    const CString text = FromUtf8(std::to_string(number));
                    ASSERT_EQ(m_db.WriteSettingsInt(section, key, number),
                              model.Set(section, key, text) ? 1 : 0);
                    break;
                }
                case 5: {
                    const bool inRange = number >= 1 && number <= 19;
                    ASSERT_EQ(m_db.SetJCoordDivision(number), inRange ? 1 : 0);
                    if (inRange) {
                        model.Set(u"SETTINGS", u"JCoordDivision", FromUtf8(std::to_string(number)));
                        ASSERT_EQ(m_db.GetJCoordDivision(), number);
                    }
                    break;
                }
                case 6: {
                    const bool inRange = number >= -1 && number <= 255;
                    ASSERT_EQ(m_db.SetDrawingForceMonotone(number), inRange ? 1 : 0);
                    if (inRange) {
                        model.Set(u"BACKGROUND", u"EntityColor", FromUtf8(std::to_string(number)));
                    }
                    break;
                }
                case 7: {
                    CString expected = u"default";
                    CString actual;
                    const bool found = model.Get(section, key, expected);
                    ASSERT_EQ(m_db.GetSettingsString(section, key, actual, u"default"),
                              found ? 1 : 0);
                    ASSERT_EQ(actual, expected);
                    break;
                }
                default:
                    if (random() % 8 == 0) {
                        const CString path = m_folder.Path(u"job" + FromUtf8(std::to_string(seed)));
                        m_db.Close();
                        m_db.Open(path);
                    }
                    break;
            }
            ASSERT_EQ(Exported(), ToUtf8(model.Text()));
        }
    }
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

TEST_F(JobSettingsTest, ABatchThatIsNotCommittedLeavesTheSettingsAsTheyWere) {
    m_db.SetSiPointSize(3);
    {
        CqBatch batch(m_db);
        m_db.SetSiPointSize(4);
        m_db.AddSettingsSection(u"S");
        EXPECT_EQ(Import(kDefaultFile), 1);
        EXPECT_EQ(m_db.GetSiPointSize(), 5);
    }
    EXPECT_EQ(m_db.GetSiPointSize(), 3);
    const std::string expected = Replaced(kDefaultFile, "SiPointSize=5.000", "SiPointSize=3.000");
    EXPECT_EQ(Exported(), expected);
    {
        CqBatch batch(m_db);
        m_db.SetSiPointSize(4);
        batch.Commit();
    }
    Reopen();
    EXPECT_EQ(m_db.GetSiPointSize(), 4);
}

TEST_F(JobSettingsTest, ASettingThatCannotBeWrittenToAFullDiskIsTakenBack) {
    m_db.SetSiPointSize(3);
    m_db.AddSettingsSection(u"S");
    const std::string before = Exported();
    {
        const FileSizeLimit full(0);
        EXPECT_THROW(m_db.SetSiPointSize(4), CqSurveyException);
        EXPECT_THROW(m_db.SetJCoordDivision(4), CqSurveyException);
        EXPECT_THROW(m_db.AddSettingsSection(u"T"), CqSurveyException);
        EXPECT_THROW(m_db.DeleteSettingsSection(u"S"), CqSurveyException);
        EXPECT_THROW((void)m_db.WriteSettingsInt(u"S", u"k", 1), CqSurveyException);
        EXPECT_THROW((void)m_db.WriteSettingsString(u"SETTINGS", u"Version", u""),
                     CqSurveyException);
        EXPECT_THROW(m_db.SetBackgroundImageSettings(1, 2, 3), CqSurveyException);
        EXPECT_THROW(m_db.SetBackgroundColor(1), CqSurveyException);
        EXPECT_THROW(m_db.SetDrawingForceMonotone(1), CqSurveyException);
        EXPECT_EQ(m_db.GetSiPointSize(), 3);
        EXPECT_EQ(m_db.GetJCoordDivision(), 0);
    }
    EXPECT_EQ(Exported(), before);
    m_db.SetJCoordDivision(7);
    Reopen();
    EXPECT_EQ(m_db.GetSiPointSize(), 3);
    EXPECT_EQ(m_db.GetJCoordDivision(), 7);
}

TEST_F(JobSettingsTest, AJobThatCanOnlyBeReadRefusesEveryChangeOfItsSettings) {
    m_db.SetSiPointSize(3);
    const std::string before = Exported();
    m_db.Close();
    m_db.OpenReadOnly(JobPath());
    EXPECT_EQ(m_db.GetSiPointSize(), 3);
    EXPECT_EQ(Exported(), before);
    const auto code = [&](auto&& change) -> std::int32_t {
        try {
            change();
        } catch (const CqSurveyException& failure) {
            return failure.m_code;
        } catch (const CQrfsFileException& failure) {
            return failure.m_code;
        }
        return 0;
    };
    EXPECT_EQ(code([&] { m_db.SetSiPointSize(4); }), error::kAccessDenied);
    EXPECT_EQ(code([&] { m_db.SetJCoordDivision(4); }), error::kAccessDenied);
    EXPECT_EQ(code([&] { m_db.SetDrawingForceMonotone(4); }), error::kAccessDenied);
    EXPECT_EQ(code([&] { m_db.AddSettingsSection(u"S"); }), error::kAccessDenied);
    EXPECT_EQ(code([&] { (void)m_db.WriteSettingsInt(u"SETTINGS", u"k", 4); }),
              error::kAccessDenied);
    EXPECT_EQ(code([&] { m_db.SetBackgroundImageSettings(1, 2, 3); }), error::kAccessDenied);
    EXPECT_EQ(code([&] { m_db.SetBackgroundColor(1); }), error::kAccessDenied);
    EXPECT_EQ(code([&] { (void)m_db.ImportSettingsFile(HostPath()); }), error::kAccessDenied);
    {
        const CqBatch batch(m_db);
        EXPECT_EQ(code([&] { m_db.SetSiPointSize(4); }), error::kAccessDenied);
        EXPECT_EQ(m_db.GetSiPointSize(), 3);
    }
    EXPECT_EQ(m_db.DeleteSettingsSection(u"none"), 0);
    EXPECT_EQ(m_db.SetJCoordDivision(20), 0);
    CStringList list;
    m_db.GetSettingsSectionList(list);
    EXPECT_EQ(list, (CStringList{u"SETTINGS", u"BACKGROUND"}));
    EXPECT_EQ(m_db.GetSiPointSize(), 3);
    EXPECT_EQ(m_db.GetJCoordDivision(), 0);
}

TEST_F(JobSettingsTest, AJobWithoutSettingsFileKeepsTheModelAndRefusesToSave) {
    m_db.Close();
    ASSERT_NE(QrfsMount(JobPath(), u"LOOK"), 0);
    ASSERT_NE(QrfsDeleteFile(u"LOOK:/Settings.ini"), 0);
    QrfsUnmount(u"LOOK");
    CqSurveyDB other;
    other.CreateNew(m_folder.Path(u"other"));
    other.SetSiPointSize(3);
    other.Open(JobPath());
    EXPECT_EQ(other.GetSiPointSize(), 3);
    EXPECT_EQ(other.AddSettingsSection(u"S"), 0);
    EXPECT_EQ(other.AddSettingsSection(u"T"), 0);
    EXPECT_EQ(other.DeleteSettingsSection(u"T"), 0);
    EXPECT_EQ(other.WriteSettingsString(u"S", u"k", u"v"), 0);
    EXPECT_EQ(other.WriteSettingsInt(u"S", u"n", 1), 0);
    // The setters of a range tell of the range alone.
    EXPECT_EQ(other.SetJCoordDivision(4), 1);
    EXPECT_EQ(other.SetDrawingForceMonotone(5), 1);
    other.SetSiPointSize(6);
    // What was not saved is in force all the same.
    CStringList list;
    other.GetSettingsSectionList(list);
    EXPECT_EQ(list, (CStringList{u"SETTINGS", u"BACKGROUND", u"S"}));
    other.GetSettingsKeyList(u"S", list);
    EXPECT_EQ(list, (CStringList{u"k", u"n"}));
    EXPECT_EQ(other.GetJCoordDivision(), 4);
    int color = 0;
    EXPECT_EQ(other.IsDrawingForceMonotone(color), 1);
    EXPECT_EQ(color, 5);
    EXPECT_EQ(other.GetSiPointSize(), 6);
    EXPECT_THROW((void)other.ExportSettingsFile(HostPath()), CQrfsFileException);
    PutHostFile(ToUtf8(HostPath()), kDefaultFile);
    EXPECT_THROW((void)other.ImportSettingsFile(HostPath()), CQrfsFileException);
}

TEST_F(JobSettingsTest, ImportsNoMoreThanAJobReadsAtItsOpening) {
    const std::string path = ToUtf8(HostPath());
    std::string text = kDefaultFile + "[MINE]\r\nkey=";
    text += std::string(limits::kSettingsBytes - text.size(), 'x');
    PutHostFile(path, text);
    EXPECT_EQ(m_db.ImportSettingsFile(HostPath()), 1);
    PutHostFile(path, text + "x");
    EXPECT_EQ(m_db.ImportSettingsFile(HostPath()), 0);
    EXPECT_EQ(m_db.ImportSettingsFile(u"/dev/zero"), 0);
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

TEST_F(JobSettingsTest, AClosedJobExportsNothing) {
    m_db.Close();
    EXPECT_EQ(m_db.ExportSettingsFile(HostPath()), 0);
    EXPECT_FALSE(std::filesystem::exists(ToUtf8(HostPath())));
}

}  // namespace
}  // namespace cqsurvey
