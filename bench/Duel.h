#pragma once

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstddef>
#include <vector>

namespace cqsurvey::bench {

/// Work that waits for the disk is measured by the clock on the wall; work in memory by the time
/// the processor gave it, whatever else the machine does.
enum class Clock { Wall, Processor };

/// Measures the library and a rival that does the same work, in turn, round by round, so that
/// whatever else the machine does meets both. Reports, as counters, the median times of an item and
/// the median of the rounds' ratios.
///
/// The benchmark it stands in must use manual time.
class Duel {
 public:
    /// A round does `items` items.
    Duel(benchmark::State& state, std::size_t items, Clock clock)
        : m_state(state), m_items(items), m_clock(clock) {}
    Duel(const Duel&) = delete;
    Duel& operator=(const Duel&) = delete;
    ~Duel();

    /// The library is to reach at least `share` of the rival's speed.
    void SpeedAtLeast(double share) { m_state.counters["goal_speed"] = share; }
    /// It is to take at most so much longer for an item than the rival.
    void BeyondAtMost(std::chrono::nanoseconds time) {
        m_state.counters["goal_beyond"] = static_cast<double>(time.count());
    }
    /// It is to take at most so much for an item.
    void TimeAtMost(std::chrono::nanoseconds time) {
        m_state.counters["goal_time"] = static_cast<double>(time.count());
    }

    template <class Ours, class Rival>
    void Round(Ours&& ours, Rival&& rival) {
        RoundWithSetup([] {}, ours, [] {}, rival);
    }

    /// The library, or what there is to know about the machine, by itself.
    template <class Ours>
    void Round(Ours&& ours) {
        m_ours.push_back(Seconds(ours));
        m_state.SetIterationTime(m_ours.back());
    }

    /// Both, with what must happen before, outside the measured time.
    template <class OurSetup, class Ours, class RivalSetup, class Rival>
    void RoundWithSetup(OurSetup&& ourSetup, Ours&& ours, RivalSetup&& rivalSetup, Rival&& rival) {
        double ourTime = 0;
        double rivalTime = 0;
        const bool oursFirst = m_ours.size() % 2 == 0;
        for (const bool our : {oursFirst, !oursFirst}) {
            if (our) {
                ourSetup();
                ourTime = Seconds(ours);
            } else {
                rivalSetup();
                rivalTime = Seconds(rival);
            }
        }
        m_state.SetIterationTime(ourTime);
        m_ours.push_back(ourTime);
        m_rival.push_back(rivalTime);
    }

 private:
    template <class Work>
    double Seconds(Work&& work) const {
        const double begin = Now();
        work();
        return Now() - begin;
    }
    [[nodiscard]] double Now() const;

    benchmark::State& m_state;
    std::size_t m_items;
    Clock m_clock;
    std::vector<double> m_ours;
    std::vector<double> m_rival;
};

/// The sizes of a job at which everything is measured.
inline constexpr int kSmallest = 1'000;
inline constexpr int kLargest = 1'000'000;

/// Registers `function` under `name` for each size of a job. `rival` says what it stands beside;
/// a job of `size` is measured in roundsOf(size) rounds.
template <class Function, class RoundsOf>
void ForEachSize(const char* name, const char* rival, Function function, RoundsOf roundsOf) {
    for (int size = kSmallest; size <= kLargest; size *= 10) {
        benchmark::RegisterBenchmark(name,
                                     [rival, function](benchmark::State& state) {
                                         state.SetLabel(rival);
                                         function(state);
                                     })
            ->Arg(size)
            ->Iterations(roundsOf(size))
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
    }
}

}  // namespace cqsurvey::bench
