#pragma once

#include <stdexcept>

namespace cqsurvey::cqjob {

/// The command could not do what it was asked to; the program ends with status 1. The text is a
/// sentence for the user that names the file concerned.
class Failure : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

/// The command line makes no sense, by itself or for a file; the program ends with status 2.
class UsageError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

}  // namespace cqsurvey::cqjob
