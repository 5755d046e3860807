#include "cqjob/Program.h"

#include <cqsurvey/cqsurvey.h>
#include <cqsurvey/exchange/ExchangeError.h>

#include <algorithm>
#include <exception>
#include <new>
#include <optional>
#include <string>
#include <string_view>
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

/// The words of the command line, where "help import" means "import --help".
std::vector<const char*> ReadWords(int argc, const char* const* argv) {
    std::vector<const char*> words(argv, argv + argc);
    if (words.size() > 1 && std::string_view(words[1]) == "help") {
        words.erase(words.begin() + 1);
        words.push_back("--help");
    }
    return words;
}

int Run(int argc, const char* const* argv, Console& console) {
    const std::vector<std::unique_ptr<Command>> commands = MakeCommands();
    CommandLine line("cqjob", CQJOB_VERSION,
                     "Works on surveying jobs: points, drawing and settings of a survey in one "
                     "file.");
    line.RequireCommand();
    line.SetFooter(
        "cqjob help COMMAND tells more about a command.\n"
        "\n"
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
    const std::vector<const char*> words = ReadWords(argc, argv);
    if (argc > 2 && std::string_view(argv[1]) == "help" &&
        std::none_of(declared.begin(), declared.end(),
                     [&](const auto& entry) { return entry.first->GetName() == argv[2]; })) {
        console.Say("cqjob: there is no command {}\nRun cqjob --help for more information.\n",
                    Quoted(argv[2]));
        return kWrongUsage;
    }
    if (const std::optional<int> status =
            line.Parse(static_cast<int>(words.size()), words.data(), console)) {
        return *status;
    }
    for (const auto& [parsed, command] : declared) {
        if (!parsed->IsGiven()) {
            continue;
        }
        if (command->IsWide()) {
            console.SetWidth(0);
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
