#include <cstdio>
#include <exception>

#include "golden/GoldenJob.h"
#include "support/TempDir.h"

/// Makes the golden job of the format version that the library writes.
int main(int count, char** arguments) {
    if (count != 2) {
        std::fputs("usage: cqsurvey_make_golden_job NEW_JOB\n", stderr);
        return 2;
    }
    try {
        const cqsurvey::TempDir folder;
        cqsurvey::MakeGoldenJob(arguments[1], folder.Utf8("."));
        return 0;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s\n", failure.what());
        return 1;
    }
}
