#include <algorithm>

#include "cqsurvey/Text.h"
#include "fuzz/FuzzJob.h"
#include "fuzz/FuzzTarget.h"
#include "fuzz/FuzzVolume.h"
#include "loss/JobLines.h"

namespace cqsurvey {
namespace {

constexpr const char* kSettings =
    "[SETTINGS]\r\nSiPointSize=5.000\r\nJCoordDivision=0\r\nVersion=1.00\r\nMapscale=500\r\n"
    "[BACKGROUND]\r\nEntityColor=-1\r\nType=0\r\nCenterX=0\r\nCenterY=0\r\nSizeX=0\r\nSizeY=0\r\n"
    "Rotation=0\r\nBrightness=0\r\nContrast=100\r\nMonotone=0\r\nBKColor=16777215\r\n";

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
        return {kSettings, std::string(kSettings) + "[MINE]\nkey=value=more\n\n; note\n[]\n=\n",
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
