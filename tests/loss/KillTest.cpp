#include <gtest/gtest.h>

#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <random>
#include <string>

#include "cqsurvey/CqSurveyDB.h"
#include "loss/Aftermath.h"
#include "loss/Workload.h"
#include "store/OtherProcess.h"
#include "support/TempDir.h"

namespace cqsurvey {
namespace {

/// How the kills met the work.
struct Counts {
    int kills = 0;
    int steps = 0;       ///< that were reported
    int unreported = 0;  ///< kills after which the step under way was there, whole
    int halfway = 0;     ///< kills that left a change to be undone
    int drafts = 0;      ///< kills that left half a new job
};

/// A folder with jobs on which one process after the other works until it is killed, and the
/// workload that knows what they had reported.
class KilledWork {
 public:
    void Round(std::uint32_t seed, std::mt19937& moment, Counts& counts) {
        OtherProcess worker([&](int, int report) { return Work(seed, report); });
        worker.Tell();
        int reported = 0;
        for (auto wait = moment() % 30; wait != 0; --wait) {
            ASSERT_EQ(worker.Hear(), 'r') << "it ended by itself with " << worker.Finish();
            ++reported;
        }
        // From no time at all to a few times what a step takes.
        usleep(static_cast<useconds_t>(moment() % (16U << (moment() % 9))));
        ASSERT_EQ(kill(worker.Id(), SIGKILL), 0);
        ASSERT_EQ(worker.Finish(), -1) << "it ended by itself";
        while (worker.Hear() == 'r') {
            ++reported;
        }
        m_work.Begin(seed);
        for (int i = 0; i < reported; ++i) {
            m_work.Step(nullptr);
        }
        const Aftermath found = LookAtFolder(m_folder.Utf8("."), m_work);
        ++counts.kills;
        counts.steps += reported;
        counts.unreported += found.ahead ? 1 : 0;
        counts.halfway += found.halfway ? 1 : 0;
        counts.drafts += found.draft ? 1 : 0;
    }

 private:
    /// What the process does that is killed.
    int Work(std::uint32_t seed, int report) {
        try {
            CqSurveyDB db;
            m_work.Begin(seed);
            if (!m_work.GetCurrent().empty()) {
                db.Open(m_work.PathOf(m_work.GetCurrent()));
            }
            do {
                m_work.Step(&db);
            } while (write(report, "r", 1) == 1);
            return 2;
        } catch (const std::exception& failure) {
            std::cerr << failure.what() << std::endl;
            return 3;
        }
    }

    TempDir m_folder;
    Workload m_work{m_folder.Utf8(".")};
};

/// The number of kills of all tests together; scripts/kill-test asks for more.
int KillsWanted() {
    const char* wanted = std::getenv("CQSURVEY_KILLS");
    return wanted == nullptr ? 320 : std::atoi(wanted);
}

constexpr int kShares = 4;

class Kill : public testing::TestWithParam<int> {};

TEST_P(Kill, LeavesEveryReportedStepAndTheOneUnderWayWholeOrNotAtAll) {
    constexpr int kKillsOfAFolder = 40;
    const std::uint32_t moments = std::random_device{}();
    std::mt19937 moment(moments);
    const int wanted = std::max(1, KillsWanted() / kShares);
    Counts counts;
    std::unique_ptr<KilledWork> work;
    for (int round = 0; round < wanted && !HasFailure(); ++round) {
        const auto seed = static_cast<std::uint32_t>(GetParam() * 1'000'000 + round);
        SCOPED_TRACE("round " + std::to_string(round) + ", seed of the work " +
                     std::to_string(seed) + ", of the moments " + std::to_string(moments));
        if (round % kKillsOfAFolder == 0) {
            work = std::make_unique<KilledWork>();
        }
        work->Round(seed, moment, counts);
    }
    std::cout << counts.kills << " kills after " << counts.steps << " reported steps; "
              << counts.halfway << " left a change to be undone, " << counts.drafts
              << " half a new job; " << counts.unreported << " times the unreported step was there"
              << std::endl;
}

INSTANTIATE_TEST_SUITE_P(Share, Kill, testing::Range(0, kShares));

}  // namespace
}  // namespace cqsurvey
