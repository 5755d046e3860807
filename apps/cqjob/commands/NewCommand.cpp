#include <cstdio>

#include "cqjob/Command.h"
#include "cqjob/Failure.h"
#include "cqjob/JobFile.h"
#include "cqjob/JsonWriter.h"
#include "cqjob/settings/SystemOptions.h"

namespace cqsurvey::cqjob {

namespace {

class NewCommand : public Command {
 public:
    CommandLine& AddTo(CommandLine& program) override {
        CommandLine& command = program.AddCommand("new", "Create an empty job");
        AddJob(command, "The file to create");
        m_system.AddTo(command);
        command.AddFlag("--force", m_force, "Replace an existing job; any other file stays");
        AddJson(command);
        command.SetFooter(
            "The job gets an identity, a UUID that cqjob info shows. A copy of the file keeps "
            "it.\n" +
            std::string(SystemOptions::kHelp) +
            "\n"
            "Example:\n"
            "  cqjob new site.job\n"
            "  cqjob new site.job --unit us-ft --crs EPSG:2230");
        return command;
    }

    int Run(Console& console) override {
        m_system.Check();
        PutJob(m_job, m_force, [this](const CString& path) { Make(path); });
        if (m_json) {
            WriteJson(console);
        }
        return 0;
    }

 private:
    /// Without an identity and what else was asked for, no job is left.
    void Make(const CString& path) const {
        CqSurveyDB db;
        db.CreateNew(path);
        try {
            CqBatch batch(db);
            m_system.State(db, m_job);
            if (CqJobIdentity(db).Give() == 0) {
                throw Failure(m_job, "the settings could not be written");
            }
            batch.Commit();
        } catch (...) {
            db.Close();
            std::remove(ToUtf8(path).c_str());
            throw;
        }
        db.Close();
    }

    void WriteJson(Console& console) const {
        CqSurveyDB db;
        OpenToRead(db, m_job);
        Answer(console, [&](JsonWriter& json) {
            json.Member("id", CqJobIdentity(db).Get());
            WriteSystem(json, db);
        });
    }

    SystemOptions m_system;
    bool m_force = false;
};

}  // namespace

std::unique_ptr<Command> MakeNewCommand() {
    return std::make_unique<NewCommand>();
}

}  // namespace cqsurvey::cqjob
