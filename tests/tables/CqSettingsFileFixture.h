#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "store/Qrfs.h"
#include "support/MountedVolume.h"
#include "tables/CqSettingsFile.h"

namespace cqsurvey {

/// Settings, and a volume for their files.
class CqSettingsFileFixture : public testing::Test {
 protected:
    [[nodiscard]] CString Path() const { return m_volume.File(u"Settings.ini"); }
    [[nodiscard]] CString BackupPath() const { return m_volume.File(u"Settings.bak"); }

    /// Reads a file of these bytes.
    void Load(std::string_view bytes) {
        PutVolumeFile(Path(), bytes);
        ASSERT_EQ(m_settings.Read(Path()), 1);
    }

    /// What the model is when it is written.
    std::string Written() {
        const CString path = m_volume.File(u"written");
        QrfsCreateFile(path, 0);
        EXPECT_EQ(m_settings.Write(path), 1);
        return VolumeFileBytes(path);
    }

    CString Value(const CString& section, const CString& key) {
        CString value = u"(none)";
        m_settings.GetString(section, key, value);
        return value;
    }

    MountedVolume m_volume;
    CqSettingsFile m_settings;
};

}  // namespace cqsurvey
