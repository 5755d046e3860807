#pragma once

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/TempDir.h"

namespace cqsurvey::cqjob {

/// What a run of the built program came to.
struct CqjobRun {
    int status = -1;
    std::string out;
    std::string err;
};

/// Runs the built program with the given arguments, `input` on its standard input.
inline CqjobRun RunCqjob(std::vector<std::string> arguments, const std::string& input = {}) {
    const TempDir folder;
    std::ofstream(folder.Utf8("in"), std::ios::binary) << input;
    arguments.insert(arguments.begin(), CQJOB_PROGRAM);
    std::vector<char*> argv;
    for (std::string& argument : arguments) {
        argv.push_back(argument.data());
    }
    argv.push_back(nullptr);
    const std::string in = folder.Utf8("in");
    const std::string out = folder.Utf8("out");
    const std::string err = folder.Utf8("err");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    constexpr int kWrite = O_WRONLY | O_CREAT | O_TRUNC;
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, in.c_str(), O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, out.c_str(), kWrite, 0600);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, err.c_str(), kWrite, 0600);
    pid_t child = 0;
    const int failed = posix_spawn(&child, CQJOB_PROGRAM, &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (failed != 0) {
        throw std::runtime_error("cannot run " CQJOB_PROGRAM);
    }
    int status = 0;
    waitpid(child, &status, 0);
    const auto read = [](const std::string& path) {
        std::ifstream file(path, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(file), {});
    };
    return {
        .status = WIFEXITED(status) ? WEXITSTATUS(status) : -1, .out = read(out), .err = read(err)};
}

}  // namespace cqsurvey::cqjob
