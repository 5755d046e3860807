#include <string>

#include "BareStore.h"
#include "Benchmarks.h"
#include "Duel.h"
#include "Folder.h"
#include "Jobs.h"

namespace cqsurvey::bench {

namespace {

constexpr std::size_t kVertices = 100'000;
constexpr double kBulge = 0.25;

void Polylines(benchmark::State& state) {
    const auto vertices = Survey(static_cast<std::size_t>(state.range(0)));
    const std::size_t count = kVertices / vertices.size();
    Duel duel(state, kVertices, Clock::Wall);
    duel.SpeedAtLeast(0.45);
    while (state.KeepRunning()) {
        const ScratchFile job;
        const ScratchFile bareFile;
        CqSurveyDB db;
        db.CreateNew(job.Job());
        BareStore bare(bareFile.Path());
        duel.Round(
            [&] {
                CqBatch batch(db);
                for (std::size_t i = 0; i < count; ++i) {
                    CqCadEntityList* const list = db.StartPline(1, 7);
                    for (const SurveyPoint& vertex : vertices) {
                        db.AddVertex(list, vertex.coords.data(), kBulge);
                    }
                    Require(db.EndPline(list) != 0);
                }
                batch.Commit();
            },
            [&] { bare.AddPolylines(count, vertices); });
    }
}

}  // namespace

void RegisterPolylines() {
    for (const int vertices : {2, 100, 10'000}) {
        const std::string name =
            "Polylines of " + std::to_string(vertices) + " in a batch, per vertex";
        benchmark::RegisterBenchmark(name.c_str(),
                                     [](benchmark::State& state) {
                                         state.SetLabel("inserts of 32 rows, one commit");
                                         Polylines(state);
                                     })
            ->Arg(vertices)
            ->Iterations(7)
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
    }
}

}  // namespace cqsurvey::bench
