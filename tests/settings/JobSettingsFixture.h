#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/Text.h"
#include "store/Qrfs.h"
#include "support/DefaultSettings.h"
#include "support/HostBytes.h"
#include "support/MountedVolume.h"
#include "support/TempDir.h"

namespace cqsurvey {

/// `text` with the first `from` in it replaced.
inline std::string Replaced(std::string text, const std::string& from, const std::string& to) {
    const std::size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return text.replace(at, from.size(), to);
}

/// A new job, and files of settings beside it.
class JobSettingsFixture : public testing::Test {
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

}  // namespace cqsurvey
