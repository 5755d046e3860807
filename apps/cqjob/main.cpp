#include <unistd.h>

#include <cstdio>

#include "cqjob/Console.h"
#include "cqjob/Program.h"

int main(int argc, char** argv) {
    cqsurvey::cqjob::Console console(stdout, stderr, isatty(STDERR_FILENO) != 0);
    return cqsurvey::cqjob::RunProgram(argc, argv, console);
}
