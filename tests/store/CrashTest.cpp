#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <string>

#include "store/OtherProcess.h"
#include "store/StoreExtras.h"
#include "store/StoreTesting.h"

namespace cqsurvey {
namespace {

/// Records things one step each and reports each by a byte, until it is killed.
int RecordForEver(const CString& path, int word) {
    if (QrfsMount(path, u"C") == 0) {
        return 1;
    }
    const std::uint32_t things = OpenTable<ThingLayout>(u"C");
    const std::uint32_t pairs = OpenTable<PairLayout>(u"C");
    for (auto count = static_cast<std::uint32_t>(QrdbGetRecordCount(things));; ++count) {
        ThingLayout::Bytes record = MakeThing(count + 1);
        const bool done =
            StoreBeginStep(u"C") != 0 &&
            QrdbWriteMemo(things, FromUtf8(std::to_string(count + 1)),
                          record.data() + ThingLayout::Offset<"Remark">()) != 0 &&
            QrdbAppendRecord(things, record.data()) != 0 &&
            QrdbAppendRecord(pairs, MakePair(count + 1, 0).data()) != 0 &&
            (count == 0 || (QrdbGoToRecord(pairs, count) != 0 &&
                            QrdbWriteRecord(pairs, MakePair(count, count + 1).data()) != 0)) &&
            PutFile(u"C:/One", std::to_string(count + 1)) != 0 && StoreCommitStep(u"C") != 0;
        if (!done || write(word, "r", 1) != 1) {
            return 2;
        }
    }
}

class CrashTest : public testing::Test {
 protected:
    void SetUp() override {
        ASSERT_DONE(QrfsCreateVolume(m_path));
        ASSERT_DONE(QrfsMount(m_path, u"V"));
        ASSERT_DONE(CreateTable<ThingLayout>(u"V"));
        ASSERT_DONE(CreateTable<PairLayout>(u"V"));
        ASSERT_DONE(QrfsUnmount(u"V"));
    }
    void TearDown() override { QrfsUnmount(u"V"); }

    TempDir m_dir;
    CString m_path = m_dir.Path(u"volume.job");
};

TEST_F(CrashTest, AKilledProcessLeavesAllThatItReportedAndAtMostOneMore) {
    constexpr std::uint32_t kSeed = 20;
    SCOPED_TRACE("seed " + std::to_string(kSeed));
    Random random(kSeed);
    std::uint32_t known = 0;
    for (int kill = 0; kill < 20; ++kill) {
        SCOPED_TRACE("kill " + std::to_string(kill));
        std::uint32_t reported = known;
        {
            OtherProcess recorder([&](int, int word) { return RecordForEver(m_path, word); });
            recorder.Tell();
            for (std::uint32_t wait = random.Below(30); wait != 0; --wait) {
                ASSERT_EQ(recorder.Hear(), 'r');
                ++reported;
            }
            usleep(random.Below(3000));
            ASSERT_EQ(::kill(recorder.Id(), SIGKILL), 0);
            EXPECT_EQ(recorder.Finish(), -1);
            while (recorder.Hear() == 'r') {
                ++reported;
            }
        }
        ASSERT_DONE(QrfsMount(m_path, u"V"));
        const Contents found = ReadContents(u"V");
        known = static_cast<std::uint32_t>(found.things.size());
        ASSERT_TRUE(known == reported || known == reported + 1) << known << " of " << reported;
        ASSERT_EQ(found.pairs.size(), known);
        for (std::uint32_t i = 1; i <= known; ++i) {
            ASSERT_EQ(found.things.at(i).first, AsString(MakeThing(i)));
            ASSERT_EQ(found.things.at(i).second, FromUtf8(std::to_string(i)));
            ASSERT_EQ(found.pairs.at(i), AsString(MakePair(i, i == known ? 0 : i + 1)));
        }
        if (known != 0) {
            ASSERT_EQ(found.files.at(u"One"), std::to_string(known));
        }
        ASSERT_DONE(QrfsUnmount(u"V"));
        ASSERT_EQ(NamesIn(m_dir.Utf8("")), std::set<std::string>{"volume.job"});
    }
    EXPECT_GT(known, 100U);
}

}  // namespace
}  // namespace cqsurvey
