#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "store/StoreExtras.h"
#include "store/StoreTesting.h"
#include "store/Volume.h"
#include "support/FaultVfs.h"

namespace cqsurvey {
namespace {

/// Cuts the power at any call that reaches the medium, with what was not synced lost, kept or
/// mixed, and looks at what the medium holds then.
class PowerLossTest : public StoreTest {
 protected:
    void SetUp() override {
        StoreTest::SetUp();
        m_pairs = OpenTable<PairLayout>(u"V");
        ASSERT_DONE(StoreBeginStep(u"V"));
        for (std::uint32_t i = 1; i <= 1500; ++i) {
            ASSERT_DONE(QrdbAppendRecord(m_pairs, MakePair(i, i).data()));
        }
        ASSERT_DONE(PutFile(u"V:/One", std::string(9000, '1')));
        ASSERT_DONE(StoreCommitStep(u"V"));
        Unmount();
        m_bytes = ReadHostFile(m_host);
    }

    void TearDown() override {
        m_vfs.Heal();
        Volume::SetSpillLimits({});
        StoreTest::TearDown();
    }

    /// `number` tells the steps apart. Gives whether it was reported as kept.
    bool ChangeInAStep(std::uint32_t number) {
        bool done = StoreBeginStep(u"V") != 0;
        for (std::uint32_t i = 1; done && i <= 1500; i += 100) {
            done = QrdbGoToRecord(m_pairs, i + number) != 0 &&
                   QrdbWriteRecord(m_pairs, MakePair(i, 1000 + number).data()) != 0 &&
                   QrdbAppendRecord(m_pairs, MakePair(i, number).data()) != 0;
        }
        done = done && QrdbGoToRecord(m_pairs, 500 + number) != 0 && QrdbDeleteRecord(m_pairs) != 0;
        done = done && PutFile(u"V:/One", std::string(5000 + number * 4000,
                                                      static_cast<char>('a' + number))) != 0;
        return done && StoreCommitStep(u"V") != 0;
    }

    void CutEverywhere(std::uint32_t stride) {
        constexpr std::uint32_t kSteps = 3;
        std::vector<Contents> states;
        WriteHostFile(m_host, m_bytes);
        Mount();
        m_pairs = OpenTable<PairLayout>(u"V");
        states.push_back(ReadContents(u"V"));
        for (std::uint32_t number = 1; number <= kSteps; ++number) {
            ASSERT_TRUE(ChangeInAStep(number)) << LastError();
            states.push_back(ReadContents(u"V"));
        }
        Unmount();
        for (std::int64_t at = 1; !HasFatalFailure(); at += stride) {
            SCOPED_TRACE("call " + std::to_string(at));
            std::filesystem::remove(m_host + "-journal");
            WriteHostFile(m_host, m_bytes);
            m_vfs.WatchPower(m_dir.Utf8(""));
            Mount();
            m_pairs = OpenTable<PairLayout>(u"V");
            m_vfs.FailAt(FaultVfs::kChanging, at, FaultVfs::kPowerCut, true);
            std::uint32_t kept = 0;
            while (kept < kSteps && ChangeInAStep(kept + 1)) {
                ++kept;
            }
            const bool cut = m_vfs.Struck();
            QrfsUnmount(u"V");
            m_vfs.Heal();
            if (!cut) {
                ASSERT_EQ(kept, kSteps);
                ASSERT_GT(at, 30);
                return;
            }
            LookAtMedium(states, kept, static_cast<std::uint32_t>(at));
        }
    }

    void LookAtMedium(const std::vector<Contents>& states, std::uint32_t kept, std::uint32_t seed) {
        std::mt19937 random(seed);
        for (const auto unsynced : {FaultVfs::Unsynced::Lost, FaultVfs::Unsynced::Kept,
                                    FaultVfs::Unsynced::Mixed, FaultVfs::Unsynced::Mixed}) {
            SCOPED_TRACE("unsynced " + std::to_string(static_cast<int>(unsynced)));
            const TempDir medium;
            m_vfs.WriteMedium(medium.Utf8(""), unsynced, random);
            ASSERT_DONE(QrfsMount(medium.Path(u"volume.job"), u"W"));
            const Contents found = ReadContents(u"W");
            // What was reported is there, and of the step on its way all or nothing.
            ASSERT_TRUE(found == states[kept] ||
                        (kept + 1 < states.size() && found == states[kept + 1]))
                << kept << " steps were reported; " << found;
            ASSERT_DONE(PutFile(u"W:/Two.ini", "it works"));
            ASSERT_DONE(QrfsUnmount(u"W"));
            ASSERT_EQ(NamesIn(medium.Utf8("")), std::set<std::string>{"volume.job"});
        }
    }

    std::string m_bytes;
    std::uint32_t m_pairs = 0;
};

TEST_F(PowerLossTest, WhatWasReportedIsThereAndOfTheRestAllOrNothing) {
    CutEverywhere(1);
}

TEST_F(PowerLossTest, TheSameWhenEveryChangeSpills) {
    Volume::SetSpillLimits({1, 0, 0, 0});
    CutEverywhere(3);
}

TEST_F(PowerLossTest, ACreatedVolumeIsThereOnceItsCreationWasReported) {
    for (std::int64_t at = 1;; ++at) {
        SCOPED_TRACE(at);
        m_vfs.WatchPower(m_dir.Utf8(""));
        m_vfs.FailAt(FaultVfs::kChanging, at, FaultVfs::kPowerCut, true);
        const int created = QrfsCreateVolume(m_dir.Path(u"new.job"));
        const bool cut = m_vfs.Struck();
        m_vfs.Heal();
        // Nobody hears of what is done after a cut.
        if (cut) {
            std::filesystem::remove(m_dir.Utf8("new.job"));
            std::filesystem::remove(m_dir.Utf8("new.job-journal"));
        } else {
            ASSERT_DONE(created);
            const TempDir medium;
            std::mt19937 random(1);
            m_vfs.WriteMedium(medium.Utf8(""), FaultVfs::Unsynced::Lost, random);
            ASSERT_DONE(QrfsMount(medium.Path(u"new.job"), u"W"));
            ASSERT_DONE(QrfsUnmount(u"W"));
            break;
        }
    }
}

}  // namespace
}  // namespace cqsurvey
