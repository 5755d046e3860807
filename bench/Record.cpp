#include <fcntl.h>
#include <unistd.h>

#include "BareStore.h"
#include "Benchmarks.h"
#include "Duel.h"
#include "Folder.h"
#include "Jobs.h"

namespace cqsurvey::bench {

namespace {

/// Points recorded durably in a round.
constexpr std::size_t kDurable = 5;

/// What the disk takes for the least that can be durable.
void SyncPage(benchmark::State& state) {
    constexpr std::size_t kPage = 4096;
    const ScratchFile file;
    const int descriptor = ::open(file.Path().c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    const std::vector<char> page(kPage, 'x');
    Duel duel(state, 1, Clock::Wall);
    while (state.KeepRunning()) {
        duel.Round([&] {
            Require(::pwrite(descriptor, page.data(), kPage, 0) == ssize_t{kPage});
            Require(::fdatasync(descriptor) == 0);
        });
    }
    ::close(descriptor);
}

void RecordDurably(benchmark::State& state) {
    const auto size = static_cast<std::size_t>(state.range(0));
    const ScratchFile job(OriginalsOf(size).job);
    const ScratchFile bareFile(OriginalsOf(size).bare);
    CqSurveyDB db(job.Job());
    BareStore bare(bareFile.Path());
    const auto points = LatePoints(kDurable * static_cast<std::size_t>(state.max_iterations));
    std::size_t ours = 0;
    std::size_t theirs = 0;
    Duel duel(state, kDurable, Clock::Wall);
    duel.SpeedAtLeast(0.85);
    while (state.KeepRunning()) {
        duel.Round(
            [&] {
                for (std::size_t i = 0; i < kDurable; ++i) {
                    Record(db, points[ours++]);
                }
            },
            [&] {
                for (std::size_t i = 0; i < kDurable; ++i) {
                    bare.Begin();
                    bare.Record(static_cast<std::uint32_t>(size + theirs + 1), points[theirs]);
                    bare.Commit();
                    ++theirs;
                }
            });
    }
    Require(db.GetNumCoordRecs() == static_cast<int>(size + ours));
}

void RecordInBatch(benchmark::State& state) {
    const auto points = Survey(static_cast<std::size_t>(state.range(0)));
    Duel duel(state, points.size(), Clock::Wall);
    duel.SpeedAtLeast(0.45);
    while (state.KeepRunning()) {
        const ScratchFile job;
        const ScratchFile bareFile;
        CqSurveyDB db;
        db.CreateNew(job.Job());
        BareStore bare(bareFile.Path());
        duel.Round([&] { RecordAll(db, points); }, [&] { bare.RecordAll(points); });
        Require(db.GetNumCoordRecs() == state.range(0));
    }
}

}  // namespace

void RegisterRecord() {
    benchmark::RegisterBenchmark("A page written and synced", SyncPage)
        ->Arg(1)
        ->Iterations(40)
        ->UseManualTime();
    ForEachSize("Record a point durably", "two inserts, two updates, one commit", RecordDurably,
                [](int) { return 15; });
    ForEachSize("Record points in a batch", "inserts of 32 rows, one commit", RecordInBatch,
                [](int size) { return size < kLargest / 10 ? 21
                                      : size < kLargest    ? 9
                                                           : 3; });
}

}  // namespace cqsurvey::bench
