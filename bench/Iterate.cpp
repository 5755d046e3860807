#include "BareStore.h"
#include "Benchmarks.h"
#include "Duel.h"
#include "Folder.h"
#include "Jobs.h"

namespace cqsurvey::bench {

namespace {

double Walk(const CqSurveyDB& db) {
    double sum = 0;
    CqCoordRec point;
    CqHandle handle = db.GetFirstCoordRecHandle();
    while (handle != 0 && db.GetNextCoordRec(handle, point) != 0) {
        std::array<double, 3> coords{};
        point.GetPoint(coords.data());
        sum += coords[0] + coords[1] + coords[2] + point.GetCode();
    }
    return sum;
}

void Iterate(benchmark::State& state) {
    const auto size = static_cast<std::size_t>(state.range(0));
    const Originals& originals = OriginalsOf(size);
    const CqSurveyDB db(JobPath(originals.job));
    BareStore bare(originals.bare);
    Duel duel(state, size, Clock::Processor);
    duel.SpeedAtLeast(1);
    while (state.KeepRunning()) {
        duel.Round([&] { Require(Walk(db) != 0); }, [&] { Require(bare.Walk() != 0); });
    }
}

}  // namespace

void RegisterIterate() {
    ForEachSize("Iterate the points, per point", "join of both tables", Iterate, [](int size) {
        return size < kLargest / 10 ? 51 : size < kLargest ? 9 : 3;
    });
}

}  // namespace cqsurvey::bench
