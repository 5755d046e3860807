#include <algorithm>

#include "BareStore.h"
#include "Benchmarks.h"
#include "Duel.h"
#include "Folder.h"
#include "Jobs.h"

namespace cqsurvey::bench {

namespace {

using std::chrono_literals::operator""us;

constexpr std::uint16_t kByName = 0;
constexpr std::uint16_t kByCode = 1;
constexpr std::uint16_t kAscending = 0;
constexpr std::size_t kPage = 50;
constexpr std::size_t kPages = 200;
constexpr std::size_t kInserts = 20000;

void SortCodes(std::span<const SurveyPoint> points) {
    std::vector<std::pair<int, std::uint32_t>> codes;
    codes.reserve(points.size());
    for (std::uint32_t i = 0; i < points.size(); ++i) {
        codes.emplace_back(points[i].code, ~i);
    }
    std::sort(codes.begin(), codes.end());
    benchmark::DoNotOptimize(codes.data());
}

void RebuildByName(benchmark::State& state) {
    const auto size = static_cast<std::size_t>(state.range(0));
    const auto points = Survey(size);
    CqSurveyDB db(JobPath(OriginalsOf(size).job));
    Duel duel(state, size, Clock::Processor);
    while (state.KeepRunning()) {
        duel.Round(
            [&] { Require(db.SetSortCoordSetting(kByName, kAscending, {}) == state.range(0)); },
            [&] {
                std::vector<SortedName> names;
                names.reserve(size);
                for (std::uint32_t i = 0; i < size; ++i) {
                    names.emplace_back(points[i].name, i + 1);
                }
                std::sort(names.begin(), names.end());
                benchmark::DoNotOptimize(names.data());
            });
    }
}

void RebuildByCode(benchmark::State& state) {
    const auto size = static_cast<std::size_t>(state.range(0));
    const auto points = Survey(size);
    CqSurveyDB db(JobPath(OriginalsOf(size).job));
    Duel duel(state, size, Clock::Processor);
    while (state.KeepRunning()) {
        duel.Round(
            [&] { Require(db.SetSortCoordSetting(kByCode, kAscending, {}) == state.range(0)); },
            [&] { SortCodes(points); });
    }
}

/// Codes so far apart that their differences wrap: no sort gives the order of inserting one by one.
void RebuildByFarCode(benchmark::State& state) {
    const auto size = static_cast<std::size_t>(state.range(0));
    constexpr std::uint32_t kFar = 2654435769;
    std::vector<SurveyPoint> points(Survey(size).begin(), Survey(size).end());
    for (std::size_t i = 0; i < size; ++i) {
        points[i].code = static_cast<int>(static_cast<std::uint32_t>(i) * kFar);
    }
    const ScratchFile job;
    CqSurveyDB db;
    db.CreateNew(job.Job());
    RecordAll(db, points);
    Duel duel(state, size, Clock::Processor);
    while (state.KeepRunning()) {
        duel.Round(
            [&] { Require(db.SetSortCoordSetting(kByCode, kAscending, {}) == state.range(0)); },
            [&] { SortCodes(points); });
    }
}

void Insert(benchmark::State& state) {
    const auto size = static_cast<std::size_t>(state.range(0));
    const auto points = LatePoints(kInserts);
    CqSurveyDB db(JobPath(OriginalsOf(size).job));
    COORDFILTER none;
    none.originMask = 0;
    Duel duel(state, kInserts, Clock::Processor);
    duel.BeyondAtMost(5us);
    const auto record = [&] {
        for (const SurveyPoint& point : points) {
            Record(db, point);
        }
    };
    while (state.KeepRunning()) {
        // What the batches recorded is undone outside the measured time.
        std::unique_ptr<CqBatch> batch;
        duel.RoundWithSetup(
            [&] {
                batch.reset();
                db.SetSortCoordSetting(kByName, kAscending, {});
                batch = std::make_unique<CqBatch>(db);
            },
            record,
            [&] {
                batch.reset();
                db.SetSortCoordSetting(kByName, kAscending, none);
                batch = std::make_unique<CqBatch>(db);
            },
            record);
    }
}

void Page(benchmark::State& state) {
    const auto size = static_cast<std::size_t>(state.range(0));
    CqSurveyDB db(JobPath(OriginalsOf(size).job));
    std::vector<CqHandle> view(size);
    CqCoordRec point;
    for (std::size_t i = 0; i < size; ++i) {
        view[i] = db.GetSortCoordAt(static_cast<int>(i), point);
    }
    const auto places =
        RandomPlaces(2 * kPages * static_cast<std::size_t>(state.max_iterations), size - kPage);
    auto place = places.begin();
    Duel duel(state, kPages, Clock::Processor);
    duel.BeyondAtMost(10us);
    while (state.KeepRunning()) {
        duel.Round(
            [&] {
                for (std::size_t page = 0; page < kPages; ++page, ++place) {
                    for (std::size_t i = 0; i < kPage; ++i) {
                        Require(db.GetSortCoordAt(static_cast<int>(*place + i), point) != 0);
                    }
                }
            },
            [&] {
                for (std::size_t page = 0; page < kPages; ++page, ++place) {
                    for (std::size_t i = 0; i < kPage; ++i) {
                        CqHandle handle = view[*place + i];
                        Require(db.GetNextCoordRec(handle, point) != 0);
                    }
                }
            });
    }
}

}  // namespace

void RegisterView() {
    const auto rounds = [](int size) { return size < kLargest ? 21 : 5; };
    ForEachSize("Rebuild the view by name, per point", "plain sort of the names in memory",
                RebuildByName, rounds);
    ForEachSize("Rebuild the view by code, per point", "plain sort of the codes in memory",
                RebuildByCode, rounds);
    ForEachSize("Rebuild the view by code, differences wrap, per point",
                "plain sort of the codes in memory", RebuildByFarCode, rounds);
    ForEachSize("Insert at a random place of the view",
                "the same points recorded, none in the view", Insert, rounds);
    ForEachSize("Read 50 points at a random place of the view", "the same read by their handles",
                Page, [](int) { return 41; });
}

}  // namespace cqsurvey::bench
