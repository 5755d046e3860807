#include <algorithm>

#include "cqsurvey/Text.h"
#include "fuzz/FuzzJob.h"
#include "fuzz/FuzzTarget.h"
#include "fuzz/FuzzVolume.h"
#include "support/DefaultSettings.h"
#include "support/JobLines.h"

namespace cqsurvey {
namespace {

/// A settings file from a stranger: imported, and found in a job.
class SettingsFuzz : public FuzzTarget {
 public:
    SettingsFuzz() : m_job(MakeJobs().front()) {}

    void Run(std::string_view bytes) override {
        static constexpr int kPages[] = {65001, 1252, 932, 65001};
        SetAnsiCodePage(kPages[HashOf(bytes) % 4]);
        m_folder.Put("settings", bytes);
        m_folder.Put("a.job", m_job);
        CqSurveyDB db;
        Try([&] {
            db.Open(m_folder.Path("a.job"));
            const JobLines before = ReadJob(db);
            if (db.ImportSettingsFile(m_folder.Path("settings")) == 0) {
                RequirePromise(ReadJob(db) == before, "refused settings change nothing");
            }
            Change(db);
        });
        Try([&] { db.Close(); });
        m_folder.Put("a.job", m_job);
        RequirePromise(PutIntoVolume(m_folder.Host("a.job"), "Settings.ini", bytes),
                       "a file in a volume can be written");
        Try([&] {
            db.Open(m_folder.Path("a.job"));
            LookAtJob(db);
            Change(db);
        });
        Try([&] { db.Close(); });
        SetAnsiCodePage(65001);
    }

    std::vector<std::string> MakeSeeds() override {
        return {kDefaultSettings, kDefaultSettings + "[MINE]\nkey=value=more\n\n; note\n[]\n=\n",
                "[SETTINGS\nno section]\nkey=\xE4\xF6\xFC\n", ""};
    }

    std::vector<std::string> GetWords() override {
        return {"[SETTINGS]",   "[BACKGROUND]", "SiPointSize=", "JCoordDivision=",
                "Version=",     "Mapscale=",    "EntityColor=", "Brightness=",
                "Contrast=",    "Monotone=",    "\r\n",         "nan",
                "inf",          "1e999",        "-2147483649",  "0x",
                "\xEF\xBB\xBF", "\x82\xA0",     "\x81"};
    }

 private:
    void Change(CqSurveyDB& db) {
        CStringList sections;
        db.GetSettingsSectionList(sections);
        sections.resize(std::min<std::size_t>(sections.size(), 3));
        for (const CString& section : sections) {
            static_cast<void>(db.WriteSettingsString(section, u"key", u"v\u00E4lue"));
        }
        db.SetSiPointSize(2.5);
        static_cast<void>(db.ExportSettingsFile(m_folder.Path("exported")));
    }

    FuzzFolder m_folder;
    std::string m_job;
};

}  // namespace

FuzzTarget& GetFuzzTarget() {
    static SettingsFuzz target;
    return target;
}

}  // namespace cqsurvey
