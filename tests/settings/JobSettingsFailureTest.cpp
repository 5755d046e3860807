#include <gtest/gtest.h>

#include <string>

#include "cqsurvey/CQrfsFileException.h"
#include "cqsurvey/CqBatch.h"
#include "settings/JobSettingsFixture.h"
#include "support/FileSizeLimit.h"

namespace cqsurvey {
namespace {

using JobSettingsTest = JobSettingsFixture;

TEST_F(JobSettingsTest, ABatchThatIsNotCommittedLeavesTheSettingsAsTheyWere) {
    m_db.SetSiPointSize(3);
    {
        CqBatch batch(m_db);
        m_db.SetSiPointSize(4);
        m_db.AddSettingsSection(u"S");
        EXPECT_EQ(Import(kDefaultSettings), 1);
        EXPECT_EQ(m_db.GetSiPointSize(), 5);
    }
    EXPECT_EQ(m_db.GetSiPointSize(), 3);
    const std::string expected =
        Replaced(kDefaultSettings, "SiPointSize=5.000", "SiPointSize=3.000");
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
    PutHostFile(ToUtf8(HostPath()), kDefaultSettings);
    EXPECT_THROW((void)other.ImportSettingsFile(HostPath()), CQrfsFileException);
}

}  // namespace
}  // namespace cqsurvey
