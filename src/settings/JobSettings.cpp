#include <algorithm>

#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/Limits.h"
#include "job/JobStep.h"
#include "platform/CaseFold.h"
#include "settings/FixedKeys.h"
#include "store/Qrfs.h"
#include "store/ThrowStorageError.h"
#include "tables/CqSettingsFile.h"

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

/// True when `key` is in `keys`, but for letter case.
template <class Keys>
bool Holds(const Keys& keys, const CString& key) {
    return std::any_of(keys.begin(), keys.end(),
                       [&](const CString& entry) { return EqualFold(entry, key); });
}

}  // namespace

int CqSurveyDB::GetSettingsSectionList(CStringList& list) {
    return m_settings->GetSectionList(list);
}

int CqSurveyDB::GetSettingsKeyList(const CString& section, CStringList& list) {
    return m_settings->GetKeyList(section, list);
}

int CqSurveyDB::AddSettingsSection(const CString& section) {
    return Atomically(
        *this, [&] { return m_settings->AddSection(section) != 0 ? WriteSettingsIniFile() : 0; });
}

int CqSurveyDB::DeleteSettingsSection(const CString& section) {
    if (EqualFold(section, m_SettingsSection) || EqualFold(section, m_BGSettingsSection)) {
        return 0;
    }
    return Atomically(*this, [&] {
        return m_settings->DeleteSection(section) != 0 ? WriteSettingsIniFile() : 0;
    });
}

int CqSurveyDB::GetSettingsString(const CString& section, const CString& key, CString& value,
                                  const CString& defaultValue) {
    if (m_settings->GetString(section, key, value) != 0) {
        return 1;
    }
    value = defaultValue;
    return 0;
}

int CqSurveyDB::GetSettingsInt(const CString& section, const CString& key, int& value,
                               int defaultValue) {
    if (m_settings->GetInt(section, key, value) != 0) {
        return 1;
    }
    value = defaultValue;
    return 0;
}

int CqSurveyDB::WriteSettingsString(const CString& section, const CString& key,
                                    const CString& value) {
    return Atomically(*this, [&] {
        return m_settings->WriteString(section, key, value) != 0 ? WriteSettingsIniFile() : 0;
    });
}

int CqSurveyDB::WriteSettingsInt(const CString& section, const CString& key, int value) {
    return Atomically(*this, [&] {
        return m_settings->WriteInt(section, key, value) != 0 ? WriteSettingsIniFile() : 0;
    });
}

int CqSurveyDB::ImportSettingsFile(const CString& hostPath) {
    return Atomically(*this, [&] {
        const CString backupPath = m_mountName + kBackupPath;
        m_settings->Backup(backupPath);
        int result = m_settings->ImportFile(hostPath);
        if (result != 0) {
            ReadSettingsIniFile();
            result = CheckSettingsIniFile();
        }
        if (result == 0) {
            m_settings->Restore(backupPath);
        }
        return result;
    });
}

int CqSurveyDB::ExportSettingsFile(const CString& hostPath) {
    return m_settings->ExportFile(hostPath);
}

double CqSurveyDB::GetSiPointSize() {
    double size = kDefaultSiPointSize;
    m_settings->GetDouble(m_SettingsSection, m_SettingsKey[kSiPointSize], size);
    return size;
}

void CqSurveyDB::SetSiPointSize(double size) {
    Atomically(*this, [&] {
        m_settings->WriteDouble(m_SettingsSection, m_SettingsKey[kSiPointSize], size);
        WriteSettingsIniFile();
    });
}

int CqSurveyDB::GetJCoordDivision() {
    std::int32_t division = limits::kNoDivision;
    m_settings->GetInt(m_SettingsSection, m_SettingsKey[kJCoordDivision], division);
    return division;
}

int CqSurveyDB::SetJCoordDivision(int division) {
    if (division == limits::kNoDivision || CheckJCoordDivision(division) == 0) {
        return 0;
    }
    return Atomically(*this, [&] {
        m_settings->WriteInt(m_SettingsSection, m_SettingsKey[kJCoordDivision], division);
        WriteSettingsIniFile();
        return 1;
    });
}

int CqSurveyDB::SetDrawingForceMonotone(int color) {
    if (CheckImageMonotoneMode(color) == 0) {
        return 0;
    }
    return Atomically(*this, [&] {
        m_settings->WriteInt(m_BGSettingsSection, m_BGSettingsKey[kEntityColor], color);
        WriteSettingsIniFile();
        return 1;
    });
}

int CqSurveyDB::IsDrawingForceMonotone(int& color) {
    m_settings->GetInt(m_BGSettingsSection, m_BGSettingsKey[kEntityColor], color);
    return color != limits::kNoForcedColor ? 1 : 0;
}

int CqSurveyDB::SetDefaultSettingsIniFile() {
    m_settings->Clear();
    m_settings->AddSection(m_SettingsSection);
    m_settings->AddSection(m_BGSettingsSection);
    m_settings->WriteDouble(m_SettingsSection, m_SettingsKey[kSiPointSize], kDefaultSiPointSize);
    m_settings->WriteInt(m_SettingsSection, m_SettingsKey[kJCoordDivision], limits::kNoDivision);
    m_settings->WriteString(m_SettingsSection, m_SettingsKey[kVersion], m_Version);
    m_settings->WriteInt(m_SettingsSection, m_SettingsKey[kMapscale], kDefaultMapscale);
    m_settings->WriteInt(m_BGSettingsSection, m_BGSettingsKey[kEntityColor],
                         limits::kNoForcedColor);
    for (const BackgroundKey key :
         {kType, kCenterX, kCenterY, kSizeX, kSizeY, kRotation, kBrightness}) {
        m_settings->WriteInt(m_BGSettingsSection, m_BGSettingsKey[key], 0);
    }
    m_settings->WriteInt(m_BGSettingsSection, m_BGSettingsKey[kContrast], kDefaultContrast);
    m_settings->WriteInt(m_BGSettingsSection, m_BGSettingsKey[kMonotone], 0);
    m_settings->WriteInt(m_BGSettingsSection, m_BGSettingsKey[kBKColor],
                         static_cast<std::int32_t>(kDefaultBKColor));
    return 1;
}

int CqSurveyDB::CreateSettingsIniFile() {
    return m_settings->Create(m_mountName + m_SettingsPath) != 0 ? WriteSettingsIniFile() : 0;
}

int CqSurveyDB::ReadSettingsIniFile() {
    return m_settings->Read(m_mountName + m_SettingsPath);
}

int CqSurveyDB::WriteSettingsIniFile() {
    if (m_settings->Write(m_mountName + m_SettingsPath) != 0) {
        return 1;
    }
    // A job that can only be read must not seem changed until it is closed.
    if (QrfsGetLastError() == error::kAccessDenied) {
        m_settings->UndoStep();
        ThrowStorageError(error::kAccessDenied);
    }
    return 0;
}

int CqSurveyDB::CheckSettingsIniFile() {
    const bool accepted = CheckSettingsIniFileSections() != 0 && CheckSettingsIniFileKeys() != 0 &&
                          CheckSettingsIniFileValue() != 0;
    return accepted ? 1 : 0;
}

int CqSurveyDB::CheckSettingsIniFileSections() {
    CStringList sections;
    m_settings->GetSectionList(sections);
    return Holds(sections, m_SettingsSection) && Holds(sections, m_BGSettingsSection) ? 1 : 0;
}

int CqSurveyDB::CheckSettingsIniFileKeys() {
    const auto hasAll = [&](const CString& section, const auto& fixed) {
        CStringList keys;
        m_settings->GetKeyList(section, keys);
        return std::all_of(fixed.begin(), fixed.end(),
                           [&](const CString& key) { return Holds(keys, key); });
    };
    return hasAll(m_SettingsSection, m_SettingsKey) && hasAll(m_BGSettingsSection, m_BGSettingsKey)
               ? 1
               : 0;
}

int CqSurveyDB::CheckSettingsIniFileValue() {
    const auto accepts = [&](int (*check)(int), const CString& section, const CString& key) {
        std::int32_t value = 0;
        return m_settings->GetInt(section, key, value) != 0 && check(value) != 0;
    };
    return accepts(CheckJCoordDivision, m_SettingsSection, m_SettingsKey[kJCoordDivision]) &&
                   accepts(CheckImageBrightness, m_BGSettingsSection,
                           m_BGSettingsKey[kBrightness]) &&
                   accepts(CheckImageContrast, m_BGSettingsSection, m_BGSettingsKey[kContrast]) &&
                   accepts(CheckImageMonotoneMode, m_BGSettingsSection,
                           m_BGSettingsKey[kEntityColor])
               ? 1
               : 0;
}

int CqSurveyDB::CheckJCoordDivision(int value) {
    return value == limits::kNoDivision ||
                   (value >= limits::kLowestDivision && value <= limits::kHighestDivision)
               ? 1
               : 0;
}

int CqSurveyDB::CheckImageBrightness(int value) {
    return value >= limits::kLowestBrightness && value <= limits::kHighestBrightness ? 1 : 0;
}

int CqSurveyDB::CheckImageContrast(int value) {
    return value >= limits::kLowestContrast && value <= limits::kHighestContrast ? 1 : 0;
}

int CqSurveyDB::CheckImageMonotoneMode(int value) {
    return value >= limits::kNoForcedColor && value <= limits::kHighestForcedColor ? 1 : 0;
}

int CqSurveyDB::CheckSettingsIniFileReserved(const CString& section, const CString& key) {
    const bool reserved = (EqualFold(section, m_SettingsSection) && Holds(m_SettingsKey, key)) ||
                          (EqualFold(section, m_BGSettingsSection) && Holds(m_BGSettingsKey, key));
    return reserved ? 1 : 0;
}

}  // namespace cqsurvey
