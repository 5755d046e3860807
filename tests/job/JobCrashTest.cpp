#include <gtest/gtest.h>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <random>
#include <set>
#include <string>

#include "cqsurvey/CqJobCheck.h"
#include "cqsurvey/CqSurveyDB.h"
#include "cqsurvey/Text.h"
#include "support/Points.h"
#include "support/TempDir.h"

namespace cqsurvey {
namespace {

CString NameOf(std::uint32_t number) {
    return FromUtf8("P" + std::to_string(number));
}

/// What the killed process does: records points one by one and reports each once it is recorded.
[[noreturn]] void RecordAndReport(const CString& path, int report) {
    try {
        CqSurveyDB db(path);
        for (auto next = static_cast<std::uint32_t>(db.GetNumCoordRecs()) + 1;; ++next) {
            const CqHandle handle = AddPoint(db, NameOf(next), next, 2.0 * next, 0.5, 7);
            EXPECT_NE(db.AddCoordDescription(handle, u"stone " + NameOf(next)), 0);
            if (write(report, &next, sizeof(next)) != sizeof(next)) {
                _exit(2);
            }
        }
    } catch (...) {
        _exit(3);
    }
}

TEST(JobCrash, AKilledRecordingLeavesEveryReportedPointAndAtMostOneMore) {
    const std::uint32_t seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const TempDir folder;
    const CString path = folder.Path(u"a.job");
    {
        CqSurveyDB db;
        db.CreateNew(path);
    }
    std::uint32_t reported = 0;
    std::set<std::uint32_t> unreported;
    for (int round = 0; round < 20; ++round) {
        std::array<int, 2> pipes{};
        ASSERT_EQ(pipe(pipes.data()), 0);
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            close(pipes[0]);
            RecordAndReport(path, pipes[1]);
        }
        close(pipes[1]);
        const std::uint32_t until =
            reported + std::uniform_int_distribution<std::uint32_t>(1, 25)(random);
        std::uint32_t number = 0;
        while (number < until && read(pipes[0], &number, sizeof(number)) == sizeof(number)) {
        }
        usleep(std::uniform_int_distribution<useconds_t>(0, 3000)(random));
        ASSERT_EQ(kill(child, SIGKILL), 0);
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFSIGNALED(status)) << "it ended by itself with " << WEXITSTATUS(status);
        while (read(pipes[0], &number, sizeof(number)) == sizeof(number)) {
        }
        close(pipes[0]);

        CqSurveyDB db(path);
        const auto kept = static_cast<std::uint32_t>(db.GetNumCoordRecs());
        EXPECT_GE(kept, number);
        EXPECT_LE(kept, number + 1);
        for (std::uint32_t i = 1; i <= kept; ++i) {
            const CqHandle handle = db.GetCoordRecHandleByPtName(NameOf(i));
            ASSERT_EQ(handle, i);
            CqCoordRec rec;
            CqHandle next = handle;
            ASSERT_EQ(db.GetNextCoordRec(next, rec), 1);
            std::array<double, 3> coords{};
            rec.GetPoint(coords.data());
            ASSERT_EQ(coords, (std::array<double, 3>{1.0 * i, 2.0 * i, 0.5}));
            CString text;
            if (i <= number && !unreported.contains(i)) {
                ASSERT_EQ(db.GetCoordDescription(handle, text), 1);
                ASSERT_EQ(text, u"stone " + NameOf(i));
            }
        }
        EXPECT_EQ(CqJobCheck(db).GetCount(), 0U);
        if (kept > number) {
            unreported.insert(kept);
        }
        reported = kept;
    }
}

TEST(JobCrash, AKilledCreationLeavesAWholeJobOrNothingAtItsPath) {
    const std::uint32_t seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const TempDir folder;
    const CString path = folder.Path(u"new.job");
    int whole = 0;
    int nothing = 0;
    for (int round = 0; round < 100; ++round) {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            try {
                CqSurveyDB db;
                db.CreateNew(path);
            } catch (...) {
                _exit(3);
            }
            _exit(0);
        }
        usleep(std::uniform_int_distribution<useconds_t>(0, 12000)(random));
        kill(child, SIGKILL);
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFSIGNALED(status) || WEXITSTATUS(status) == 0) << WEXITSTATUS(status);
        CqSurveyDB db;
        if (std::filesystem::exists(folder.Utf8("new.job"))) {
            db.Open(path);
            EXPECT_EQ(CqJobCheck(db).GetCount(), 0U);
            EXPECT_EQ(db.GetNumLayers(), 1);
            ++whole;
        } else {
            db.CreateNew(path);
            ++nothing;
        }
        db.Close();
        EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.Utf8("")), {}), 1)
            << "what an earlier try left is gone";
        std::filesystem::remove(folder.Utf8("new.job"));
    }
    EXPECT_GT(whole + nothing, 0);
    RecordProperty("whole", whole);
    RecordProperty("nothing", nothing);
}

}  // namespace
}  // namespace cqsurvey
