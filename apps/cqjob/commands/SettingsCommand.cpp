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

        m_list = &command.AddCommand("list", "List every setting");
        AddJob(*m_list, "The job; it is not changed");
        AddJson(*m_list);
        m_list->SetFooter("Example:\n  cqjob settings list site.job");

        m_get = &command.AddCommand("get", "Show the value of one setting");
        AddJob(*m_get, "The job; it is not changed");
        AddNames(*m_get);
        AddJson(*m_get);
        m_get->SetFooter("Example:\n  cqjob settings get site.job SETTINGS Mapscale");

        m_set = &command.AddCommand("set", "Change one setting");
        AddJob(*m_set, "The job");
        AddNames(*m_set);
        m_set->Add("VALUE", m_value, "The value; an empty one removes a key that you added")
            .Required()
            .Placeholder("");
        m_set->AddFlag("--new", m_new,
                       "Add a key of your own even to SETTINGS or BACKGROUND, where every job has "
                       "the same keys");
        AddJson(*m_set);
        m_set->SetFooter(
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

        m_system = &command.AddCommand("system", "Show or state the length unit and system");
        AddJob(*m_system, "The job");
        m_systemOptions.AddTo(*m_system);
        AddJson(*m_system);
        m_system->SetFooter("Without an option, the job is not changed.\n" +
                            std::string(SystemOptions::kHelp) +
                            "\n"
                            "Example:\n"
                            "  cqjob settings system site.job\n"
                            "  cqjob settings system site.job --unit us-ft --crs EPSG:2230");

        m_import = &command.AddCommand("import", "Replace all settings by those of a file");
        AddJob(*m_import, "The job");
        m_import->Add("FILE", m_file, "The settings file").Required().Placeholder("");
        AddJson(*m_import);
        m_import->SetFooter(kSettingsImportHelp);

        m_export = &command.AddCommand("export", "Write all settings to a file");
        AddJob(*m_export, "The job; it is not changed");
        m_export->Add("FILE", m_file, "The file to write, - for standard output")
            .Required()
            .Placeholder("");
        m_export->AddFlag("--force", m_force, "Replace an existing file");
        AddJson(*m_export);
        m_export->SetFooter("Example:\n  cqjob settings export site.job office.ini");
        return command;
    }

    int Run(Console& console) override {
        if (m_list->IsGiven()) {
            return List(console);
        }
        if (m_import->IsGiven()) {
            ImportSettings(m_job, m_file);
            AnswerFile(console);
            return 0;
        }
        if (m_export->IsGiven()) {
            RequireOwnOutput(m_file);
            ExportSettings(console, m_job, m_file, m_force);
            AnswerFile(console);
            return 0;
        }
        if (m_system->IsGiven()) {
            return System(console);
        }
        return m_get->IsGiven() ? Get(console) : Set(console);
    }

 private:
    void AddNames(CommandLine& command) {
        command.Add("SECTION", m_section, "The section, such as SETTINGS")
            .Required()
            .Placeholder("");
        command.Add("KEY", m_key, "The key, such as Mapscale").Required().Placeholder("");
    }

    int List(Console& console) const {
        CqSurveyDB db;
        OpenToRead(db, m_job);
        JsonWriter json(console);
        if (m_json) {
            json.BeginObject();
        }
        CStringList sections;
        db.GetSettingsSectionList(sections);
        for (const CString& section : sections) {
            if (m_json) {
                json.Key(ToUtf8(section));
                json.BeginObject();
            } else {
                console.Print("[{}]\n", Printable(ToUtf8(section)));
            }
            CStringList keys;
            db.GetSettingsKeyList(section, keys);
            for (const CString& key : keys) {
                CString value;
                db.GetSettingsString(section, key, value, CString());
                if (m_json) {
                    json.Member(ToUtf8(key), ToUtf8(value));
                } else {
                    console.Print("{}={}\n", Printable(ToUtf8(key)), Printable(ToUtf8(value)));
                }
            }
            if (m_json) {
                json.EndObject();
            }
        }
        if (m_json) {
            json.EndObject();
        }
        db.Close();
        return 0;
    }

    int Get(Console& console) const {
        const CString section = ReadText(m_section, "the section");
        const CString key = ReadText(m_key, "the key");
        CqSurveyDB db;
        OpenToRead(db, m_job);
        CString value;
        if (db.GetSettingsString(section, key, value, CString()) == 0) {
            throw Failure(fmt::format("{}: there is no setting {} in section {}", Printable(m_job),
                                      Quoted(m_key), Quoted(m_section)));
        }
        if (m_json) {
            console.Out(JsonWriter::Quote(ToUtf8(value)) + '\n');
        } else {
            console.Print("{}\n", ToUtf8(value));
        }
        db.Close();
        return 0;
    }

    int System(Console& console) const {
        CqSurveyDB db;
        if (m_systemOptions.IsGiven()) {
            m_systemOptions.Check();
            OpenToWrite(db, m_job);
            CqBatch batch(db);
            m_systemOptions.State(db, m_job);
            batch.Commit();
        } else {
            OpenToRead(db, m_job);
        }
        if (m_json) {
            JsonWriter json(console);
            json.BeginObject();
            json.Member("job", m_job);
            WriteSystem(json, db);
            json.EndObject();
        } else {
            console.Print("Length unit  {}\nSystem       {}\n", DescribeUnit(db),
                          DescribeSystem(db));
        }
        if (m_systemOptions.IsGiven()) {
            CloseChanged(db);
        }
        return 0;
    }

    void AnswerFile(Console& console) const {
        if (m_json) {
            JsonWriter json(console);
            json.BeginObject();
            json.Member("job", m_job);
            json.Member("file", m_file);
            json.EndObject();
        }
    }

    int Set(Console& console) const {
        const CString section = ReadText(m_section, "the section");
        const CString key = ReadText(m_key, "the key");
        static_cast<void>(ReadText(m_value, "the value"));
        const std::string fault = SettingRules::FindFault(m_section, m_key, m_value);
        if (!fault.empty()) {
            throw UsageError(fault);
        }
        CqSurveyDB db;
        OpenToWrite(db, m_job);
        CString before;
        if (!m_new && db.GetSettingsString(section, key, before, CString()) == 0) {
            if (const std::string typo = SettingRules::FindTypo(m_section, m_key); !typo.empty()) {
                throw UsageError(typo);
            }
        }
        CqBatch batch(db);
        if (SettingRules::IsOfSystem(m_section)) {
            SetSystem(db);
        } else if (WriteSetting(db, section, key) == 0) {
            throw Failure(fmt::format("{}: {}", Printable(m_job),
                                      m_value.empty()
                                          ? fmt::format("there is no setting {} in section {}",
                                                        Quoted(m_key), Quoted(m_section))
                                          : std::string("the settings could not be written")));
        }
        batch.Commit();
        if (m_json) {
            CString value;
            JsonWriter json(console);
            json.BeginObject();
            json.Member("job", m_job);
            json.Member("section", m_section);
            json.Member("key", m_key);
            json.Key("value");
            if (db.GetSettingsString(section, key, value, CString()) != 0) {
                json.Value(ToUtf8(value));
            } else {
                json.Null();
            }
            json.EndObject();
        }
        CloseChanged(db);
        return 0;
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
                throw Failure(Printable(m_job) + ": the settings could not be written");
            }
            return;
        }
        SystemOptions options;
        const bool unit = SettingRules::IsUnit(m_key);
        options.Set(unit ? std::optional(m_value) : std::nullopt,
                    unit ? std::nullopt : std::optional(m_value));
        options.State(db, m_job);
    }

    CommandLine* m_list = nullptr;
    CommandLine* m_system = nullptr;
    SystemOptions m_systemOptions;
    CommandLine* m_get = nullptr;
    CommandLine* m_set = nullptr;
    CommandLine* m_import = nullptr;
    CommandLine* m_export = nullptr;
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
