#include <string>

#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/Limits.h"
#include "cqsurvey/Text.h"
#include "job/Job.h"
#include "settings/FixedSettings.h"
#include "store/Qrfs.h"
#include "store/StoreExtras.h"

// What happens to settings that are damaged. The job is opened all the same, with defaults for what
// could not be read. Nothing is written then. The first change of a setting gives the damaged file
// another name and writes a new one, in one step:
//
//     Settings.ini  damaged   ->   Settings.damaged    as it was, or what could be read of it
//                                  Settings.ini        the settings in force

namespace cqsurvey {

namespace {

constexpr std::uint16_t kNoAttributes = 0xFFFF;

CString KeptPath(int number) {
    const CString path = u":/Settings.damaged";
    return number == 1 ? path : path + FromUtf8(std::to_string(number));
}

}  // namespace

void Job::OpenSettings() {
    using Reading = CqSettingsFile::Reading;
    ReadSettingsIniFile();
    if (settings.GetReading() == Reading::Broken || settings.GetReading() == Reading::TooLong) {
        // What stands in the model may be another job's. A second try costs nothing.
        settings.Clear();
        ReadSettingsIniFile();
    }
    // Where there is no file, there is nothing to lose, and nothing can be saved.
    const bool damaged =
        settings.GetReading() != Reading::NoFile && !DescribeSettingsDamage(settings).empty();
    if (damaged) {
        FillInDefaultSettings(settings);
        if (!FindMissingSections(settings).empty()) {
            // There was no room for them.
            PutDefaultSettings(settings);
        }
    }
    settings.SetDamaged(damaged);
}

bool Job::SetSettingsAside() {
    const CString path = mountName + CqSurveyDB::m_SettingsPath;
    for (int number = 1; number <= kMostKeptSettings; ++number) {
        const CString kept = mountName + KeptPath(number);
        if (QrfsGetFileAttributes(kept) == kNoAttributes) {
            return StoreSetFileAside(path, kept, limits::kSettingsBytes) != 0 &&
                   settings.Create(path) != 0;
        }
    }
    return QrfsDeleteFile(path) != 0 && settings.Create(path) != 0;
}

CStringList Job::ListKeptSettings() const {
    CStringList names;
    for (int number = 1; number <= kMostKeptSettings; ++number) {
        const CString path = KeptPath(number);
        if (QrfsGetFileAttributes(mountName + path) != kNoAttributes) {
            names.push_back(path.substr(CString(u":/").size()));
        }
    }
    return names;
}

}  // namespace cqsurvey
