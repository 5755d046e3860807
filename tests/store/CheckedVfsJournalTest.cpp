#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>

#include "store/CheckedVfsFixture.h"
#include "store/DatabasePage.h"
#include "store/OtherProcess.h"

namespace cqsurvey {
namespace {

using CheckedVfsTest = CheckedVfsFixture;

TEST_F(CheckedVfsTest, AFileWithoutTheJournalOfItsOpenStepIsRefused) {
    Append(300);
    const Contents before = ReadContents(u"V");
    BeginLargeStep();
    // What a kill would leave, after somebody renamed the job and not its journal.
    const std::string renamed = m_dir.Utf8("renamed.job");
    std::filesystem::copy_file(m_host, renamed);
    const std::string file = ReadHostFile(renamed);
    EXPECT_FAILS(0, error::kDamaged, QrfsMount(FromUtf8(renamed), u"W"));
    EXPECT_NE(std::string(StoreErrorDetail()).find("cut short"), std::string::npos)
        << StoreErrorDetail();
    EXPECT_FAILS(0, error::kDamaged, StoreMountReadOnly(FromUtf8(renamed), u"W"));
    EXPECT_TRUE(ReadHostFile(renamed) == file);
    // With the journal, as the text says, it is as it was before the step.
    std::filesystem::copy_file(m_host + "-journal", renamed + "-journal");
    ASSERT_DONE(QrfsMount(FromUtf8(renamed), u"W"));
    EXPECT_EQ(ReadContents(u"W"), before);
}

TEST_F(CheckedVfsTest, ACopyBesideTheJournalOfAnotherStateIsRefusedAndKeepsItsBytes) {
    Append(300);
    const Contents before = ReadContents(u"V");
    const std::string backup = ReadHostFile(m_host);
    Append(300);
    Append(1);
    BeginLargeStep();
    const std::string restored = m_dir.Utf8("restored.job");
    WriteHostFile(restored, backup);
    std::filesystem::copy_file(m_host + "-journal", restored + "-journal");
    EXPECT_FAILS(0, error::kDamaged, QrfsMount(FromUtf8(restored), u"W"));
    EXPECT_NE(std::string(StoreErrorDetail()).find(restored + "-journal"), std::string::npos)
        << StoreErrorDetail();
    EXPECT_TRUE(ReadHostFile(restored) == backup);
    std::filesystem::rename(restored + "-journal", restored + ".aside");
    ASSERT_DONE(QrfsMount(FromUtf8(restored), u"W"));
    EXPECT_EQ(ReadContents(u"W"), before);
}

/// Steps of many records until it is killed; reports each.
int RecordLargeSteps(const CString& path, int word) {
    const SmallSpills spills;
    if (QrfsMount(path, u"C") == 0) {
        return 1;
    }
    const std::uint32_t pairs = OpenTable<PairLayout>(u"C");
    for (std::uint32_t step = 1;; ++step) {
        bool done = StoreBeginStep(u"C") != 0;
        for (std::uint32_t i = 1; done && i <= 200; ++i) {
            // Every record has the same number in every state between two steps.
            done = QrdbGoToRecord(pairs, i) != 0
                       ? QrdbWriteRecord(pairs, MakePair(step, i).data()) != 0
                       : QrdbAppendRecord(pairs, MakePair(step, i).data()) != 0;
        }
        done = done && PutFile(u"C:/One", std::string(12 << 20, static_cast<char>(step))) != 0 &&
               StoreCommitStep(u"C") != 0;
        if (!done || write(word, "r", 1) != 1) {
            return 2;
        }
    }
}

/// Returns when another process has written a part of a step to the file.
void WaitForOpenStep(const std::string& path) {
    std::array<char, DatabaseHeader::kSize> start{};
    do {
        usleep(1000);
        std::ifstream(path, std::ios::binary).read(start.data(), start.size());
    } while (DatabaseHeader(reinterpret_cast<const std::byte*>(start.data())).IsStepWhole());
}

/// Whether all records and all bytes of the file are of the same step.
bool IsOfOneStep(const CString& mount) {
    const Contents contents = ReadContents(mount);
    std::set<char> steps;
    for (const auto& [number, bytes] : contents.pairs) {
        steps.insert(bytes.front());
    }
    for (const auto& [name, bytes] : contents.files) {
        steps.insert(bytes.front());
        if (bytes.find_first_not_of(bytes.front()) != std::string::npos) {
            return false;
        }
    }
    return steps.size() <= 1;
}

TEST_F(CheckedVfsTest, AKilledJobWithoutItsJournalOrWithAnotherOneIsNeverHalfOldAndHalfNew) {
    constexpr std::uint32_t kSeed = 31;
    SCOPED_TRACE("seed " + std::to_string(kSeed));
    Random random(kSeed);
    Unmount();
    const std::string empty = ReadHostFile(m_host);
    int refused = 0;
    for (int kill = 0; kill < 6; ++kill) {
        SCOPED_TRACE("kill " + std::to_string(kill));
        WriteHostFile(m_host, empty);
        std::filesystem::remove(m_host + "-journal");
        std::string backup;
        {
            OtherProcess recorder([&](int, int word) { return RecordLargeSteps(m_path, word); });
            recorder.Tell();
            for (std::uint32_t wait = 1 + random.Below(2); wait != 0; --wait) {
                ASSERT_EQ(recorder.Hear(), 'r');
            }
            if (kill % 2 == 0) {
                WaitForOpenStep(m_host);
            } else {
                usleep(random.Below(500000));
            }
            ASSERT_EQ(::kill(recorder.Id(), SIGKILL), 0);
            EXPECT_EQ(recorder.Finish(), -1);
        }
        const std::string left = ReadHostFile(m_host);
        const bool hasJournal = std::filesystem::exists(m_host + "-journal");
        const auto look = [&](const std::string& file, bool withJournal) {
            const std::string path = m_dir.Utf8("look.job");
            WriteHostFile(path, file);
            std::filesystem::remove(path + "-journal");
            if (withJournal && hasJournal) {
                std::filesystem::copy_file(m_host + "-journal", path + "-journal");
            }
            if (QrfsMount(FromUtf8(path), u"W") == 0) {
                EXPECT_EQ(QrfsGetLastError(), error::kDamaged) << LastError();
                ++refused;
                return;
            }
            EXPECT_TRUE(IsOfOneStep(u"W"));
            EXPECT_EQ(StoreFindWrongPage(u"W", 0), 0U);
            QrfsUnmount(u"W");
        };
        look(left, false);  // renamed while it was open
        look(empty, true);  // a copy was put back in its place
        WriteHostFile(m_dir.Utf8("whole.job"), left);
        if (hasJournal) {
            std::filesystem::copy_file(m_host + "-journal", m_dir.Utf8("whole.job-journal"),
                                       std::filesystem::copy_options::overwrite_existing);
        }
        ASSERT_DONE(QrfsMount(FromUtf8(m_dir.Utf8("whole.job")), u"W"));
        EXPECT_TRUE(IsOfOneStep(u"W"));
        QrfsUnmount(u"W");
    }
    EXPECT_GT(refused, 0);
    WriteHostFile(m_host, empty);
    std::filesystem::remove(m_host + "-journal");
    Mount();
}

}  // namespace
}  // namespace cqsurvey
