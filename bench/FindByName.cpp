#include "BareStore.h"
#include "Benchmarks.h"
#include "Duel.h"
#include "Folder.h"
#include "Jobs.h"

namespace cqsurvey::bench {

namespace {

/// Names looked up in a round.
constexpr std::size_t kLookups = 1000;

void FindByName(benchmark::State& state) {
    const auto size = static_cast<std::size_t>(state.range(0));
    const auto points = Survey(size);
    const CqSurveyDB db(JobPath(OriginalsOf(size).job));
    const ScratchFile bareFile(OriginalsOf(size).bare);
    BareStore bare(bareFile.Path());
    bare.IndexNames();
    std::vector<CString> names;
    for (const std::size_t place :
         RandomPlaces(kLookups * static_cast<std::size_t>(state.max_iterations), size)) {
        names.push_back(points[place].name);
    }
    auto name = names.begin();
    Duel duel(state, kLookups, Clock::Processor);
    duel.SpeedAtLeast(1);
    while (state.KeepRunning()) {
        const auto end = name + static_cast<std::ptrdiff_t>(kLookups);
        duel.Round(
            [&] {
                for (auto at = name; at != end; ++at) {
                    Require(db.GetCoordRecHandleByPtName(*at) != 0);
                }
            },
            [&] {
                for (auto at = name; at != end; ++at) {
                    Require(bare.FindByName(*at) != 0);
                }
            });
        name = end;
    }
}

}  // namespace

void RegisterFindByName() {
    ForEachSize("Find a point by name", "unique index on the names", FindByName,
                [](int) { return 41; });
}

}  // namespace cqsurvey::bench
