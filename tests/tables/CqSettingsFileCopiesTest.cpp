#include <gtest/gtest.h>

#include <string>

#include "cqsurvey/CQrfsFileException.h"
#include "support/HostBytes.h"
#include "support/TempDir.h"
#include "tables/CqSettingsFileFixture.h"

namespace cqsurvey {
namespace {

using CqSettingsFileTest = CqSettingsFileFixture;

TEST_F(CqSettingsFileTest, ExportingCopiesTheVolumesFileNotTheModel) {
    const TempDir host;
    std::string bytes = "no settings at all";
    bytes += '\0';
    bytes += std::string(3000, '\xff');
    Load(bytes);
    m_settings.AddSection(u"unsaved");
    PutHostFile(host.Utf8("out"), std::string(9000, 'o'));
    EXPECT_EQ(m_settings.ExportFile(host.Path(u"out")), 1);
    EXPECT_EQ(HostFileBytes(host.Utf8("out")), bytes);
    EXPECT_EQ(m_settings.ExportFile(host.Path(u"none/out")), 0);
    // It takes what is opened and nothing that is written.
    EXPECT_EQ(m_settings.ExportFile(u"/dev/full"), 0);
}

TEST_F(CqSettingsFileTest, ImportingReplacesTheVolumesFileNotTheModel) {
    const TempDir host;
    Load("[S]\r\nk=v\r\n" + std::string(5000, 'x'));
    PutHostFile(host.Utf8("in"), "[T]\r\n");
    EXPECT_EQ(m_settings.ImportFile(host.Path(u"in")), 1);
    EXPECT_EQ(VolumeFileBytes(Path()), "[T]\r\n");
    EXPECT_EQ(Value(u"S", u"k"), u"v");
    EXPECT_EQ(m_settings.ImportFile(host.Path(u"none")), 0);
    EXPECT_EQ(VolumeFileBytes(Path()), "[T]\r\n");
}

TEST_F(CqSettingsFileTest, AHostFileThatCannotBeReadImportsNothing) {
    const TempDir host;
    Load("[S]\r\nk=v\r\n");
    EXPECT_EQ(m_settings.ImportFile(host.Path(u"")), 0);
    EXPECT_EQ(Value(u"S", u"k"), u"v");
}

TEST_F(CqSettingsFileTest, AMountedVolumesOwnFileIsNeitherSourceNorTarget) {
    Load("[S]\r\nk=v\r\n");
    const std::string before = HostFileBytes(ToUtf8(m_volume.HostPath()));
    EXPECT_EQ(m_settings.ExportFile(m_volume.HostPath()), 0);
    EXPECT_EQ(m_settings.ImportFile(m_volume.HostPath()), 0);
    EXPECT_EQ(HostFileBytes(ToUtf8(m_volume.HostPath())), before);
}

TEST_F(CqSettingsFileTest, AVolumeFailureDuringACopyIsThrownWithThePath) {
    const TempDir host;
    Load("[S]\r\nk=v\r\n");
    PutHostFile(host.Utf8("in"), "[T]\r\n");
    ASSERT_NE(QrfsDeleteFile(Path()), 0);
    try {
        m_settings.ImportFile(host.Path(u"in"));
        FAIL() << "nothing was thrown";
    } catch (const CQrfsFileException& failure) {
        EXPECT_EQ(failure.m_code, error::kNoFile);
        EXPECT_EQ(failure.m_fileName, Path());
    }
    EXPECT_THROW(m_settings.ExportFile(host.Path(u"out")), CQrfsFileException);
}

TEST_F(CqSettingsFileTest, ABackupIsACopyThatReplacesTheOneBefore) {
    Load("[S]\r\nk=1\r\n");
    PutVolumeFile(BackupPath(), "an older and longer backup");
    EXPECT_EQ(m_settings.Backup(BackupPath()), 1);
    EXPECT_EQ(VolumeFileBytes(BackupPath()), "[S]\r\nk=1\r\n");
    EXPECT_EQ(VolumeFileBytes(Path()), "[S]\r\nk=1\r\n");
    EXPECT_EQ(m_settings.Backup(u"NOWHERE:/Settings.bak"), 0);
}

TEST_F(CqSettingsFileTest, RestoringPutsTheBackupBackAndReadsIt) {
    Load("[S]\r\nk=1\r\n");
    ASSERT_EQ(m_settings.Backup(BackupPath()), 1);
    m_settings.WriteString(u"S", u"k", u"2");
    ASSERT_EQ(m_settings.Write(Path()), 1);
    EXPECT_EQ(m_settings.Restore(BackupPath()), 1);
    EXPECT_EQ(VolumeFileBytes(Path()), "[S]\r\nk=1\r\n");
    EXPECT_EQ(Value(u"S", u"k"), u"1");
    EXPECT_EQ(QrfsGetFileAttributes(BackupPath()), 0xFFFF);
    EXPECT_EQ(m_settings.Restore(BackupPath()), 0);
}

TEST_F(CqSettingsFileTest, TheFileThatWasNamedLastIsTheOneThatIsCopied) {
    const TempDir host;
    const auto backup = [&] {
        EXPECT_EQ(m_settings.Backup(BackupPath()), 1);
        return VolumeFileBytes(BackupPath());
    };
    PutVolumeFile(Path(), "[read]\r\n");
    PutVolumeFile(m_volume.File(u"another"), "[old]\r\n");
    ASSERT_EQ(m_settings.Read(Path()), 1);
    EXPECT_EQ(backup(), "[read]\r\n");
    m_settings.AddSection(u"written");
    ASSERT_EQ(m_settings.Write(m_volume.File(u"another")), 1);
    EXPECT_EQ(backup(), "[read]\r\n[written]\r\n");
    ASSERT_EQ(m_settings.Create(m_volume.File(u"created")), 1);
    EXPECT_EQ(backup(), "");
    EXPECT_EQ(m_settings.ExportFile(host.Path(u"out")), 1);
    EXPECT_EQ(HostFileBytes(host.Utf8("out")), "");
}

}  // namespace
}  // namespace cqsurvey
