#include "cqjob/gis/GdalProgram.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
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

/// Runs a program and waits for it. Returns its exit status, or nothing when there is no such
/// program. A quiet one writes nothing.
int RunProgram(std::vector<std::string> words, std::vector<std::string> environment, bool quiet) {
    std::vector<char*> argv;
    for (std::string& word : words) {
        argv.push_back(word.data());
    }
    argv.push_back(nullptr);
    std::vector<char*> variables;
    for (std::string& variable : environment) {
        variables.push_back(variable.data());
    }
    variables.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    if (quiet) {
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    } else {
        // Results of this program alone go to standard output.
        posix_spawn_file_actions_adddup2(&actions, STDERR_FILENO, STDOUT_FILENO);
    }
    pid_t child = 0;
    const int failed =
        posix_spawnp(&child, argv.front(), &actions, nullptr, argv.data(), variables.data());
    posix_spawn_file_actions_destroy(&actions);
    constexpr int kNotFound = 127;
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
    constexpr int kNotFound = 127;
    const int version = RunProgram({"ogr2ogr", "--version"}, m_environment, true);
    if (version == kNotFound) {
        throw Failure(
            "this needs GDAL's program ogr2ogr, which is not there; on Debian: apt-get install "
            "gdal-bin");
    }
    if (RunProgram({"ogrinfo", "--format", "CqSurvey"}, m_environment, true) != 0) {
        throw Failure(fmt::format(
            "GDAL is there, but not its driver for jobs, {}; set GDAL_DRIVER_PATH to its folder",
            kPlugin));
    }
}

void GdalProgram::Run(const std::vector<std::string>& arguments) const {
    std::vector<std::string> words{"ogr2ogr"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    const int status = RunProgram(std::move(words), m_environment, false);
    if (status != 0) {
        throw Failure(fmt::format("ogr2ogr failed with status {}; its messages are above", status));
    }
}

}  // namespace cqsurvey::cqjob
