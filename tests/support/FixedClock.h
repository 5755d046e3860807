#pragma once

#include <cstdint>

namespace cqsurvey {

/// The host's clock stands still while an object lives, so that the times in a job are known. It
/// does so for std::time, which is the library's only clock, in the whole program. One object at a
/// time.
class FixedClock {
 public:
    /// Stops the clock at `seconds` since 1970-01-01 00:00 UTC.
    explicit FixedClock(std::uint32_t seconds);
    FixedClock(const FixedClock&) = delete;
    FixedClock& operator=(const FixedClock&) = delete;
    ~FixedClock();

    void Advance(std::uint32_t seconds);
};

}  // namespace cqsurvey
