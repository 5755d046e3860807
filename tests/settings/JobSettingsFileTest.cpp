#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "cqsurvey/Limits.h"
#include "settings/JobSettingsFixture.h"

namespace cqsurvey {
namespace {

using JobSettingsTest = JobSettingsFixture;

TEST_F(JobSettingsTest, AGoodFileReplacesTheSettingsAndLeavesABackup) {
    m_db.SetSiPointSize(3);
    const std::string before = Exported();
    const std::string bytes =
        "\xef\xbb\xbf; brought from outside\n" +
        Replaced(Replaced(kDefaultSettings, "SiPointSize=5.000", "SIPOINTSIZE=9"), "[SETTINGS]",
                 "[settings]") +
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
    EXPECT_EQ(Import(kDefaultSettings), 1);
    m_db.Close();
    EXPECT_EQ(FileOfClosedJob(u"Settings.bak"), own);
}

TEST_F(JobSettingsTest, EveryFixedKeyMustBeThere) {
    m_db.SetSiPointSize(3);
    const std::string before = Exported();
    std::size_t begin = 0;
    for (std::size_t end = 0; (end = kDefaultSettings.find("\r\n", begin)) != std::string::npos;
         begin = end + 2) {
        SCOPED_TRACE(kDefaultSettings.substr(begin, end - begin));
        std::string bytes = kDefaultSettings;
        bytes.erase(begin, end + 2 - begin);
        EXPECT_EQ(Import(bytes), 0);
        EXPECT_EQ(Exported(), before);
        EXPECT_EQ(m_db.GetSiPointSize(), 3);
    }
    EXPECT_EQ(Import(kDefaultSettings), 1);
}

TEST_F(JobSettingsTest, AKeyMustBeInItsOwnSection) {
    EXPECT_EQ(Import(Replaced(kDefaultSettings, "Mapscale=500\r\n", "") + "Mapscale=500\r\n"), 0);
    EXPECT_EQ(Import(Replaced(kDefaultSettings, "[SETTINGS]", "[SETTINGS ]")), 0);
    // Of two sections alike only the first is asked.
    EXPECT_EQ(
        Import(Replaced(kDefaultSettings, "Mapscale=500\r\n", "[Settings]\r\nMapscale=500\r\n")),
        0);
    EXPECT_EQ(Import(kDefaultSettings + "[settings]\r\nJCoordDivision=99\r\n"), 1);
    EXPECT_EQ(Import(Replaced(kDefaultSettings, "Version=", "Version =")), 0);
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
            const std::string bytes = Replaced(kDefaultSettings, each.line, each.key + "=" + value);
            EXPECT_EQ(Import(bytes), 1);
            EXPECT_EQ(Exported(), bytes);
        }
        for (const std::string& value : each.bad) {
            SCOPED_TRACE(each.key + "=" + value);
            ASSERT_EQ(Import(kDefaultSettings), 1);
            EXPECT_EQ(Import(Replaced(kDefaultSettings, each.line, each.key + "=" + value)), 0);
            EXPECT_EQ(Exported(), kDefaultSettings);
        }
    }
}

TEST_F(JobSettingsTest, ARefusedFileLeavesSettingsAndFileAsTheyWereAndNoBackup) {
    m_db.SetSiPointSize(3);
    const std::string before = Exported();
    ASSERT_EQ(Import(kDefaultSettings), 1);
    m_db.SetSiPointSize(3);
    EXPECT_EQ(Import(Replaced(kDefaultSettings, "Contrast=100", "Contrast=65001")), 0);
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

TEST_F(JobSettingsTest, ImportsNoMoreThanAJobReadsAtItsOpening) {
    const std::string path = ToUtf8(HostPath());
    std::string text = kDefaultSettings + "[MINE]\r\nkey=";
    text += std::string(limits::kSettingsBytes - text.size(), 'x');
    PutHostFile(path, text);
    EXPECT_EQ(m_db.ImportSettingsFile(HostPath()), 1);
    PutHostFile(path, text + "x");
    EXPECT_EQ(m_db.ImportSettingsFile(HostPath()), 0);
    EXPECT_EQ(m_db.ImportSettingsFile(u"/dev/zero"), 0);
}

TEST_F(JobSettingsTest, AJobIsNotOverwrittenByItsOwnSettings) {
    EXPECT_EQ(m_db.ExportSettingsFile(JobPath()), 0);
    EXPECT_EQ(m_db.ExportSettingsFile(m_folder.Path(u"none/settings")), 0);
    Reopen();
    EXPECT_EQ(Exported(), kDefaultSettings);
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

TEST_F(JobSettingsTest, AClosedJobExportsNothing) {
    m_db.Close();
    EXPECT_EQ(m_db.ExportSettingsFile(HostPath()), 0);
    EXPECT_FALSE(std::filesystem::exists(ToUtf8(HostPath())));
}

}  // namespace
}  // namespace cqsurvey
