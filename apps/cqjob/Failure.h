#pragma once

#include <stdexcept>

namespace cqsurvey::cqjob {

/// What was asked for could not be done; the program ends with status 1. The text is a sentence for
/// the user that names the file concerned.
class Failure : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

/// The command line, or what it says about a file, makes no sense; the program ends with status 2.
class UsageError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

}  // namespace cqsurvey::cqjob
