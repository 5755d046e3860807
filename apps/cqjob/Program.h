#pragma once

#include "cqjob/Console.h"

namespace cqsurvey::cqjob {

/// Runs the program and returns its exit status: 0 done, 1 failed, 2 wrong usage. Results go to the
/// console's output, everything else to its errors. Throws nothing.
int RunProgram(int argc, const char* const* argv, Console& console) noexcept;

}  // namespace cqsurvey::cqjob
