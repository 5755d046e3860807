#include <malloc.h>

#include "Benchmarks.h"
#include "Duel.h"
#include "Folder.h"
#include "Jobs.h"

namespace cqsurvey::bench {

namespace {

/// A point's and its entity's packed record.
constexpr double kPackedBytes = 64 + 44;
constexpr double kMostBytesBeyond = 250;

double BytesInUse() {
    const struct mallinfo2 info = ::mallinfo2();
    return static_cast<double>(info.uordblks + info.hblkhd);
}

void Memory(benchmark::State& state) {
    const auto size = static_cast<double>(state.range(0));
    const CString path = JobPath(OriginalsOf(static_cast<std::size_t>(state.range(0))).job);
    while (state.KeepRunning()) {
        const double before = BytesInUse();
        const CqSurveyDB db(path);
        state.counters["bytes"] = (BytesInUse() - before) / size - kPackedBytes;
        state.counters["goal_bytes"] = kMostBytesBeyond;
        state.SetIterationTime(1.0);
    }
}

}  // namespace

void RegisterMemory() {
    benchmark::RegisterBenchmark("Memory of an open job, per point",
                                 [](benchmark::State& state) {
                                     state.SetLabel("beyond the packed records");
                                     Memory(state);
                                 })
        ->Arg(kLargest)
        ->Iterations(1)
        ->UseManualTime();
}

}  // namespace cqsurvey::bench
