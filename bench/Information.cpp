#include "BareStore.h"
#include "Benchmarks.h"
#include "Duel.h"
#include "Folder.h"
#include "Jobs.h"

namespace cqsurvey::bench {

namespace {

using std::chrono_literals::operator""ms;

void Information(benchmark::State& state) {
    constexpr std::uint32_t kEverything = 0x31FF;
    const auto size = static_cast<std::size_t>(state.range(0));
    const Originals& originals = OriginalsOf(size);
    const CString path = JobPath(originals.job);
    Duel duel(state, 1, Clock::Wall);
    duel.TimeAtMost(100ms);
    while (state.KeepRunning()) {
        SVDB_INFORMATION information;
        CStringList groups;
        information.groupNames = &groups;
        duel.Round(
            [&] {
                Require(CqSurveyDB::GetDBInformation(kEverything, path, information, nullptr) != 0);
            },
            [&] { Require(BareStore(originals.bare).Count() != 0); });
        Require(information.numPoints == state.range(0));
    }
}

}  // namespace

void RegisterInformation() {
    ForEachSize("Information of a closed job", "open, count(*) of both tables, close", Information,
                [](int) { return 21; });
}

}  // namespace cqsurvey::bench
