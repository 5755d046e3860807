#include "cqjob/Command.h"

#include "cqjob/Failure.h"

namespace cqsurvey::cqjob {

void Command::AddJob(CommandLine& command, const std::string& help) {
    command.AddRequired("JOB", m_job, help);
}

void Command::AddJson(CommandLine& command) {
    command.AddFlag("--json", m_json, "Answer in JSON");
}

void Command::AddWide(CommandLine& command) {
    command.AddFlag("--wide", m_wide, "Do not fit the table to the width of the terminal");
}

int Command::Run(Console& console) {
    RunAction(console);
    return 0;
}

CommandLine& Command::AddAction(CommandLine& command, const std::string& word,
                                const std::string& help, Action action) {
    CommandLine& line = command.AddCommand(word, help);
    m_actions.emplace_back(&line, std::move(action));
    return line;
}

bool Command::RunAction(Console& console) const {
    for (const auto& [line, action] : m_actions) {
        if (line->IsGiven()) {
            action(console);
            return true;
        }
    }
    return false;
}

void Command::Answer(Console& console, const std::function<void(JsonWriter& json)>& write) const {
    JsonWriter json(console);
    json.Object([&] {
        json.Member("job", m_job);
        write(json);
    });
}

void Command::RequireOwnOutput(const std::string& path) const {
    if (m_json && path == "-") {
        throw UsageError("--json and the file - cannot both go to standard output");
    }
}

std::vector<std::unique_ptr<Command>> MakeCommands() {
    std::vector<std::unique_ptr<Command>> commands;
    commands.push_back(MakeNewCommand());
    commands.push_back(MakeImportCommand());
    commands.push_back(MakePointsCommand());
    commands.push_back(MakeEditCommand());
    commands.push_back(MakeDeleteCommand());
    commands.push_back(MakeDescribeCommand());
    commands.push_back(MakeGroupsCommand());
    commands.push_back(MakeInfoCommand());
    commands.push_back(MakeEntitiesCommand());
    commands.push_back(MakeLayersCommand());
    commands.push_back(MakeCodesCommand());
    commands.push_back(MakeDrawCommand());
    commands.push_back(MakeLineCommand());
    commands.push_back(MakeTextCommand());
    commands.push_back(MakeCircleCommand());
    commands.push_back(MakePlotCommand());
    commands.push_back(MakeExportCommand());
    commands.push_back(MakeCheckCommand());
    commands.push_back(MakeInspectCommand());
    commands.push_back(MakeBackupCommand());
    commands.push_back(MakeSettingsCommand());
    commands.push_back(MakeImageCommand());
    return commands;
}

}  // namespace cqsurvey::cqjob
