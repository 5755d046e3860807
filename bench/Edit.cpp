#include <algorithm>
#include <utility>

#include "BareStore.h"
#include "Benchmarks.h"
#include "Duel.h"
#include "Folder.h"
#include "Jobs.h"

namespace cqsurvey::bench {

namespace {

constexpr std::size_t kDurable = 5;
constexpr std::size_t kMostInBatch = 5000;

SurveyPoint Edited(SurveyPoint point) {
    point.coords[2] += 0.013;
    point.code += 100;
    return point;
}

void Edit(benchmark::State& state, std::size_t edits, bool durably) {
    const auto size = static_cast<std::size_t>(state.range(0));
    const auto points = Survey(size);
    const ScratchFile job(OriginalsOf(size).job);
    const ScratchFile bareFile(OriginalsOf(size).bare);
    CqSurveyDB db(job.Job());
    BareStore bare(bareFile.Path());
    const auto places = RandomPlaces(edits * static_cast<std::size_t>(state.max_iterations), size);
    auto place = places.begin();
    Duel duel(state, edits, Clock::Wall);
    duel.SpeedAtLeast(durably ? 0.85 : 0.45);
    while (state.KeepRunning()) {
        std::vector<std::pair<CqHandle, SurveyPoint>> changes;
        for (std::size_t i = 0; i < edits; ++i, ++place) {
            changes.emplace_back(static_cast<CqHandle>(*place + 1), Edited(points[*place]));
        }
        const auto edit = [&](const auto& change) {
            const auto& [handle, point] = change;
            Require(db.EditCoordRec(handle, point.name, point.coords.data(), point.code) != 0);
        };
        const auto ours = [&] {
            if (durably) {
                std::for_each(changes.begin(), changes.end(), edit);
                return;
            }
            CqBatch batch(db);
            std::for_each(changes.begin(), changes.end(), edit);
            batch.Commit();
        };
        duel.Round(ours, [&] {
            bare.Begin();
            for (std::size_t i = 0; i < changes.size(); ++i) {
                if (durably && i != 0) {
                    bare.Commit();
                    bare.Begin();
                }
                bare.Edit(changes[i].first, changes[i].second);
            }
            bare.Commit();
        });
    }
}

}  // namespace

void RegisterEdit() {
    ForEachSize(
        "Edit a point durably", "two updates, one commit",
        [](benchmark::State& state) { Edit(state, kDurable, true); }, [](int) { return 15; });
    ForEachSize(
        "Edit points in a batch", "two updates a point, one commit",
        [](benchmark::State& state) {
            const auto size = static_cast<std::size_t>(state.range(0));
            Edit(state, std::min(kMostInBatch, size / 2), false);
        },
        [](int) { return 21; });
}

}  // namespace cqsurvey::bench
