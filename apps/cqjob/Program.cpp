#include "cqjob/Program.h"

#include <cqsurvey/cqsurvey.h>
#include <cqsurvey/exchange/ExchangeError.h>

#include <exception>
#include <new>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "cqjob/Command.h"
#include "cqjob/CommandLine.h"
#include "cqjob/Failure.h"
#include "text/Printable.h"

namespace cqsurvey::cqjob {

namespace {

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;

int SayWrongUsage(Console& console, const CommandLine& command, const std::exception& error) {
    console.Say("cqjob: {}\nRun cqjob {} --help for more information.\n", error.what(),
                command.GetName());
    return kWrongUsage;
}

int Run(int argc, const char* const* argv, Console& console) {
    const std::vector<std::unique_ptr<Command>> commands = MakeCommands();
    CommandLine line("cqjob", CQJOB_VERSION,
                     "Works on surveying jobs: points, drawing and settings of a survey in one "
                     "file.");
    line.RequireCommand();
    line.SetFooter(
        "Exit status: 0 done, 1 failed, 2 wrong usage.\n"
        "\n"
        "Example:\n"
        "  cqjob new site.job\n"
        "  cqjob import site.job points.csv --order pnezd\n"
        "  cqjob points site.job --limit 10");
    std::vector<std::pair<const CommandLine*, Command*>> declared;
    declared.reserve(commands.size());
    for (const auto& command : commands) {
        declared.emplace_back(&command->AddTo(line), command.get());
    }
    if (const std::optional<int> status = line.Parse(argc, argv, console)) {
        return *status;
    }
    for (const auto& [parsed, command] : declared) {
        if (!parsed->IsGiven()) {
            continue;
        }
        try {
            return command->Run(console);
        } catch (const UsageError& error) {
            return SayWrongUsage(console, *parsed, error);
        } catch (const exchange::OptionError& error) {
            return SayWrongUsage(console, *parsed, error);
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
