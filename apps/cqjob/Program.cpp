#include "cqjob/Program.h"

#include <cqsurvey/cqsurvey.h>

#include <exception>
#include <new>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "cqjob/Command.h"
#include "cqjob/Failure.h"
#include "cqjob/Printable.h"

namespace cqsurvey::cqjob {

namespace {

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;

/// When something is missing, what was not understood may have been meant for it.
std::string DescribeUnknown(const CLI::App& app, const CLI::ParseError& error) {
    const std::vector<std::string> unknown = app.remaining(true);
    if (error.get_exit_code() != static_cast<int>(CLI::ExitCodes::RequiredError) ||
        unknown.empty()) {
        return {};
    }
    return Quoted(unknown.front()) + " is not understood. ";
}

int Run(int argc, const char* const* argv, Console& console) {
    std::vector<std::unique_ptr<Command>> commands = MakeCommands();
    CLI::App app("Works on surveying jobs: points, drawing and settings of a survey in one file.");
    app.name("cqjob");
    app.set_version_flag("--version", "cqjob " CQJOB_VERSION, "Print the version and end");
    app.require_subcommand(1);
    app.failure_message(CLI::FailureMessage::simple);
    app.footer(
        "Exit status: 0 done, 1 failed, 2 wrong usage.\n"
        "\n"
        "Example:\n"
        "  cqjob new site.job\n"
        "  cqjob import site.job points.csv --order pnezd\n"
        "  cqjob points site.job --limit 10");
    std::vector<std::pair<CLI::App*, Command*>> declared;
    declared.reserve(commands.size());
    for (const auto& command : commands) {
        declared.emplace_back(command->AddTo(app), command.get());
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        std::ostringstream out;
        std::ostringstream err;
        const int status = app.exit(error, out, err);
        console.Out(out.str());
        if (!err.str().empty()) {
            console.Err("cqjob: " + DescribeUnknown(app, error) + err.str());
        }
        return status == 0 ? 0 : kWrongUsage;
    }
    for (const auto& [parsed, command] : declared) {
        if (!parsed->parsed()) {
            continue;
        }
        try {
            return command->Run(console);
        } catch (const UsageError& error) {
            console.Say("cqjob: {}\nRun cqjob {} --help for more information.\n", error.what(),
                        parsed->get_name());
            return kWrongUsage;
        } catch (const CException& error) {
            console.Say("cqjob: {}: {}\n", Printable(command->GetJob()), Printable(error.what()));
            return kFailed;
        }
    }
    return kWrongUsage;
}

}  // namespace

int RunProgram(int argc, const char* const* argv, Console& console) noexcept {
    try {
        int status = kFailed;
        try {
            status = Run(argc, argv, console);
            console.Flush();
        } catch (const Failure& error) {
            console.Say("cqjob: {}\n", error.what());
            return kFailed;
        } catch (const std::bad_alloc&) {
            console.Err("cqjob: out of memory\n");
            return kFailed;
        } catch (const std::exception& error) {
            console.Say("cqjob: {}\n", error.what());
            return kFailed;
        }
        return status;
    } catch (...) {
        return kFailed;
    }
}

}  // namespace cqsurvey::cqjob
