#include "cqjob/Command.h"
#include "cqjob/JobFile.h"

namespace cqsurvey::cqjob {

namespace {

class NewCommand : public Command {
 public:
    CommandLine& AddTo(CommandLine& program) override {
        CommandLine& command = program.AddCommand("new", "Create an empty job");
        AddJob(command, "The file to create");
        command.AddFlag("--force", m_force, "Replace an existing job; any other file stays");
        command.SetFooter("Example:\n  cqjob new site.job");
        return command;
    }

    int Run(Console&) override {
        CreateJob(m_job, m_force);
        return 0;
    }

 private:
    bool m_force = false;
};

}  // namespace

std::unique_ptr<Command> MakeNewCommand() {
    return std::make_unique<NewCommand>();
}

}  // namespace cqsurvey::cqjob
