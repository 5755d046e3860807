#include "Duel.h"

#include <time.h>

#include <algorithm>

namespace cqsurvey::bench {

namespace {

double Median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

}  // namespace

double Duel::Now() const {
    struct timespec time {};
    ::clock_gettime(m_clock == Clock::Wall ? CLOCK_MONOTONIC : CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

Duel::~Duel() {
    if (m_ours.empty()) {
        return;
    }
    const double toItem = 1e9 / static_cast<double>(m_items);
    m_state.counters["ours_ns"] = Median(m_ours) * toItem;
    if (m_rival.empty()) {
        return;
    }
    std::vector<double> speeds;
    std::vector<double> beyond;
    for (std::size_t i = 0; i < m_ours.size(); ++i) {
        speeds.push_back(m_rival[i] / m_ours[i]);
        beyond.push_back(m_ours[i] - m_rival[i]);
    }
    m_state.counters["rival_ns"] = Median(m_rival) * toItem;
    m_state.counters["beyond_ns"] = Median(beyond) * toItem;
    m_state.counters["speed"] = Median(speeds);
}

}  // namespace cqsurvey::bench
