#include "cqjob/gis/GdalProgram.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <system_error>

#include "cqjob/Failure.h"

namespace cqsurvey::cqjob {

namespace {

constexpr const char* kPlugin = "ogr_CqSurvey.so";

/// The folder of the driver beside this program; empty when it is not there.
std::string FindPlugin() {
    std::error_code failure;
    const auto folder = std::filesystem::read_symlink("/proc/self/exe", failure).parent_path();
    for (const char* place : {CQJOB_GDAL_PLUGINS, "../../integrations/gdal"}) {
        const auto plugins = (folder / place).lexically_normal();
        if (std::filesystem::exists(plugins / kPlugin, failure)) {
            return plugins.string();
        }
    }
    return {};
}

/// The status of a program that is not there.
constexpr int kNotFound = 127;

/// Where a program's output goes.
enum class Output {
    Nowhere,
    Errors,  ///< to standard error, since results of this program alone go to standard output
    Text     ///< to the caller; the program's messages go nowhere
};

/// Runs a program and waits for it. Returns its exit status. `text` is what it wrote, when that is
/// asked for.
int RunProgram(std::vector<std::string> words, std::vector<std::string> environment, Output output,
               std::string* text = nullptr) {
    std::vector<char*> argv;
    argv.reserve(words.size() + 1);
    for (std::string& word : words) {
        argv.push_back(word.data());
    }
    argv.push_back(nullptr);
    std::vector<char*> variables;
    variables.reserve(environment.size() + 1);
    for (std::string& variable : environment) {
        variables.push_back(variable.data());
    }
    variables.push_back(nullptr);
    std::array<int, 2> ends{-1, -1};
    if (output == Output::Text && pipe2(ends.data(), O_CLOEXEC) != 0) {
        throw Failure("a program cannot be run: the system has no more file handles");
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    if (output == Output::Errors) {
        posix_spawn_file_actions_adddup2(&actions, STDERR_FILENO, STDOUT_FILENO);
    } else {
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        if (output == Output::Text) {
            posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
        } else {
            posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        }
    }
    pid_t child = 0;
    const int failed =
        posix_spawnp(&child, argv.front(), &actions, nullptr, argv.data(), variables.data());
    posix_spawn_file_actions_destroy(&actions);
    if (output == Output::Text) {
        close(ends[1]);
        std::array<char, 4096> piece{};
        ssize_t count = 0;
        while ((count = read(ends[0], piece.data(), piece.size())) > 0 ||
               (count < 0 && errno == EINTR)) {
            text->append(piece.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        }
        close(ends[0]);
    }
    if (failed != 0) {
        return kNotFound;
    }
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace

GdalProgram::GdalProgram() {
    for (char** variable = environ; *variable != nullptr; ++variable) {
        m_environment.emplace_back(*variable);
    }
    if (std::getenv("GDAL_DRIVER_PATH") == nullptr) {
        if (const std::string folder = FindPlugin(); !folder.empty()) {
            m_environment.push_back("GDAL_DRIVER_PATH=" + folder);
        }
    }
    const int version = RunProgram({"ogr2ogr", "--version"}, m_environment, Output::Nowhere);
    if (version == kNotFound) {
        throw Failure(
            "this needs GDAL's program ogr2ogr, which is not there; on Debian: apt-get install "
            "gdal-bin");
    }
    if (RunProgram({"ogrinfo", "--format", "CqSurvey"}, m_environment, Output::Nowhere) != 0) {
        throw Failure(fmt::format(
            "GDAL is there, but not its driver for jobs, {}; set GDAL_DRIVER_PATH to its folder",
            kPlugin));
    }
}

std::vector<std::string> GdalProgram::ListLayers(const std::string& source) const {
    std::string text;
    std::vector<std::string> layers;
    if (RunProgram({"ogrinfo", "-ro", "-q", source}, m_environment, Output::Text, &text) != 0) {
        return layers;
    }
    // Lines such as "1: points (3D Point)", or without a type when there is none.
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t begin = line.find(": ");
        if (begin == std::string::npos || line.find_first_not_of("0123456789") != begin) {
            continue;
        }
        const std::string name = line.substr(begin + 2);
        const std::size_t type = name.rfind(" (");
        const bool typed = type != std::string::npos && !HasLayer(source, name);
        layers.push_back(typed ? name.substr(0, type) : name);
    }
    return layers;
}

bool GdalProgram::HasLayer(const std::string& source, const std::string& layer) const {
    return RunProgram({"ogrinfo", "-ro", "-q", "-so", source, layer}, m_environment,
                      Output::Nowhere) == 0;
}

void GdalProgram::Run(const std::vector<std::string>& arguments) const {
    std::vector<std::string> words{"ogr2ogr"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    const int status = RunProgram(std::move(words), m_environment, Output::Errors);
    if (status != 0) {
        throw Failure(fmt::format("ogr2ogr failed with status {}; its messages are above", status));
    }
}

}  // namespace cqsurvey::cqjob
