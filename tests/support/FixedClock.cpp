#include "support/FixedClock.h"

#include <atomic>
#include <ctime>

namespace cqsurvey {

namespace {

constexpr std::int64_t kRuns = -1;
std::atomic<std::int64_t> g_seconds{kRuns};

}  // namespace

FixedClock::FixedClock(std::uint32_t seconds) {
    g_seconds = seconds;
}

FixedClock::~FixedClock() {
    g_seconds = kRuns;
}

void FixedClock::Advance(std::uint32_t seconds) {
    g_seconds += seconds;
}

namespace {

std::int64_t Seconds() noexcept {
    const std::int64_t fixed = g_seconds;
    if (fixed != kRuns) {
        return fixed;
    }
    std::timespec now{};
    return std::timespec_get(&now, TIME_UTC) == TIME_UTC ? now.tv_sec : -1;
}

}  // namespace
}  // namespace cqsurvey

// Stands in for the C library's.
extern "C" std::time_t time(std::time_t* seconds) noexcept {
    const auto now = static_cast<std::time_t>(cqsurvey::Seconds());
    if (seconds != nullptr) {
        *seconds = now;
    }
    return now;
}
