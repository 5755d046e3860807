#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cqjob/Console.h"

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace cqsurvey::cqjob {

/// What stands before the name of an option.
inline constexpr const char* kOptionPrefix = "--";

/// An argument or option of a CommandLine, which owns it. Each function that changes it returns it
/// again, so that declarations can be chained.
class Argument {
 public:
    /// Why a value is refused; empty when it is taken.
    using Test = std::function<std::string(const std::string& value)>;

    explicit Argument(CLI::Option* option) : m_option(option) {}

    Argument Required();

    /// What the help shows in place of the value.
    Argument Placeholder(const std::string& word);

    /// The help shows the value that the variable has now.
    Argument ShowDefault();

    Argument Check(const Test& test);
    Argument InRange(int least, int most);
    Argument InRange(double least, double most);
    Argument OneOf(const std::vector<std::string>& words);

    /// The command line may not hold both; the other is named like "--order".
    Argument Excludes(const std::string& other);
    Argument Excludes(const Argument& other);

    /// A value is a list with `separator` between its parts.
    Argument SplitAt(char separator);

    /// Takes one value, and more only when the option is given again.
    Argument OneValueEach();

    /// The help shows one value, although the option takes any number.
    Argument ShowOneValue();

 private:
    CLI::Option* m_option;
};

/// What the words after the program's name may be: options, arguments and commands, each of which
/// is a CommandLine again. The values go into variables of the caller, which must outlive the call
/// of Parse. The only place that knows the library underneath, whose header takes longest of all to
/// compile.
class CommandLine {
 public:
    /// The command line of a whole program.
    CommandLine(const std::string& program, const std::string& version, const std::string& help);
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;
    ~CommandLine();

    CommandLine& AddCommand(const std::string& word, const std::string& help);

    /// Exactly one of the commands must be given; with `optional` at most one.
    void RequireCommand(bool optional = false);

    /// A name such as "--order" makes an option, any other an argument. `T` is std::string, int,
    /// double, an unsigned number of 16 or 32 bits, std::optional of one of them, or
    /// std::vector<std::string>.
    template <class T>
    Argument Add(const std::string& name, T& value, const std::string& help);

    /// "--header,!--no-header" takes a flag that sets the value and one that clears it.
    Argument AddFlag(const std::string& names, bool& value, const std::string& help);

    /// What the help ends with.
    void SetFooter(const std::string& text);

    /// Reads the words and fills in the variables. Returns nothing when the program is to go on;
    /// when the words ask for help or make no sense it says so on the console and returns the exit
    /// status, 0 or 2.
    [[nodiscard]] std::optional<int> Parse(int argc, const char* const* argv, Console& console);

    /// The command's word, or the program's name.
    [[nodiscard]] std::string GetName() const;

    /// True when Parse found this command.
    [[nodiscard]] bool IsGiven() const;

    /// True when Parse found the option or argument of this name.
    [[nodiscard]] bool IsGiven(const std::string& name) const;

 private:
    explicit CommandLine(CLI::App* app);

    std::unique_ptr<CLI::App> m_program;  // of the whole program only
    CLI::App* m_app;
    std::vector<std::unique_ptr<CommandLine>> m_commands;
};

}  // namespace cqsurvey::cqjob
