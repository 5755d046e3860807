#include <sys/ioctl.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>

#include "cqjob/Console.h"
#include "cqjob/Program.h"

int main(int argc, char** argv) {
    // A file that reaches its limit is a failure like any other, not the end of the program.
    static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));
    cqsurvey::cqjob::Console console(stdout, stderr, isatty(STDERR_FILENO) != 0);
    winsize size{};
    if (isatty(STDOUT_FILENO) != 0 && ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0) {
        console.SetWidth(size.ws_col);
    }
    return cqsurvey::cqjob::RunProgram(argc, argv, console);
}
