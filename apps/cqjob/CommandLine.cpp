#include "cqjob/CommandLine.h"

#include <CLI/CLI.hpp>
#include <cstdint>
#include <sstream>

#include "text/Printable.h"

namespace cqsurvey::cqjob {

namespace {

constexpr int kWrongUsage = 2;

/// When something required is missing, an argument that was not understood may have been meant for
/// it. Names that argument in a sentence; empty when there is none.
std::string DescribeUnknown(const CLI::App& app, const CLI::ParseError& error) {
    const std::vector<std::string> unknown = app.remaining(true);
    if (error.get_exit_code() != static_cast<int>(CLI::ExitCodes::RequiredError) ||
        unknown.empty()) {
        return {};
    }
    return Quoted(unknown.front()) + " is not understood. ";
}

}  // namespace

Argument Argument::Required() {
    m_option->required();
    return *this;
}

Argument Argument::Placeholder(const std::string& word) {
    m_option->type_name(word);
    return *this;
}

Argument Argument::ShowDefault() {
    m_option->capture_default_str();
    return *this;
}

Argument Argument::Check(const Test& test) {
    // The empty text keeps the help as it is.
    m_option->check(test, "");
    return *this;
}

Argument Argument::InRange(int least, int most) {
    m_option->check(CLI::Range(least, most));
    return *this;
}

Argument Argument::InRange(double least, double most) {
    m_option->check(CLI::Range(least, most));
    return *this;
}

Argument Argument::OneOf(const std::vector<std::string>& words) {
    m_option->check(CLI::IsMember(words));
    return *this;
}

Argument Argument::Excludes(const std::string& other) {
    m_option->excludes(other);
    return *this;
}

Argument Argument::Excludes(const Argument& other) {
    m_option->excludes(other.m_option);
    return *this;
}

Argument Argument::SplitAt(char separator) {
    m_option->delimiter(separator);
    return *this;
}

Argument Argument::OneValueEach() {
    m_option->type_size(1)->allow_extra_args(false);
    return *this;
}

Argument Argument::ShowOneValue() {
    m_option->expected(1)->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    return *this;
}

CommandLine::CommandLine(const std::string& program, const std::string& version,
                         const std::string& help)
    : m_program(std::make_unique<CLI::App>(help)), m_app(m_program.get()) {
    m_app->name(program);
    m_app->set_version_flag("--version", program + " " + version, "Print the version and end");
    m_app->failure_message(CLI::FailureMessage::simple);
}

CommandLine::CommandLine(CLI::App* app) : m_app(app) {}

CommandLine::~CommandLine() = default;

CommandLine& CommandLine::AddCommand(const std::string& word, const std::string& help) {
    m_commands.emplace_back(new CommandLine(m_app->add_subcommand(word, help)));
    return *m_commands.back();
}

void CommandLine::RequireCommand(bool optional) {
    m_app->require_subcommand(optional ? 0 : 1, 1);
}

template <class T>
Argument CommandLine::Add(const std::string& name, T& value, const std::string& help) {
    return Argument(m_app->add_option(name, value, help));
}

template Argument CommandLine::Add(const std::string&, std::string&, const std::string&);
template Argument CommandLine::Add(const std::string&, int&, const std::string&);
template Argument CommandLine::Add(const std::string&, double&, const std::string&);
template Argument CommandLine::Add(const std::string&, std::uint16_t&, const std::string&);
template Argument CommandLine::Add(const std::string&, std::optional<std::string>&,
                                   const std::string&);
template Argument CommandLine::Add(const std::string&, std::optional<int>&, const std::string&);
template Argument CommandLine::Add(const std::string&, std::optional<double>&, const std::string&);
template Argument CommandLine::Add(const std::string&, std::optional<std::uint32_t>&,
                                   const std::string&);
template Argument CommandLine::Add(const std::string&, std::vector<std::string>&,
                                   const std::string&);

Argument CommandLine::AddFlag(const std::string& names, bool& value, const std::string& help) {
    return Argument(m_app->add_flag(names, value, help));
}

void CommandLine::SetFooter(const std::string& text) {
    m_app->footer(text);
}

std::optional<int> CommandLine::Parse(int argc, const char* const* argv, Console& console) {
    try {
        m_app->parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        std::ostringstream out;
        std::ostringstream err;
        const int status = m_app->exit(error, out, err);
        console.Out(out.str());
        if (!err.str().empty()) {
            console.Err(m_app->get_name() + ": " + DescribeUnknown(*m_app, error) + err.str());
        }
        return status == 0 ? 0 : kWrongUsage;
    }
    return std::nullopt;
}

std::string CommandLine::GetName() const {
    return m_app->get_name();
}

bool CommandLine::IsGiven() const {
    return m_app->parsed();
}

bool CommandLine::IsGiven(const std::string& name) const {
    return m_app->count(name) > 0;
}

}  // namespace cqsurvey::cqjob
