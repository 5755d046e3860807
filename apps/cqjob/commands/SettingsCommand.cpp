#include <cqsurvey/cqsurvey.h>

#include "cqjob/Arguments.h"
#include "cqjob/Command.h"
#include "cqjob/Failure.h"
#include "cqjob/JobChange.h"
#include "cqjob/JobFile.h"
#include "cqjob/JsonWriter.h"
#include "cqjob/settings/SettingRules.h"
#include "cqjob/settings/SettingsTransfer.h"
#include "cqjob/settings/SystemOptions.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

namespace {

struct Setting {
    std::string key;
    std::string value;
};

struct Section {
    std::string name;
    std::vector<Setting> settings;
};

class SettingsCommand : public Command {
 public:
    CommandLine& AddTo(CommandLine& program) override {
        CommandLine& command =
            program.AddCommand("settings", "List, get, set, import and export settings");
        command.RequireCommand();
        command.SetFooter(
            "Sections and keys are compared without regard to case.\n"
            "\n"
            "Example:\n"
            "  cqjob settings list site.job\n"
            "  cqjob settings set site.job SETTINGS Mapscale 250");

        CommandLine& list = AddAction(command, "list", "List every setting",
                                      [this](Console& console) { List(console); });
        AddJob(list, "The job; it is not changed");
        AddJson(list);
        list.SetFooter("Example:\n  cqjob settings list site.job");

        CommandLine& get = AddAction(command, "get", "Show the value of one setting",
                                     [this](Console& console) { Get(console); });
        AddJob(get, "The job; it is not changed");
        AddNames(get);
        AddJson(get);
        get.SetFooter("Example:\n  cqjob settings get site.job SETTINGS Mapscale");

        CommandLine& set = AddAction(command, "set", "Change one setting",
                                     [this](Console& console) { Set(console); });
        AddJob(set, "The job");
        AddNames(set);
        set.AddRequired("VALUE", m_value, "The value; an empty one removes a key that you added");
        set.AddFlag("--new", m_new,
                    "Add a key of your own even to SETTINGS or BACKGROUND, where every job has "
                    "the same keys");
        AddJson(set);
        set.SetFooter(
            "The section TITLE is what plans say in their title block: Title, Client, Place,\n"
            "SurveyedBy, DrawnBy, Date, DrawingNumber, HeightSystem. In COORDINATES, Angles says "
            "how\n"
            "they write bearings: dms, deg or gon.\n"
            "A section that does not exist is added, so programs can keep settings of their own "
            "in\n"
            "the job.\n"
            "\n"
            "Example:\n"
            "  cqjob settings set site.job SETTINGS Mapscale 250\n"
            "  cqjob settings set site.job COORDINATES Angles gon\n"
            "  cqjob settings set site.job TITLE Client \"County Roads\"\n"
            "  cqjob settings set site.job MyOffice Crew \"A. Berg, T. Lund\"");

        CommandLine& system =
            AddAction(command, "system", "Show or state the length unit and system",
                      [this](Console& console) { System(console); });
        AddJob(system, "The job");
        m_systemOptions.AddTo(system);
        AddJson(system);
        system.SetFooter("Without an option, the job is not changed.\n" +
                         std::string(SystemOptions::kHelp) +
                         "\n"
                         "Example:\n"
                         "  cqjob settings system site.job\n"
                         "  cqjob settings system site.job --unit us-ft --crs EPSG:2230");

        CommandLine& load = AddAction(command, "import", "Replace all settings by those of a file",
                                      [this](Console& console) { Import(console); });
        AddJob(load, "The job");
        load.AddRequired("FILE", m_file, "The settings file");
        AddJson(load);
        load.SetFooter(SettingsImportHelp());

        CommandLine& save = AddAction(command, "export", "Write all settings to a file",
                                      [this](Console& console) { Export(console); });
        AddJob(save, "The job; it is not changed");
        save.AddRequired("FILE", m_file, "The file to write, - for standard output");
        save.AddFlag("--force", m_force, "Replace an existing file");
        AddJson(save);
        save.SetFooter("Example:\n  cqjob settings export site.job office.ini");
        return command;
    }

 private:
    void AddNames(CommandLine& command) {
        command.AddRequired("SECTION", m_section, "The section, such as SETTINGS");
        command.AddRequired("KEY", m_key, "The key, such as Mapscale");
    }

    /// The sections with their keys and values.
    [[nodiscard]] std::vector<Section> ReadAll() const {
        CqSurveyDB db;
        OpenToRead(db, m_job);
        std::vector<Section> all;
        CStringList sections;
        db.GetSettingsSectionList(sections);
        for (const CString& section : sections) {
            Section& read = all.emplace_back();
            read.name = ToUtf8(section);
            CStringList keys;
            db.GetSettingsKeyList(section, keys);
            for (const CString& key : keys) {
                CString value;
                db.GetSettingsString(section, key, value, CString());
                read.settings.push_back({ToUtf8(key), ToUtf8(value)});
            }
        }
        db.Close();
        return all;
    }

    void List(Console& console) const {
        const std::vector<Section> all = ReadAll();
        if (m_json) {
            JsonWriter json(console);
            json.Object([&] {
                for (const Section& section : all) {
                    json.Object(section.name, [&] {
                        for (const Setting& setting : section.settings) {
                            json.Member(setting.key, setting.value);
                        }
                    });
                }
            });
            return;
        }
        for (const Section& section : all) {
            console.Print("[{}]\n", Printable(section.name));
            for (const Setting& setting : section.settings) {
                console.Print("{}={}\n", Printable(setting.key), Printable(setting.value));
            }
        }
    }

    void Get(Console& console) const {
        const CString section = ReadText(m_section, "the section");
        const CString key = ReadText(m_key, "the key");
        CqSurveyDB db;
        OpenToRead(db, m_job);
        CString value;
        if (db.GetSettingsString(section, key, value, CString()) == 0) {
            FailWithout();
        }
        if (m_json) {
            console.Out(JsonWriter::Quote(ToUtf8(value)) + '\n');
        } else {
            console.Print("{}\n", ToUtf8(value));
        }
        db.Close();
    }

    [[noreturn]] void FailWithout() const {
        throw Failure(m_job, "there is no setting {} in section {}", Quoted(m_key),
                      Quoted(m_section));
    }

    void System(Console& console) const {
        if (m_systemOptions.IsGiven()) {
            m_systemOptions.Check();
            JobChange change(m_job);
            m_systemOptions.State(change.GetJob(), m_job);
            change.Commit();
        }
        CqSurveyDB db;
        OpenToRead(db, m_job);
        if (m_json) {
            Answer(console, [&](JsonWriter& json) { WriteSystem(json, db); });
        } else {
            console.Print("Length unit  {}\nSystem       {}\n", DescribeUnit(db),
                          DescribeSystem(db));
        }
    }

    void Import(Console& console) const {
        ImportSettings(m_job, m_file);
        AnswerFile(console);
    }

    void Export(Console& console) const {
        RequireOwnOutput(m_file);
        ExportSettings(console, m_job, m_file, m_force);
        AnswerFile(console);
    }

    void AnswerFile(Console& console) const {
        if (m_json) {
            Answer(console, [&](JsonWriter& json) { json.Member("file", m_file); });
        }
    }

    void Set(Console& console) const {
        const CString section = ReadText(m_section, "the section");
        const CString key = ReadText(m_key, "the key");
        static_cast<void>(ReadText(m_value, "the value"));
        const std::string fault = SettingRules::FindFault(m_section, m_key, m_value);
        if (!fault.empty()) {
            throw UsageError(fault);
        }
        JobChange change(m_job);
        CqSurveyDB& db = change.GetJob();
        CString value;
        if (!m_new && db.GetSettingsString(section, key, value, CString()) == 0) {
            if (const std::string typo = SettingRules::FindTypo(m_section, m_key); !typo.empty()) {
                throw UsageError(typo);
            }
        }
        if (SettingRules::IsOfSystem(m_section)) {
            SetSystem(db);
        } else if (WriteSetting(db, section, key) == 0) {
            if (m_value.empty()) {
                FailWithout();
            }
            throw Failure(m_job, "the settings could not be written");
        }
        const bool kept = db.GetSettingsString(section, key, value, CString()) != 0;
        change.Commit();
        if (m_json) {
            Answer(console, [&](JsonWriter& json) {
                json.Member("section", m_section);
                json.Member("key", m_key);
                json.Member("value", kept ? std::optional(value) : std::nullopt);
            });
        }
    }

    int WriteSetting(CqSurveyDB& db, const CString& section, const CString& key) const {
        // It returns 0 when the section already exists.
        db.AddSettingsSection(section);
        return db.WriteSettingsString(section, key,
                                      FromUtf8(SettingRules::Normalise(m_section, m_key, m_value)));
    }

    /// Unit and system depend on each other, so they are not written blindly.
    void SetSystem(CqSurveyDB& db) const {
        if (SettingRules::IsAngles(m_key)) {
            if (CqJobSystem(db).SetAngles(FindAngleForm(m_value)) == 0) {
                throw Failure(m_job, "the settings could not be written");
            }
            return;
        }
        SystemOptions options;
        const bool unit = SettingRules::IsUnit(m_key);
        options.Set(unit ? std::optional(m_value) : std::nullopt,
                    unit ? std::nullopt : std::optional(m_value));
        options.State(db, m_job);
    }

    SystemOptions m_systemOptions;
    std::string m_section;
    std::string m_key;
    std::string m_value;
    std::string m_file;
    bool m_force = false;
    bool m_new = false;
};

}  // namespace

std::unique_ptr<Command> MakeSettingsCommand() {
    return std::make_unique<SettingsCommand>();
}

}  // namespace cqsurvey::cqjob
