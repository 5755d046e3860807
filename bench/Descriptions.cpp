#include <string>

#include "BareStore.h"
#include "Benchmarks.h"
#include "Duel.h"
#include "Folder.h"
#include "Jobs.h"

namespace cqsurvey::bench {

namespace {

using std::chrono_literals::operator""us;

constexpr std::size_t kReads = 1000;

std::string TextOf(std::size_t place) {
    static constexpr std::array<const char*, 5> kTexts{
        "edge of asphalt", "oak, 0.45 m, crown 8 m",
        "manhole cover, storm, 600 mm, level with road", "TOP WALL 18\" WI", "fence post, leaning"};
    return kTexts[place % kTexts.size()] + (" #" + std::to_string(place));
}

void Add(benchmark::State& state) {
    const auto size = static_cast<std::size_t>(state.range(0));
    std::vector<std::string> texts;
    std::vector<CString> wide;
    for (std::size_t i = 0; i < size; ++i) {
        texts.push_back(TextOf(i));
        wide.push_back(FromUtf8(texts.back()));
    }
    Duel duel(state, size, Clock::Wall);
    while (state.KeepRunning()) {
        const ScratchFile job;
        const ScratchFile bareFile;
        CqSurveyDB db;
        db.CreateNew(job.Job());
        BareStore bare(bareFile.Path());
        // The first step after an opening also makes the journal.
        Require(db.AddCoordDescription(static_cast<CqHandle>(size + 1), wide.front()) != 0);
        bare.Begin();
        bare.Describe(static_cast<std::uint32_t>(size + 1), texts.front());
        bare.Commit();
        duel.Round(
            [&] {
                CqBatch batch(db);
                for (std::uint32_t i = 0; i < size; ++i) {
                    Require(db.AddCoordDescription(i + 1, wide[i]) != 0);
                }
                batch.Commit();
            },
            [&] {
                bare.Begin();
                for (std::uint32_t i = 0; i < size; ++i) {
                    bare.Describe(i + 1, texts[i]);
                }
                bare.Commit();
            });
    }
}

void OpenAndRead(benchmark::State& state, bool open) {
    const auto size = static_cast<std::size_t>(state.range(0));
    const ScratchFile job;
    const ScratchFile bareFile;
    BareStore bare(bareFile.Path());
    {
        CqSurveyDB db;
        db.CreateNew(job.Job());
        CqBatch batch(db);
        bare.Begin();
        for (std::uint32_t i = 0; i < size; ++i) {
            const std::string text = TextOf(i);
            static_cast<void>(db.AddCoordDescription(i + 1, FromUtf8(text)));
            bare.Describe(i + 1, text);
        }
        bare.Commit();
        batch.Commit();
    }
    if (open) {
        Duel duel(state, size, Clock::Wall);
        duel.TimeAtMost(2us);
        while (state.KeepRunning()) {
            CqSurveyDB db;
            duel.Round([&] { db.Open(job.Job()); }, [&] { Require(bare.ReadDescriptions() != 0); });
        }
        return;
    }
    const CqSurveyDB db(job.Job());
    const auto places = RandomPlaces(kReads * static_cast<std::size_t>(state.max_iterations), size);
    auto place = places.begin();
    CString text;
    Duel duel(state, kReads, Clock::Processor);
    while (state.KeepRunning()) {
        const auto end = place + static_cast<std::ptrdiff_t>(kReads);
        duel.Round(
            [&] {
                for (auto at = place; at != end; ++at) {
                    Require(db.GetCoordDescription(static_cast<CqHandle>(*at + 1), text) != 0);
                }
            },
            [&] {
                for (auto at = place; at != end; ++at) {
                    Require(bare.Description(static_cast<std::uint32_t>(*at + 1)) != 0);
                }
            });
        place = end;
    }
}

}  // namespace

void RegisterDescriptions() {
    const auto rounds = [](int size) {
        return size < kLargest / 10 ? 21 : size < kLargest ? 5 : 3;
    };
    ForEachSize("Add descriptions in a batch", "inserts of one row, one commit", Add, rounds);
    ForEachSize(
        "Open a job of descriptions, each", "scan of the table",
        [](benchmark::State& state) { OpenAndRead(state, true); }, rounds);
    ForEachSize(
        "Read a description", "select by the primary key",
        [](benchmark::State& state) { OpenAndRead(state, false); }, [](int) { return 41; });
}

}  // namespace cqsurvey::bench
