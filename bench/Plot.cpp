#include <cstdio>

#include "Benchmarks.h"
#include "Duel.h"
#include "Folder.h"
#include "Jobs.h"
#include "cqjob/OutputFile.h"
#include "cqjob/Picture.h"
#include "cqjob/PlanPainter.h"
#include "cqjob/PlanReader.h"
#include "cqjob/Sheet.h"

namespace cqsurvey::bench {

namespace {

/// What `cqjob plot` does once the job is open.
void PlotJob(CqSurveyDB& db, cqjob::PictureFormat format, const std::string& path) {
    constexpr double kDots = 150.0 / 25.4;
    cqjob::Console console(stdout, stderr, false);
    const cqjob::Plan plan = cqjob::PlanReader(db).Read();
    cqjob::SheetRequest request;
    request.paper = *cqjob::FindPaper("A3");
    const cqjob::Sheet sheet(request, plan.FindExtents(), plan.mapScale);
    cqjob::OutputFile output(console, path, true);
    cqjob::Picture picture(format, sheet.GetPaper(), kDots, output);
    const cqjob::PaintChoice choice;
    cqjob::PlanPainter(picture.GetContext(), plan, sheet, choice).Paint();
    picture.Finish();
    output.Finish();
}

void Plot(benchmark::State& state, cqjob::PictureFormat format) {
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

void Register(const char* name, cqjob::PictureFormat format) {
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
    Register("Plot a drawing as SVG, per entity", cqjob::PictureFormat::Svg);
    Register("Plot a drawing as PDF, per entity", cqjob::PictureFormat::Pdf);
    Register("Plot a drawing as PNG, per entity", cqjob::PictureFormat::Png);
}

}  // namespace cqsurvey::bench
