#pragma once

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

/// What is written before the name of an option.
inline constexpr const char* kOptionPrefix = "--";

/// An argument or option of a CommandLine, which owns it. The functions that change it return it,
/// so that calls can be chained.
class Argument {
 public:
    /// Returns why a value is refused; empty when it is accepted.
    using Test = std::function<std::string(const std::string& value)>;

    explicit Argument(CLI::Option* option) : m_option(option) {}

    Argument Required();

    /// Sets what the help shows in place of the value.
    Argument Placeholder(const std::string& word);

    /// Makes the help show the value that the variable has now.
    Argument ShowDefault();

    Argument Check(const Test& test);
    Argument InRange(int least, int most);
    Argument InRange(double least, double most);
    Argument OneOf(const std::vector<std::string>& words);

    /// Forbids both on one command line. The other is named like "--order".
    Argument Excludes(const std::string& other);
    Argument Excludes(const Argument& other);

    /// Takes a list as its value, with `separator` between the parts.
    Argument SplitAt(char separator);

    /// Takes one value, and more only when the option is given again.
    Argument OneValueEach();

    /// Makes the help show one value, although the option takes any number.
    Argument ShowOneValue();

 private:
    CLI::Option* m_option;
};

/// What may follow the program's name: options, arguments and commands, each of which is a
/// CommandLine again. The values go into variables of the caller, which must outlive the call of
/// Parse. Only this class uses the library for command lines, because that library's header takes
/// long to compile.
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

    /// Adds an option when the name is like "--order", otherwise an argument. `T` is std::string,
    /// int, double, an unsigned number of 16 or 32 bits, std::optional of one of them, or
    /// std::vector<std::string>.
    template <class T>
    Argument Add(const std::string& name, T& value, const std::string& help);

    /// Adds an argument that must be given.
    template <class T>
    Argument AddRequired(const std::string& name, T& value, const std::string& help) {
        return Add(name, value, help).Required().Placeholder("");
    }

    /// Adds a flag. "--header,!--no-header" adds one that sets the value and one that clears it.
    Argument AddFlag(const std::string& names, bool& value, const std::string& help);

    /// Sets the end of the help.
    void SetFooter(const std::string& text);

    /// Reads the words and fills in the variables. Returns nothing when the program is to go on.
    /// When the words ask for help or make no sense, writes to the console and returns the exit
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
