#include <algorithm>

#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/Limits.h"
#include "job/Job.h"
#include "job/JobStep.h"
#include "platform/CaseFold.h"
#include "settings/FixedKeys.h"
#include "settings/FixedSettings.h"
#include "store/Qrfs.h"
#include "store/ThrowStorageError.h"

namespace cqsurvey {

const CString CqSurveyDB::m_SettingsPath = u":/Settings.ini";
const CString CqSurveyDB::m_SettingsSection = u"SETTINGS";
const CString CqSurveyDB::m_BGSettingsSection = u"BACKGROUND";
const CString CqSurveyDB::m_Version = u"1.00";
const CString CqSurveyDB::m_BGName = u":/BackgroundImage.img";
const std::array<CString, 4> CqSurveyDB::m_SettingsKey{u"SiPointSize", u"JCoordDivision",
                                                       u"Version", u"Mapscale"};
const std::array<CString, 11> CqSurveyDB::m_BGSettingsKey{
    u"EntityColor", u"Type",       u"CenterX",  u"CenterY",  u"SizeX",  u"SizeY",
    u"Rotation",    u"Brightness", u"Contrast", u"Monotone", u"BKColor"};

namespace {

constexpr const char16_t* kBackupPath = u":/Settings.bak";

/// True when `key` is in `keys`, without regard to letter case.
template <class Keys>
bool Holds(const Keys& keys, const CString& key) {
    return std::any_of(keys.begin(), keys.end(),
                       [&](const CString& entry) { return EqualFold(entry, key); });
}

}  // namespace

int CqSurveyDB::GetSettingsSectionList(CStringList& list) {
    return m_job->settings.GetSectionList(list);
}

int CqSurveyDB::GetSettingsKeyList(const CString& section, CStringList& list) {
    return m_job->settings.GetKeyList(section, list);
}

int CqSurveyDB::AddSettingsSection(const CString& section) {
    return Atomically(*m_job, [&] {
        return m_job->settings.AddSection(section) != 0 ? m_job->WriteSettingsIniFile() : 0;
    });
}

int CqSurveyDB::DeleteSettingsSection(const CString& section) {
    if (EqualFold(section, m_SettingsSection) || EqualFold(section, m_BGSettingsSection)) {
        return 0;
    }
    return Atomically(*m_job, [&] {
        return m_job->settings.DeleteSection(section) != 0 ? m_job->WriteSettingsIniFile() : 0;
    });
}

int CqSurveyDB::GetSettingsString(const CString& section, const CString& key, CString& value,
                                  const CString& defaultValue) {
    if (m_job->settings.GetString(section, key, value) != 0) {
        return 1;
    }
    value = defaultValue;
    return 0;
}

int CqSurveyDB::GetSettingsInt(const CString& section, const CString& key, int& value,
                               int defaultValue) {
    if (m_job->settings.GetInt(section, key, value) != 0) {
        return 1;
    }
    value = defaultValue;
    return 0;
}

int CqSurveyDB::WriteSettingsString(const CString& section, const CString& key,
                                    const CString& value) {
    return Atomically(*m_job, [&] {
        return m_job->settings.WriteString(section, key, value) != 0 ? m_job->WriteSettingsIniFile()
                                                                     : 0;
    });
}

int CqSurveyDB::WriteSettingsInt(const CString& section, const CString& key, int value) {
    return Atomically(*m_job, [&] {
        return m_job->settings.WriteInt(section, key, value) != 0 ? m_job->WriteSettingsIniFile()
                                                                  : 0;
    });
}

int CqSurveyDB::ImportSettingsFile(const CString& hostPath) {
    return Atomically(*m_job, [&] {
        const CString backupPath = m_job->mountName + kBackupPath;
        if (m_job->settings.IsDamaged()) {
            // A damaged file can be neither copied nor put back.
            m_job->WriteSettingsIniFile();
        }
        m_job->settings.Backup(backupPath);
        int result = m_job->settings.ImportFile(hostPath);
        if (result != 0) {
            m_job->ReadSettingsIniFile();
            result = m_job->CheckSettingsIniFile();
        }
        if (result == 0) {
            m_job->settings.Restore(backupPath);
        }
        return result;
    });
}

int CqSurveyDB::ExportSettingsFile(const CString& hostPath) {
    return m_job->IsOpen() ? m_job->settings.ExportFile(hostPath) : 0;
}

double CqSurveyDB::GetSiPointSize() {
    double size = kDefaultSiPointSize;
    m_job->settings.GetDouble(m_SettingsSection, m_SettingsKey[kSiPointSize], size);
    return size;
}

void CqSurveyDB::SetSiPointSize(double size) {
    Atomically(*m_job, [&] {
        m_job->settings.WriteDouble(m_SettingsSection, m_SettingsKey[kSiPointSize], size);
        m_job->WriteSettingsIniFile();
    });
}

int CqSurveyDB::GetJCoordDivision() {
    std::int32_t division = limits::kNoDivision;
    m_job->settings.GetInt(m_SettingsSection, m_SettingsKey[kJCoordDivision], division);
    return division;
}

int CqSurveyDB::SetJCoordDivision(int division) {
    if (division == limits::kNoDivision || Job::CheckJCoordDivision(division) == 0) {
        return 0;
    }
    return Atomically(*m_job, [&] {
        m_job->settings.WriteInt(m_SettingsSection, m_SettingsKey[kJCoordDivision], division);
        m_job->WriteSettingsIniFile();
        return 1;
    });
}

int CqSurveyDB::SetDrawingForceMonotone(int color) {
    if (Job::CheckImageMonotoneMode(color) == 0) {
        return 0;
    }
    return Atomically(*m_job, [&] {
        m_job->settings.WriteInt(m_BGSettingsSection, m_BGSettingsKey[kEntityColor], color);
        m_job->WriteSettingsIniFile();
        return 1;
    });
}

int CqSurveyDB::IsDrawingForceMonotone(int& color) {
    m_job->settings.GetInt(m_BGSettingsSection, m_BGSettingsKey[kEntityColor], color);
    return color != limits::kNoForcedColor ? 1 : 0;
}

int Job::SetDefaultSettingsIniFile() {
    PutDefaultSettings(settings);
    return 1;
}

int Job::CreateSettingsIniFile() {
    return settings.Create(mountName + CqSurveyDB::m_SettingsPath) != 0 ? WriteSettingsIniFile()
                                                                        : 0;
}

int Job::ReadSettingsIniFile() {
    return settings.Read(mountName + CqSurveyDB::m_SettingsPath);
}

int Job::WriteSettingsIniFile() {
    if ((!settings.IsDamaged() || SetSettingsAside()) &&
        settings.Write(mountName + CqSurveyDB::m_SettingsPath) != 0) {
        return 1;
    }
    // A job that is only readable must not look changed until it is closed.
    if (QrfsGetLastError() == error::kAccessDenied) {
        settings.UndoStep();
        ThrowStorageError(error::kAccessDenied);
    }
    return 0;
}

int Job::CheckSettingsIniFile() {
    const bool accepted = CheckSettingsIniFileSections() != 0 && CheckSettingsIniFileKeys() != 0 &&
                          CheckSettingsIniFileValue() != 0;
    return accepted ? 1 : 0;
}

int Job::CheckSettingsIniFileSections() {
    return FindMissingSections(settings).empty() ? 1 : 0;
}

int Job::CheckSettingsIniFileKeys() {
    return FindMissingKeys(settings).empty() ? 1 : 0;
}

int Job::CheckSettingsIniFileValue() {
    return FindKeysOutOfRange(settings).empty() ? 1 : 0;
}

int Job::CheckJCoordDivision(int value) {
    return value == limits::kNoDivision ||
                   (value >= limits::kLowestDivision && value <= limits::kHighestDivision)
               ? 1
               : 0;
}

int Job::CheckImageBrightness(int value) {
    return value >= limits::kLowestBrightness && value <= limits::kHighestBrightness ? 1 : 0;
}

int Job::CheckImageContrast(int value) {
    return value >= limits::kLowestContrast && value <= limits::kHighestContrast ? 1 : 0;
}

int Job::CheckImageMonotoneMode(int value) {
    return value >= limits::kNoForcedColor && value <= limits::kHighestForcedColor ? 1 : 0;
}

int Job::CheckSettingsIniFileReserved(const CString& section, const CString& key) {
    const bool reserved = (EqualFold(section, CqSurveyDB::m_SettingsSection) &&
                           Holds(CqSurveyDB::m_SettingsKey, key)) ||
                          (EqualFold(section, CqSurveyDB::m_BGSettingsSection) &&
                           Holds(CqSurveyDB::m_BGSettingsKey, key));
    return reserved ? 1 : 0;
}

}  // namespace cqsurvey
