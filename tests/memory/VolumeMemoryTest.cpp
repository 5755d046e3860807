#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <string>

#include "memory/FaultMemory.h"
#include "store/StoreExtras.h"
#include "store/StoreTesting.h"
#include "store/Volume.h"

namespace cqsurvey {
namespace {

// What the changes need is there before memory runs out: only the store's own allocations fail.
const CString kOne = u"V:/One";
const CString kTwo = u"V:/Two.ini";
const CString kThree = u"V:/Three";
const CString kFour = u"V:/Four";
const CString kRemark = u"a new remark";
const std::string kBytes(14000, 'n');

/// A volume with something in it, and memory that runs out.
class VolumeMemoryTest : public testing::Test {
 protected:
    void SetUp() override {
        ASSERT_DONE(QrfsCreateVolume(m_path));
        ASSERT_DONE(QrfsMount(m_path, u"V"));
        ASSERT_DONE(CreateTable<ThingLayout>(u"V"));
        ASSERT_DONE(CreateTable<PairLayout>(u"V"));
        OpenTables();
        ASSERT_DONE(StoreBeginStep(u"V"));
        for (std::uint32_t i = 1; i <= 40; ++i) {
            ThingLayout::Bytes record = MakeThing(i);
            ASSERT_DONE(QrdbWriteMemo(m_things, CString(i, u'm'),
                                      record.data() + ThingLayout::Offset<"Remark">()));
            ASSERT_DONE(QrdbAppendRecord(m_things, record.data()));
        }
        for (std::uint32_t i = 1; i <= 400; ++i) {
            ASSERT_DONE(QrdbAppendRecord(m_pairs, MakePair(i, i).data()));
        }
        ASSERT_DONE(PutFile(u"V:/One", std::string(9000, '1')));
        ASSERT_DONE(PutFile(u"V:/Two.ini", "2"));
        ASSERT_DONE(StoreCommitStep(u"V"));
        m_before = ReadContents(u"V");
        ASSERT_DONE(QrfsUnmount(u"V"));
        m_bytes = ReadHostFile(m_host);
    }
    void TearDown() override {
        m_memory.Heal();
        Volume::SetSpillLimits({});
        QrfsUnmount(u"V");
    }

    void OpenTables() {
        m_things = OpenTable<ThingLayout>(u"V");
        m_pairs = OpenTable<PairLayout>(u"V");
        ASSERT_NE(m_things, 0U);
        ASSERT_NE(m_pairs, 0U);
    }

    void MountFresh() {
        QrfsUnmount(u"V");
        WriteHostFile(m_host, m_bytes);
        ASSERT_DONE(QrfsMount(m_path, u"V"));
        OpenTables();
    }

    /// Notes the code of what failed.
    bool Done(int result) {
        if (result == 0) {
            m_code = QrfsGetLastError();
        }
        return result != 0;
    }

    bool Put(const CString& path, std::uint32_t size) {
        const std::int32_t file = QrfsOpenFile(path, 3);
        std::uint32_t written = 0;
        const bool done = Done(file != -1 ? 1 : 0) && Done(QrfsSetLength(file, 0)) &&
                          Done(QrfsWrite(file, kBytes.data(), size, written)) &&
                          Done(QrfsFlushFile(file));
        QrfsCloseFile(file);
        return done;
    }

    /// One step of changes of every kind. Gives whether it was kept.
    bool ChangeInAStep() {
        if (!Done(StoreBeginStep(u"V"))) {
            return false;
        }
        ThingLayout::Bytes record = MakeThing(1000);
        std::byte* remark = record.data() + ThingLayout::Offset<"Remark">();
        bool done = Done(QrdbGoToRecord(m_things, 7)) && Done(QrdbDeleteRecord(m_things)) &&
                    Done(QrdbGoToRecord(m_things, 40)) && Done(QrdbDeleteRecord(m_things)) &&
                    Done(QrdbGoToRecord(m_things, 9)) &&
                    Done(QrdbWriteRecord(m_things, MakeThing(2000).data())) &&
                    Done(QrdbWriteMemo(m_things, kRemark, remark)) &&
                    Done(QrdbAppendRecord(m_things, record.data()));
        for (std::uint32_t i = 3; done && i < 400; i += 40) {
            done = Done(QrdbGoToRecord(m_pairs, i)) &&
                   Done(QrdbWriteRecord(m_pairs, MakePair(i, 77).data())) &&
                   Done(QrdbAppendRecord(m_pairs, MakePair(i, 88).data()));
        }
        done = done && Put(kOne, 14000) && Done(QrfsRename(kTwo, kThree)) &&
               Done(QrfsCopyFile(kThree, kFour)) && Put(kFour, 300);
        if (done) {
            return Done(StoreCommitStep(u"V"));
        }
        StoreRollbackStep(u"V");
        return false;
    }

    bool DeleteOne() {
        return Done(QrdbGoToRecord(m_things, 12)) && Done(QrdbDeleteRecord(m_things));
    }
    bool CopyOne() { return Done(QrfsCopyFile(kOne, kThree)); }
    bool RenameOne() { return Done(QrfsRename(kOne, kThree)); }
    bool DropOne() { return Done(QrfsDeleteFile(kOne)); }

    /// Lets memory run out at every `stride`th allocation of a change; at fewer of them with the
    /// tables loaded, which need less then, and where nothing is to be had afterwards either.
    void RunOutEverywhere(const std::function<bool()>& change, std::int64_t stride = 1) {
        struct Case {
            bool loaded;
            bool stays;
            std::int64_t stride;
        };
        constexpr std::array<Case, 3> kCases{
            {{false, false, 1}, {false, true, 5}, {true, false, 4}}};
        MountFresh();
        ASSERT_TRUE(change()) << LastError();
        const Contents after = ReadContents(u"V");
        for (const auto& [loaded, stays, each] : kCases) {
            bool struck = true;
            for (std::int64_t at = 1; struck && !HasFatalFailure(); at += stride * each) {
                SCOPED_TRACE("allocation " + std::to_string(at) + (stays ? " and all later" : "") +
                             (loaded ? ", loaded" : ""));
                MountFresh();
                if (loaded) {
                    ASSERT_EQ(ReadContents(u"V"), m_before);
                }
                m_memory.FailAt(at, stays);
                const bool kept = change();
                struck = m_memory.Struck();
                m_memory.Heal();
                ASSERT_TRUE(struck || kept);
                if (!kept) {
                    EXPECT_EQ(Hex(m_code), Hex(error::kOutOfMemory)) << LastError();
                    ASSERT_EQ(ReadContents(u"V"), m_before);
                    ASSERT_TRUE(change()) << LastError();
                }
                ASSERT_EQ(ReadContents(u"V"), after);
                ASSERT_DONE(QrfsUnmount(u"V"));
                ASSERT_DONE(QrfsMount(m_path, u"V"));
                ASSERT_EQ(ReadContents(u"V"), after);
            }
        }
    }

    FaultMemory m_memory;
    FaultVfs m_vfs;
    TempDir m_dir;
    CString m_path = m_dir.Path(u"volume.job");
    std::string m_host = m_dir.Utf8("volume.job");
    Contents m_before;
    std::string m_bytes;
    std::uint32_t m_things = 0;
    std::uint32_t m_pairs = 0;
    std::int32_t m_code = 0;
};

TEST_F(VolumeMemoryTest, AStepThatRunsOutOfMemoryIsKeptOrUndoneWhole) {
    RunOutEverywhere([&] { return ChangeInAStep(); });
}

TEST_F(VolumeMemoryTest, AStepThatSpillsAtEveryChangeIsKeptOrUndoneWhole) {
    Volume::SetSpillLimits({1, 0, 0, 0});
    RunOutEverywhere([&] { return ChangeInAStep(); }, 3);
}

TEST_F(VolumeMemoryTest, AnOperationByItselfIsKeptOrUndoneWhole) {
    RunOutEverywhere([&] { return DeleteOne(); }, 2);
    RunOutEverywhere([&] { return CopyOne(); }, 2);
    RunOutEverywhere([&] { return RenameOne(); }, 2);
    RunOutEverywhere([&] { return DropOne(); }, 2);
}

TEST_F(VolumeMemoryTest, AMountThatRunsOutOfMemoryLeavesNothingMounted) {
    for (const bool stays : {false, true}) {
        bool struck = true;
        for (std::int64_t at = 1; struck; at += stays ? 5 : 1) {
            SCOPED_TRACE("allocation " + std::to_string(at) + (stays ? " and all later" : ""));
            m_memory.FailAt(at, stays);
            const bool mounted = Done(QrfsMount(m_path, u"V"));
            struck = m_memory.Struck();
            m_memory.Heal();
            ASSERT_TRUE(struck || mounted);
            if (!mounted) {
                EXPECT_EQ(Hex(m_code), Hex(error::kOutOfMemory)) << LastError();
                EXPECT_FAILS(0, error::kNoMount, QrfsUnmount(u"V"));
                ASSERT_DONE(QrfsMount(m_path, u"V"));
            }
            ASSERT_EQ(ReadContents(u"V"), m_before);
            ASSERT_DONE(QrfsUnmount(u"V"));
        }
    }
}

TEST_F(VolumeMemoryTest, AVolumeIsCreatedWholeOrNotAtAll) {
    for (const bool stays : {false, true}) {
        bool struck = true;
        for (std::int64_t at = 1; struck; at += stays ? 5 : 1) {
            SCOPED_TRACE("allocation " + std::to_string(at) + (stays ? " and all later" : ""));
            const CString path = m_dir.Path(u"new.job");
            m_memory.FailAt(at, stays);
            const bool created = Done(QrfsCreateVolume(path));
            struck = m_memory.Struck();
            m_memory.Heal();
            ASSERT_TRUE(struck || created);
            ASSERT_EQ(NamesIn(m_dir.Utf8("")).size(), created ? 2U : 1U);
            if (!created) {
                EXPECT_EQ(Hex(m_code), Hex(error::kOutOfMemory)) << LastError();
                ASSERT_DONE(QrfsCreateVolume(path));
            }
            ASSERT_DONE(QrfsMount(path, u"V"));
            ASSERT_DONE(QrfsUnmount(u"V"));
            std::filesystem::remove(m_dir.Utf8("new.job"));
        }
    }
}

}  // namespace
}  // namespace cqsurvey
