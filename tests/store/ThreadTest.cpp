#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "store/StoreExtras.h"
#include "store/StoreTesting.h"

namespace cqsurvey {
namespace {

/// Makes, uses and leaves volumes of its own; gives what went wrong.
std::string Work(const TempDir& dir, int thread) {
    for (int round = 0; round < 4; ++round) {
        const CString mount = FromUtf8("T" + std::to_string(thread));
        const CString path =
            dir.Path(FromUtf8(std::to_string(thread) + "-" + std::to_string(round) + ".job"));
        if (QrfsCreateVolume(path) == 0 || QrfsMount(path, mount) == 0 ||
            CreateTable<ThingLayout>(mount) == 0 || CreateTable<PairLayout>(mount) == 0) {
            return LastError();
        }
        const std::uint32_t pairs = OpenTable<PairLayout>(mount);
        for (std::uint32_t i = 1; i <= 200; ++i) {
            if (StoreBeginStep(mount) == 0 ||
                QrdbAppendRecord(pairs, MakePair(i, static_cast<std::uint32_t>(thread)).data()) ==
                    0 ||
                (i % 10 == 0 && PutFile(mount + u":/One", std::to_string(i)) == 0) ||
                StoreCommitStep(mount) == 0) {
                return LastError();
            }
            // This thread's failures are its own.
            if (thread % 2 == 0) {
                if (QrdbGoToRecord(pairs, 1000) != 0 || QrfsGetLastError() != error::kNoRecord) {
                    return "no record: " + LastError();
                }
            } else if (QrfsDeleteFile(mount + u":/None") != 0 ||
                       QrfsGetLastError() != error::kNoFile) {
                return "no file: " + LastError();
            }
            std::this_thread::yield();
            if (QrfsGetLastError() != (thread % 2 == 0 ? error::kNoRecord : error::kNoFile)) {
                return "another thread's error: " + LastError();
            }
        }
        // A volume that another thread holds is held.
        const Contents found = ReadContents(mount);
        if (found.pairs.size() != 200 ||
            found.pairs.at(200) != AsString(MakePair(200, static_cast<std::uint32_t>(thread))) ||
            found.files.at(u"One") != "200" || QrfsUnmount(mount) == 0) {
            return "contents: " + LastError();
        }
    }
    return {};
}

TEST(ThreadTest, ThreadsUseTheirOwnVolumesAtTheSameTime) {
    const FaultVfs withoutSyncs;
    const TempDir dir;
    std::vector<std::string> results(4);
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&dir, &results, thread] {
            results[static_cast<std::size_t>(thread)] = Work(dir, thread);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(results, std::vector<std::string>(4));
}

TEST(ThreadTest, OneOfManyThreadsMountsAVolume) {
    const FaultVfs withoutSyncs;
    const TempDir dir;
    const CString path = dir.Path(u"shared.job");
    ASSERT_DONE(QrfsCreateVolume(path));
    for (int round = 0; round < 20; ++round) {
        std::atomic<int> mounted{0};
        std::atomic<int> refused{0};
        std::vector<std::thread> threads;
        for (int thread = 0; thread < 4; ++thread) {
            threads.emplace_back([&, thread] {
                if (QrfsMount(path, FromUtf8("S" + std::to_string(thread))) != 0) {
                    ++mounted;
                } else if (QrfsGetLastError() == error::kVolumeMounted) {
                    ++refused;
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        EXPECT_EQ(mounted, 1);
        EXPECT_EQ(refused, 3);
        for (int thread = 0; thread < 4; ++thread) {
            QrfsUnmount(FromUtf8("S" + std::to_string(thread)));
        }
    }
}

TEST(ThreadTest, ANewThreadHasNoError) {
    EXPECT_EQ(QrfsUnmount(u"nothing"), 0);
    EXPECT_EQ(Hex(QrfsGetLastError()), Hex(error::kNoMount));
    std::int32_t code = -1;
    std::string detail = "x";
    std::thread([&] {
        code = QrfsGetLastError();
        detail = StoreErrorDetail();
    }).join();
    EXPECT_EQ(code, error::kNone);
    EXPECT_EQ(detail, "");
    EXPECT_EQ(Hex(QrfsGetLastError()), Hex(error::kNoMount));
}

}  // namespace
}  // namespace cqsurvey
