#include <memory>

#include "BareStore.h"
#include "Benchmarks.h"
#include "Duel.h"
#include "Folder.h"
#include "Jobs.h"

namespace cqsurvey::bench {

namespace {

void Open(benchmark::State& state) {
    const auto size = static_cast<std::size_t>(state.range(0));
    const Originals& originals = OriginalsOf(size);
    const CString path = JobPath(originals.job);
    Duel duel(state, size, Clock::Wall);
    duel.SpeedAtLeast(0.5);
    while (state.KeepRunning()) {
        CqSurveyDB db;
        std::unique_ptr<BareStore> bare;
        duel.Round([&] { db.Open(path); },
                   [&] {
                       bare = std::make_unique<BareStore>(originals.bare);
                       Require(bare->ScanAndSort() == size);
                   });
        Require(db.GetSortCoordRecs() == state.range(0));
    }
}

}  // namespace

void RegisterOpen() {
    ForEachSize("Open a job, per point", "scan of both tables, names sorted", Open, [](int size) {
        return size < kLargest / 10 ? 21 : size < kLargest ? 9 : 3;
    });
}

}  // namespace cqsurvey::bench
