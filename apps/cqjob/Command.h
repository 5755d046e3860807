#pragma once

#include <memory>
#include <string>
#include <vector>

#include "cqjob/CommandLine.h"
#include "cqjob/Console.h"

namespace cqsurvey::cqjob {

/// One command of the program: "cqjob WORD ...".
class Command {
 public:
    Command() = default;
    Command(const Command&) = delete;
    Command& operator=(const Command&) = delete;
    virtual ~Command() = default;

    /// Declares the command with its arguments and options, and returns its command line. The
    /// values are kept in this object, which must outlive the parsing of `program`.
    virtual CommandLine& AddTo(CommandLine& program) = 0;

    /// Runs the command and returns the exit status, 0 or 1. Throws UsageError, Failure and what
    /// the library throws.
    virtual int Run(Console& console) = 0;

    /// The job that a message names when the failure does not name a file.
    [[nodiscard]] const std::string& GetJob() const { return m_job; }

    /// True when a table may be wider than the terminal.
    [[nodiscard]] bool IsWide() const { return m_wide; }

 protected:
    /// Adds the argument JOB, which every command has.
    void AddJob(CommandLine& command, const std::string& help);

    /// Adds --json.
    void AddJson(CommandLine& command);

    /// Adds --wide, for a command that writes a table.
    void AddWide(CommandLine& command);

    /// Throws UsageError when both the JSON and the file `path` would go to standard output.
    void RequireOwnOutput(const std::string& path) const;

    std::string m_job;
    bool m_json = false;
    bool m_wide = false;
};

// One function for each command, defined beside it.
std::unique_ptr<Command> MakeNewCommand();
std::unique_ptr<Command> MakeImportCommand();
std::unique_ptr<Command> MakePointsCommand();
std::unique_ptr<Command> MakeEditCommand();
std::unique_ptr<Command> MakeDeleteCommand();
std::unique_ptr<Command> MakeDescribeCommand();
std::unique_ptr<Command> MakeGroupsCommand();
std::unique_ptr<Command> MakeInfoCommand();
std::unique_ptr<Command> MakeEntitiesCommand();
std::unique_ptr<Command> MakeLayersCommand();
std::unique_ptr<Command> MakeCodesCommand();
std::unique_ptr<Command> MakeDrawCommand();
std::unique_ptr<Command> MakeLineCommand();
std::unique_ptr<Command> MakeTextCommand();
std::unique_ptr<Command> MakeCircleCommand();
std::unique_ptr<Command> MakePlotCommand();
std::unique_ptr<Command> MakeExportCommand();
std::unique_ptr<Command> MakeCheckCommand();
std::unique_ptr<Command> MakeInspectCommand();
std::unique_ptr<Command> MakeBackupCommand();
std::unique_ptr<Command> MakeSettingsCommand();
std::unique_ptr<Command> MakeImageCommand();

/// Every command, in the order in which the help lists them.
std::vector<std::unique_ptr<Command>> MakeCommands();

}  // namespace cqsurvey::cqjob
