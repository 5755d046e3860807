#include "settings/FixedSettings.h"

#include <algorithm>
#include <iterator>

#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/Limits.h"
#include "job/Job.h"
#include "settings/FixedKeys.h"

namespace cqsurvey {

void PutDefaultSettings(CqSettingsFile& settings) {
    const CString& own = CqSurveyDB::m_SettingsSection;
    const CString& background = CqSurveyDB::m_BGSettingsSection;
    const auto& keys = CqSurveyDB::m_SettingsKey;
    const auto& backgroundKeys = CqSurveyDB::m_BGSettingsKey;
    settings.Clear();
    settings.AddSection(own);
    settings.AddSection(background);
    settings.WriteDouble(own, keys[kSiPointSize], kDefaultSiPointSize);
    settings.WriteInt(own, keys[kJCoordDivision], limits::kNoDivision);
    settings.WriteString(own, keys[kVersion], CqSurveyDB::m_Version);
    settings.WriteInt(own, keys[kMapscale], kDefaultMapscale);
    settings.WriteInt(background, backgroundKeys[kEntityColor], limits::kNoForcedColor);
    for (const BackgroundKey key :
         {kType, kCenterX, kCenterY, kSizeX, kSizeY, kRotation, kBrightness}) {
        settings.WriteInt(background, backgroundKeys[key], 0);
    }
    settings.WriteInt(background, backgroundKeys[kContrast], kDefaultContrast);
    settings.WriteInt(background, backgroundKeys[kMonotone], 0);
    settings.WriteInt(background, backgroundKeys[kBKColor],
                      static_cast<std::int32_t>(kDefaultBKColor));
}

void FillInDefaultSettings(CqSettingsFile& settings) {
    CqSettingsFile defaults;
    PutDefaultSettings(defaults);
    CStringList sections;
    defaults.GetSectionList(sections);
    for (const CString& section : sections) {
        settings.AddSection(section);
        CStringList keys;
        defaults.GetKeyList(section, keys);
        for (const CString& key : keys) {
            CString value;
            if (settings.GetString(section, key, value) == 0) {
                defaults.GetString(section, key, value);
                settings.WriteString(section, key, value);
            }
        }
    }
}

CStringList FindMissingSections(const CqSettingsFile& settings) {
    CStringList missing;
    CStringList keys;
    for (const CString& section :
         {CqSurveyDB::m_SettingsSection, CqSurveyDB::m_BGSettingsSection}) {
        if (settings.GetKeyList(section, keys) == 0) {
            missing.push_back(section);
        }
    }
    return missing;
}

CStringList FindMissingKeys(const CqSettingsFile& settings) {
    CStringList missing;
    const auto look = [&](const CString& section, const auto& keys) {
        CString value;
        std::copy_if(
            keys.begin(), keys.end(), std::back_inserter(missing),
            [&](const CString& key) { return settings.GetString(section, key, value) == 0; });
    };
    look(CqSurveyDB::m_SettingsSection, CqSurveyDB::m_SettingsKey);
    look(CqSurveyDB::m_BGSettingsSection, CqSurveyDB::m_BGSettingsKey);
    return missing;
}

CStringList FindKeysOutOfRange(const CqSettingsFile& settings) {
    CStringList keys;
    const auto look = [&](int (*accepts)(int), const CString& section, const CString& key) {
        std::int32_t value = 0;
        if (settings.GetInt(section, key, value) != 0 && accepts(value) == 0) {
            keys.push_back(key);
        }
    };
    const CString& background = CqSurveyDB::m_BGSettingsSection;
    const auto& backgroundKeys = CqSurveyDB::m_BGSettingsKey;
    look(Job::CheckJCoordDivision, CqSurveyDB::m_SettingsSection,
         CqSurveyDB::m_SettingsKey[kJCoordDivision]);
    look(Job::CheckImageBrightness, background, backgroundKeys[kBrightness]);
    look(Job::CheckImageContrast, background, backgroundKeys[kContrast]);
    look(Job::CheckImageMonotoneMode, background, backgroundKeys[kEntityColor]);
    return keys;
}

}  // namespace cqsurvey
