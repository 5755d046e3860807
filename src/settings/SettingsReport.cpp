#include <string>

#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/Limits.h"
#include "cqsurvey/Text.h"
#include "job/Job.h"
#include "settings/FixedSettings.h"

// What counts as damage of the settings is only what no operation leaves: the two fixed sections
// can be neither deleted nor imported away, but their keys can be removed and given any value, and
// a line may hold any bytes.

namespace cqsurvey {

namespace {

std::string Joined(const CStringList& names) {
    std::string all;
    for (const CString& name : names) {
        all += (all.empty() ? "" : ", ") + ToUtf8(name);
    }
    return all;
}

}  // namespace

std::string Job::DescribeSettingsDamage(const CqSettingsFile& file) {
    const std::string reason = file.GetFailure().empty() ? "" : ": " + file.GetFailure();
    switch (file.GetReading()) {
        case CqSettingsFile::Reading::NoFile:
            return "the settings are gone, and no setting can be saved";
        case CqSettingsFile::Reading::Broken:
            return "the settings cannot be read" + reason;
        case CqSettingsFile::Reading::TooLong:
            return "the settings are not read, because they have more than " +
                   std::to_string(limits::kSettingsBytes) + " bytes";
        case CqSettingsFile::Reading::Whole:
            break;
    }
    const CStringList missing = FindMissingSections(file);
    return missing.empty() ? "" : "the settings lack the section " + Joined(missing);
}

SettingsReport Job::ReportSettings() const {
    CqSettingsFile file;
    file.Read(mountName + CqSurveyDB::m_SettingsPath);
    SettingsReport report;
    report.damage = DescribeSettingsDamage(file);
    if (const CStringList kept = ListKeptSettings(); !kept.empty()) {
        report.notes.push_back(
            "settings that were damaged were replaced; what could be read of them is in " +
            Joined(kept));
    }
    if (!report.damage.empty()) {
        return report;
    }
    if (const CStringList keys = FindMissingKeys(file); !keys.empty()) {
        report.notes.push_back("without a value, and so as in a new job: " + Joined(keys));
    }
    if (const CStringList keys = FindKeysOutOfRange(file); !keys.empty()) {
        report.notes.push_back("with a value outside the range: " + Joined(keys));
    }
    if (file.HasForeignBytes()) {
        report.notes.push_back("some bytes are not text in code page " +
                               std::to_string(GetAnsiCodePage()));
    }
    return report;
}

}  // namespace cqsurvey
