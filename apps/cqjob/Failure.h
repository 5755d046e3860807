#pragma once

#include <fmt/format.h>

#include <stdexcept>
#include <string>
#include <utility>

#include "text/Printable.h"

namespace cqsurvey::cqjob {

/// The command could not do what it was asked to; the program ends with status 1. The text is a
/// sentence for the user that names the file concerned.
class Failure : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;

    /// The sentence "PATH: TEXT" about a file.
    template <class... Args>
    Failure(const std::string& path, fmt::format_string<Args...> text, Args&&... args)
        : std::runtime_error(Printable(path) + ": " +
                             fmt::format(text, std::forward<Args>(args)...)) {}
};

/// The command line makes no sense, by itself or for a file; the program ends with status 2.
class UsageError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

}  // namespace cqsurvey::cqjob
