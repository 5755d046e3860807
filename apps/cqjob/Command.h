#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "cqjob/CommandLine.h"
#include "cqjob/Console.h"
#include "cqjob/JsonWriter.h"

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
    /// the library throws. A command that consists of actions runs the one that is given.
    virtual int Run(Console& console);

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

    /// What an action does; it writes to the console.
    using Action = std::function<void(Console& console)>;

    /// Adds a command below `command`, such as "add" below "layers", and what it does.
    CommandLine& AddAction(CommandLine& command, const std::string& word, const std::string& help,
                           Action action);

    /// Runs the action that is given. Returns false when there is none.
    bool RunAction(Console& console) const;

    /// Writes the JSON of an answer: an object of the job and the members that `write` adds.
    void Answer(Console& console, const std::function<void(JsonWriter& json)>& write) const;

    /// Throws UsageError when both the JSON and the file `path` would go to standard output.
    void RequireOwnOutput(const std::string& path) const;

    std::string m_job;
    bool m_json = false;
    bool m_wide = false;

 private:
    std::vector<std::pair<const CommandLine*, Action>> m_actions;
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
