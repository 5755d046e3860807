#include <cqsurvey/cqsurvey.h>

#include "cqjob/Command.h"
#include "cqjob/JobFile.h"
#include "cqjob/JsonWriter.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

namespace {

class BackupCommand : public Command {
 public:
    CommandLine& AddTo(CommandLine& program) override {
        CommandLine& command = program.AddCommand("backup", "Copy a job to another file");
        AddJob(command, "The job to copy; it is not changed");
        command.AddRequired("OUT", m_out, "The file to create");
        command.AddFlag("--force", m_force, "Replace an existing job; any other file stays");
        AddJson(command);
        command.SetFooter(
            "The copy is compared with the job and checked before it gets its name. Faults that "
            "the\n"
            "job has are in the copy, too, and are counted; cqjob check shows them.\n"
            "\n"
            "Example:\n"
            "  cqjob backup site.job /media/stick/site-monday.job");
        return command;
    }

    int Run(Console& console) override {
        RequireOtherFile(m_out, m_job);
        CqSurveyDB db;
        OpenToRead(db, m_job);
        std::size_t faults = 0;
        PutJob(m_out, m_force, [&](const CString& path) { faults = db.Backup(path); });
        const int points = db.GetNumCoordRecs();
        const int entities = db.GetNumCadEntities();
        db.Close();
        if (m_json) {
            Answer(console, [&](JsonWriter& json) {
                json.Member("file", m_out);
                json.Member("points", points);
                json.Member("entities", entities);
                json.Member("wrong", faults);
            });
        } else {
            console.Print("{}: {} points, {} entities copied\n", Printable(m_out), points,
                          entities);
        }
        if (faults != 0) {
            console.Say("cqjob: {}: the job has {} faults, and so has the copy; see cqjob check\n",
                        Printable(m_job), faults);
        }
        return 0;
    }

 private:
    std::string m_out;
    bool m_force = false;
};

}  // namespace

std::unique_ptr<Command> MakeBackupCommand() {
    return std::make_unique<BackupCommand>();
}

}  // namespace cqsurvey::cqjob
