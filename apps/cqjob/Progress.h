#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "cqjob/Console.h"

namespace cqsurvey::cqjob {

/// The line that shows the progress of work that takes more than a second: how many, how fast,
/// which part of the whole, and the time left. It is shown only on a terminal.
class Progress {
 public:
    using Clock = std::function<std::chrono::steady_clock::time_point()>;

    /// `noun` is what is counted, such as "points".
    Progress(Console& console, std::string noun, Clock clock = std::chrono::steady_clock::now);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress();

    /// Tells that `count` things are done, and `done` of `whole` parts. It is fast enough to be
    /// called for each thing.
    void Update(std::uint64_t count, std::uint64_t done, std::optional<std::uint64_t> whole);

    /// The line for work that has been going on for `seconds`.
    [[nodiscard]] static std::string Describe(const std::string& noun, std::uint64_t count,
                                              std::uint64_t done,
                                              std::optional<std::uint64_t> whole, double seconds);

 private:
    Console& m_console;
    std::string m_noun;
    Clock m_clock;
    std::chrono::steady_clock::time_point m_start;
    std::chrono::steady_clock::time_point m_next;
    std::uint32_t m_calls = 0;
};

}  // namespace cqsurvey::cqjob
