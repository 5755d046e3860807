#include "cqjob/Command.h"
#include "cqjob/JobFile.h"

namespace cqsurvey::cqjob {

namespace {

class NewCommand : public Command {
 public:
    CLI::App* AddTo(CLI::App& app) override {
        CLI::App* command = app.add_subcommand("new", "Create an empty job");
        AddJob(*command, "The file to create");
        command->add_flag("--force", m_force,
                          "Replace a job that is there; anything else that is there stays");
        command->footer("Example:\n  cqjob new site.job");
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
