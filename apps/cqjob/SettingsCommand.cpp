#include <cqsurvey/cqsurvey.h>

#include "cqjob/Command.h"
#include "cqjob/Failure.h"
#include "cqjob/JobFile.h"
#include "cqjob/JsonWriter.h"
#include "cqjob/Printable.h"
#include "cqjob/SettingRules.h"

namespace cqsurvey::cqjob {

namespace {

class SettingsCommand : public Command {
 public:
    CLI::App* AddTo(CLI::App& app) override {
        CLI::App* command = app.add_subcommand("settings", "List, get and set a job's settings");
        AddJob(*command, "The job; only set changes it");
        command->add_option("ACTION", m_action, "list (if nothing is said), get or set")
            ->type_name("")
            ->check(CLI::IsMember({"list", "get", "set"}));
        command->add_option("SECTION", m_section, "The section, such as SETTINGS")->type_name("");
        command->add_option("KEY", m_key, "The key, such as Mapscale")->type_name("");
        command->add_option("VALUE", m_value, "The value; an empty one removes a key of your own")
            ->type_name("");
        AddJson(*command);
        command->footer(
            "Sections and keys are found without regard to case. set makes a section that is not\n"
            "there, so that programs can keep settings of their own with the job.\n"
            "\n"
            "Example:\n"
            "  cqjob settings site.job\n"
            "  cqjob settings site.job get SETTINGS Mapscale\n"
            "  cqjob settings site.job set SETTINGS Mapscale 250\n"
            "  cqjob settings site.job set MyOffice Crew \"A. Berg, T. Lund\"");
        m_command = command;
        return command;
    }

    int Run(Console& console) override {
        const std::size_t given =
            m_command->count("SECTION") + m_command->count("KEY") + m_command->count("VALUE");
        if (m_action == "list") {
            Expect(given == 0, "list takes nothing more");
            return List(console);
        }
        if (m_action == "get") {
            Expect(given == 2, "get takes a section and a key");
            return Get(console);
        }
        Expect(given == 3, "set takes a section, a key and a value");
        Expect(!m_json, "set gives no answer in JSON");
        return Set();
    }

 private:
    static void Expect(bool condition, const char* sentence) {
        if (!condition) {
            throw UsageError(sentence);
        }
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
        CqSurveyDB db;
        OpenToRead(db, m_job);
        CString value;
        if (db.GetSettingsString(FromUtf8(m_section), FromUtf8(m_key), value, CString()) == 0) {
            throw Failure(fmt::format("{}: there is no setting {} in section {}", Printable(m_job),
                                      Quoted(m_key), Quoted(m_section)));
        }
        if (m_json) {
            JsonWriter(console).Value(ToUtf8(value));
            console.Out("\n");
        } else {
            console.Print("{}\n", ToUtf8(value));
        }
        db.Close();
        return 0;
    }

    int Set() const {
        const std::string fault = SettingRules::FindFault(m_section, m_key, m_value);
        if (!fault.empty()) {
            throw UsageError(fault);
        }
        const CString section = FromUtf8(m_section);
        CqSurveyDB db;
        OpenToWrite(db, m_job);
        CqBatch batch(db);
        // 0 when the section is there already.
        db.AddSettingsSection(section);
        if (db.WriteSettingsString(section, FromUtf8(m_key),
                                   FromUtf8(SettingRules::Normalise(m_section, m_key, m_value))) ==
            0) {
            throw Failure(fmt::format("{}: {}", Printable(m_job),
                                      m_value.empty()
                                          ? fmt::format("there is no setting {} in section {}",
                                                        Quoted(m_key), Quoted(m_section))
                                          : std::string("the settings could not be written")));
        }
        batch.Commit();
        db.Close();
        return 0;
    }

    CLI::App* m_command = nullptr;
    std::string m_action = "list";
    std::string m_section;
    std::string m_key;
    std::string m_value;
};

}  // namespace

std::unique_ptr<Command> MakeSettingsCommand() {
    return std::make_unique<SettingsCommand>();
}

}  // namespace cqsurvey::cqjob
