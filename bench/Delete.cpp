#include <algorithm>
#include <numeric>
#include <random>

#include "BareStore.h"
#include "Benchmarks.h"
#include "Duel.h"
#include "Folder.h"
#include "Jobs.h"

namespace cqsurvey::bench {

namespace {

constexpr std::size_t kDurable = 5;
constexpr std::size_t kMostInBatch = 5000;
constexpr int kBatches = 15;

void Delete(benchmark::State& state, std::size_t deletes, bool durably) {
    const auto size = static_cast<std::size_t>(state.range(0));
    const ScratchFile job(OriginalsOf(size).job);
    const ScratchFile bareFile(OriginalsOf(size).bare);
    CqSurveyDB db(job.Job());
    BareStore bare(bareFile.Path());
    std::vector<CqHandle> handles(size);
    std::iota(handles.begin(), handles.end(), CqHandle{1});
    std::shuffle(handles.begin(), handles.end(), std::mt19937(5));
    auto handle = handles.begin();
    Duel duel(state, deletes, Clock::Wall);
    duel.SpeedAtLeast(durably ? 0.85 : 0.45);
    while (state.KeepRunning()) {
        const auto end = handle + static_cast<std::ptrdiff_t>(deletes);
        const auto remove = [&](CqHandle point) { Require(db.DelCoordRec(point) != 0); };
        const auto ours = [&] {
            if (durably) {
                std::for_each(handle, end, remove);
                return;
            }
            CqBatch batch(db);
            std::for_each(handle, end, remove);
            batch.Commit();
        };
        duel.Round(ours, [&] {
            bare.Begin();
            for (auto at = handle; at != end; ++at) {
                if (durably && at != handle) {
                    bare.Commit();
                    bare.Begin();
                }
                bare.Delete(*at);
            }
            bare.Commit();
        });
        handle = end;
    }
}

}  // namespace

void RegisterDelete() {
    ForEachSize(
        "Delete a point durably", "two deletes, two updates, one commit",
        [](benchmark::State& state) { Delete(state, kDurable, true); }, [](int) { return 15; });
    ForEachSize(
        "Delete points in a batch", "two deletes, two updates a point, one commit",
        [](benchmark::State& state) {
            const auto size = static_cast<std::size_t>(state.range(0));
            Delete(state, std::min(kMostInBatch, size / (2 * kBatches)), false);
        },
        [](int) { return kBatches; });
}

}  // namespace cqsurvey::bench
