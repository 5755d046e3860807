#include <cqsurvey/exchange/FieldDrawing.h>

#include <cmath>
#include <string>

#include "Benchmarks.h"
#include "Duel.h"
#include "Folder.h"
#include "Jobs.h"

namespace cqsurvey::bench {

namespace {

constexpr double kGoal = 30'000.0;  // nanoseconds a point: 100,000 points in 3 seconds

CqCodeTable Codes() {
    CqCodeTable table;
    for (const char16_t* code : {u"EP", u"KERB", u"DT", u"WALL"}) {
        Require(table.Add(
                    {.code = code, .number = 1, .layer = u"Lines", .kind = CqCodeKind::Line}) != 0);
    }
    Require(table.Add({.code = u"TR", .layer = u"Trees", .label = u"{text}"}) != 0);
    Require(table.Add({.code = u"MH", .kind = CqCodeKind::Circle, .size = 0.4}) != 0);
    return table;
}

/// Points of cross-sections: four lines of fifty points each, with an arc in each, and a tree and
/// a manhole beside them.
void RecordCoded(CqSurveyDB& db, std::size_t size) {
    constexpr std::size_t kCodes = 6;
    constexpr std::size_t kAlong = 50;
    const std::array<const char*, kCodes> codes{"EP", "KERB", "DT", "WALL", "TR", "MH"};
    CqBatch batch(db);
    for (std::size_t i = 0; i < size; ++i) {
        const std::size_t which = i % kCodes;
        const std::size_t along = i / kCodes % kAlong;
        const std::size_t strip = i / kCodes / kAlong;
        constexpr double kRadius = 20.0;
        const double x = 4.0 * (static_cast<double>(along) - 22.0);
        const bool curved = along >= 20 && along <= 24;
        const double bow = curved ? std::sqrt(kRadius * kRadius - x * x) - kRadius : 0.0;
        const std::array<double, 3> coords{
            1000.0 + x + static_cast<double>(which),
            5000.0 + 20.0 * static_cast<double>(strip) + 2.0 * static_cast<double>(which) + bow,
            300.0};
        std::string text = codes[which];
        if (which < 4) {
            text += along == 0    ? " B"
                    : along == 20 ? " BC"
                    : along == 24 ? " EC"
                    : along == 49 ? " E"
                                  : "";
        } else if (which == 4) {
            text += " oak 0.4";
        }
        const CqHandle point = db.AddCoordRec(coords.data(), FromUtf8(std::to_string(i + 1)), 0,
                                              SurveyCoordType{1}, 0);
        Require(db.AddCoordDescription(point, FromUtf8(text)) != 0);
    }
    batch.Commit();
}

void DrawCoded(benchmark::State& state) {
    const auto size = static_cast<std::size_t>(state.range(0));
    const ScratchFile original;
    {
        CqSurveyDB db;
        db.CreateNew(original.Job());
        RecordCoded(db, size);
        db.Close();
    }
    exchange::DrawOptions options;
    options.codes = Codes();
    const exchange::FieldDrawing drawing(options);
    Duel duel(state, size, Clock::Wall);
    state.counters["goal_time"] = kGoal;
    while (state.KeepRunning()) {
        const ScratchFile job(original.Path());
        CqSurveyDB db(job.Job());
        duel.Round([&] { Require(drawing.Draw(db).lines > 0); },
                   [&] {
                       CString text;
                       for (const auto& [handle, record] : Points(db)) {
                           Require(db.GetCoordDescription(handle, text) != 0);
                       }
                   });
    }
}

}  // namespace

void RegisterFieldDrawing() {
    constexpr int kRounds = 5;
    auto* const benchmark =
        benchmark::RegisterBenchmark("Draw from field codes, per point", [](auto& state) {
            state.SetLabel("read the points with their descriptions");
            DrawCoded(state);
        });
    for (const int size : {1000, 10'000, 100'000, 1'000'000}) {
        benchmark->Arg(size);
    }
    benchmark->Iterations(kRounds)->UseManualTime()->Unit(benchmark::kMillisecond);
}

}  // namespace cqsurvey::bench
