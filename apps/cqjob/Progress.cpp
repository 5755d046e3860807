#include "cqjob/Progress.h"

#include <fmt/format.h>

#include <cmath>
#include <utility>

namespace cqsurvey::cqjob {

namespace {

constexpr std::chrono::milliseconds kPatience{1000};
constexpr std::chrono::milliseconds kPause{200};

std::string DescribeSeconds(double seconds) {
    const auto whole = static_cast<std::uint64_t>(std::ceil(seconds));
    return whole < 60 ? fmt::format("{} s", whole)
                      : fmt::format("{} min {:02} s", whole / 60, whole % 60);
}

}  // namespace

Progress::Progress(Console& console, std::string noun, Clock clock)
    : m_console(console),
      m_noun(std::move(noun)),
      m_clock(std::move(clock)),
      m_start(m_clock()),
      m_next(m_start + kPatience) {}

Progress::~Progress() {
    m_console.ShowProgress({});
}

void Progress::Update(std::uint64_t count, std::uint64_t done, std::optional<std::uint64_t> whole) {
    constexpr std::uint32_t kCallsPerLook = 256;
    if (!m_console.ShowsProgress() || m_calls++ % kCallsPerLook != 0) {
        return;
    }
    const auto now = m_clock();
    if (now < m_next) {
        return;
    }
    m_next = now + kPause;
    const std::chrono::duration<double> elapsed = now - m_start;
    m_console.ShowProgress(Describe(m_noun, count, done, whole, elapsed.count()));
}

std::string Progress::Describe(const std::string& noun, std::uint64_t count, std::uint64_t done,
                               std::optional<std::uint64_t> whole, double seconds) {
    std::string line =
        fmt::format("{} {}, {:.0f}/s", count, noun, static_cast<double>(count) / seconds);
    if (whole && *whole > 0 && done > 0) {
        const double part = std::fmin(1.0, static_cast<double>(done) / static_cast<double>(*whole));
        line += fmt::format(", {:.0f}%, {} left", std::floor(100.0 * part),
                            DescribeSeconds(seconds * (1.0 - part) / part));
    }
    return line;
}

}  // namespace cqsurvey::cqjob
