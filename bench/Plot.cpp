#include <cqsurvey/plan/plan.h>

#include <fstream>

#include "Benchmarks.h"
#include "Duel.h"
#include "Folder.h"
#include "Jobs.h"

namespace cqsurvey::bench {

namespace {

/// What `cqjob plot` does once the job is open.
void PlotJob(CqSurveyDB& db, plan::PictureFormat format, const std::string& path) {
    plan::PlotOptions options;
    options.format = format;
    options.paper = *plan::FindPaper("A3");
    std::ofstream file(path, std::ios::binary);
    plan::PlanDrawing(db).Draw(options, [&](std::string_view bytes) { file << bytes; });
    Require(file.flush().good());
}

void Plot(benchmark::State& state, plan::PictureFormat format) {
    const ScratchFile job;
    const ScratchFile picture;
    CqSurveyDB db;
    db.CreateNew(job.Job());
    Draw(db, static_cast<std::size_t>(state.range(0)));
    const auto entities = static_cast<std::size_t>(db.GetNumCadEntities());
    Duel duel(state, entities, Clock::Processor);
    while (state.KeepRunning()) {
        duel.Round([&] { PlotJob(db, format, picture.Path().string()); },
                   [&] {
                       std::size_t seen = 0;
                       for (const CqCadEntityPtr& entity : Entities(db)) {
                           benchmark::DoNotOptimize(entity.get());
                           ++seen;
                       }
                       Require(seen == entities);
                   });
    }
}

void Register(const char* name, plan::PictureFormat format) {
    constexpr int kEntities = 100'000;
    constexpr int kRounds = 5;
    benchmark::RegisterBenchmark(name,
                                 [format](benchmark::State& state) {
                                     state.SetLabel("walk over the entity objects");
                                     Plot(state, format);
                                 })
        ->Arg(kEntities)
        ->Iterations(kRounds)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

}  // namespace

void RegisterPlot() {
    Register("Plot a drawing as SVG, per entity", plan::PictureFormat::Svg);
    Register("Plot a drawing as PDF, per entity", plan::PictureFormat::Pdf);
    Register("Plot a drawing as PNG, per entity", plan::PictureFormat::Png);
}

}  // namespace cqsurvey::bench
