#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "cqjob/Console.h"

namespace cqsurvey::cqjob {

/// The line that shows how far work of more than a second has come: how many, how fast, how much of
/// the whole and how long still. On a terminal only.
class Progress {
 public:
    using Clock = std::function<std::chrono::steady_clock::time_point()>;

    /// `noun` is what is counted, such as "points".
    Progress(Console& console, std::string noun, Clock clock = std::chrono::steady_clock::now);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress();

    /// `count` things are done, `done` parts of `whole`. Cheap enough to be called for each.
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
