#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "store/StoreExtras.h"
#include "store/StoreTesting.h"
#include "store/Volume.h"
#include "support/FaultVfs.h"

namespace cqsurvey {
namespace {

constexpr unsigned kEverything = FaultVfs::kOpen | FaultVfs::kRead | FaultVfs::kChanging;

struct Fault {
    const char* name;
    unsigned calls;
    int result;
    bool stays;
    std::int32_t code;
};

std::ostream& operator<<(std::ostream& out, const Fault& fault) {
    return out << fault.name;
}

constexpr std::array<Fault, 11> kFaults{{
    {"OneWriteFails", FaultVfs::kWrite, SQLITE_IOERR, false, error::kReadWriteFailed},
    {"EveryWriteFails", FaultVfs::kWrite, SQLITE_IOERR, true, error::kReadWriteFailed},
    {"OneWriteFindsTheDiskFull", FaultVfs::kWrite, SQLITE_FULL, false, error::kVolumeFull},
    {"EveryWriteFindsTheDiskFull", FaultVfs::kWrite, SQLITE_FULL, true, error::kVolumeFull},
    {"OneSyncFails", FaultVfs::kSync, SQLITE_IOERR, false, error::kReadWriteFailed},
    {"EverySyncFails", FaultVfs::kSync, SQLITE_IOERR, true, error::kReadWriteFailed},
    {"OneReadFails", FaultVfs::kRead, SQLITE_IOERR, false, error::kReadWriteFailed},
    {"EveryReadFails", FaultVfs::kRead, SQLITE_IOERR, true, error::kReadWriteFailed},
    {"OneFileCannotBeOpened", FaultVfs::kOpen, SQLITE_IOERR, false, error::kAccessDenied},
    {"NoFileCanBeOpened", FaultVfs::kOpen, SQLITE_IOERR, true, error::kAccessDenied},
    {"TheMediumIsGone", kEverything, SQLITE_IOERR, true, error::kReadWriteFailed},
}};

/// A volume with something in it, set back to the same bytes for each accident.
class FaultTest : public StoreTest {
 protected:
    void SetUp() override {
        StoreTest::SetUp();
        const std::uint32_t things = OpenTable<ThingLayout>(u"V");
        const std::uint32_t pairs = OpenTable<PairLayout>(u"V");
        ASSERT_DONE(StoreBeginStep(u"V"));
        for (std::uint32_t i = 1; i <= 40; ++i) {
            ThingLayout::Bytes record = MakeThing(i);
            ASSERT_DONE(QrdbWriteMemo(things, CString(i, u'm'),
                                      record.data() + ThingLayout::Offset<"Remark">()));
            ASSERT_DONE(QrdbAppendRecord(things, record.data()));
        }
        for (std::uint32_t i = 1; i <= 400; ++i) {
            ASSERT_DONE(QrdbAppendRecord(pairs, MakePair(i, i).data()));
        }
        ASSERT_DONE(PutFile(u"V:/One", std::string(9000, '1')));
        ASSERT_DONE(PutFile(u"V:/Two.ini", "2"));
        ASSERT_DONE(StoreCommitStep(u"V"));
        m_before = ReadContents(u"V");
        Unmount();
        m_bytes = ReadHostFile(m_host);
    }

    void TearDown() override {
        m_vfs.Heal();
        Volume::SetSpillLimits({});
        StoreTest::TearDown();
    }

    void MountFresh() {
        std::filesystem::remove(m_host + "-journal");
        WriteHostFile(m_host, m_bytes);
        Mount();
        m_things = OpenTable<ThingLayout>(u"V");
        m_pairs = OpenTable<PairLayout>(u"V");
        ASSERT_NE(m_things, 0U);
        ASSERT_NE(m_pairs, 0U);
    }

    /// One step of changes of every kind. Gives whether it was kept.
    bool ChangeInAStep() {
        if (StoreBeginStep(u"V") == 0) {
            m_code = QrfsGetLastError();
            return false;
        }
        bool spoilt = false;
        const auto changed = [&](int result) {
            spoilt = spoilt || result == 0;
            return result != 0;
        };
        ThingLayout::Bytes record = MakeThing(1000);
        std::byte* remark = record.data() + ThingLayout::Offset<"Remark">();
        bool done = QrdbGoToRecord(m_things, 7) != 0 && changed(QrdbDeleteRecord(m_things));
        done = done && QrdbGoToRecord(m_things, 40) != 0 && changed(QrdbDeleteRecord(m_things));
        done = done && QrdbGoToRecord(m_things, 9) != 0 &&
               changed(QrdbWriteRecord(m_things, MakeThing(2000).data()));
        done = done && changed(QrdbWriteMemo(m_things, u"a new remark", remark)) &&
               changed(QrdbAppendRecord(m_things, record.data()));
        for (std::uint32_t i = 3; done && i < 400; i += 40) {
            done = QrdbGoToRecord(m_pairs, i) != 0 &&
                   changed(QrdbWriteRecord(m_pairs, MakePair(i, 77).data())) &&
                   changed(QrdbAppendRecord(m_pairs, MakePair(i, 88).data()));
        }
        done = done && PutFile(u"V:/One", std::string(5000, 'n') + std::string(9000, 'o')) != 0;
        done = done && changed(QrfsRename(u"V:/Two.ini", u"V:/Three"));
        done = done && PutFile(u"V:/Four", "new") != 0;
        if (done) {
            const bool kept = StoreCommitStep(u"V") != 0;
            m_code = QrfsGetLastError();
            return kept;
        }
        m_code = QrfsGetLastError();
        if (QrdbAppendRecord(m_pairs, MakePair(0, 0).data()) == 0) {
            // Nothing more can be changed in the step, and it cannot be kept.
            EXPECT_EQ(QrfsCreateFile(u"V:/Hole", 0), 0);
            EXPECT_EQ(StoreCommitStep(u"V"), 0);
        } else {
            EXPECT_FALSE(spoilt);
            EXPECT_DONE(StoreRollbackStep(u"V"));
        }
        return false;
    }

    /// Changes without a step around them: each is one by itself.
    bool AppendOne() { return Done(QrdbAppendRecord(m_pairs, MakePair(5, 5).data())); }
    bool DeleteOne() {
        return Done(QrdbGoToRecord(m_things, 12)) && Done(QrdbDeleteRecord(m_things));
    }
    bool CopyOne() { return Done(QrfsCopyFile(u"V:/One", u"V:/Three")); }
    bool CutOne() {
        const std::int32_t file = QrfsOpenFile(u"V:/One", 3);
        const bool done = Done(file != -1 ? 1 : 0) && Done(QrfsSetLength(file, 4100));
        QrfsCloseFile(file);
        return done;
    }
    bool DropOne() { return Done(QrfsDeleteFile(u"V:/One")); }

    bool Done(int result) {
        m_code = QrfsGetLastError();
        return result != 0;
    }

    /// What is on the volume, nothing when it must be mounted anew to be known.
    std::optional<Contents> Look() {
        try {
            return ReadContents(u"V");
        } catch (const std::runtime_error& failure) {
            EXPECT_NE(std::string(failure.what()).find("anew"), std::string::npos)
                << failure.what();
            return std::nullopt;
        }
    }

    /// Lets the `at`th call fail for every `at` until the change comes through without an accident.
    void FailEverywhere(const Fault& fault, bool loaded, const std::function<bool()>& change) {
        MountFresh();
        ASSERT_TRUE(change()) << LastError();
        const Contents after = ReadContents(u"V");
        Unmount();
        for (std::int64_t at = 1; !HasFatalFailure(); ++at) {
            SCOPED_TRACE("call " + std::to_string(at) + (loaded ? ", loaded" : ", not loaded"));
            bool struck = false;
            for (const bool healsBeforeUnmount : {true, false}) {
                MountFresh();
                if (loaded) {
                    ASSERT_EQ(ReadContents(u"V"), m_before);
                }
                m_vfs.FailAt(fault.calls, at, fault.result, fault.stays);
                const bool kept = change();
                struck = m_vfs.Struck();
                ASSERT_TRUE(kept || struck) << LastError();
                if (!kept && fault.calls != kEverything) {
                    EXPECT_EQ(Hex(m_code), Hex(fault.code));
                }
                if (healsBeforeUnmount) {
                    m_vfs.Heal();
                    GoOn(fault, kept, after, change);
                }
                QrfsUnmount(u"V");
                m_vfs.Heal();
                Mount();
                const Contents found = ReadContents(u"V");
                if (healsBeforeUnmount || kept) {
                    ASSERT_EQ(found, after);
                } else if (!m_mayBeEither) {
                    ASSERT_EQ(found, m_before);
                } else {
                    ASSERT_TRUE(found == m_before || found == after);
                }
                Unmount();
                ASSERT_EQ(NamesIn(m_dir.Utf8("")), std::set<std::string>{"volume.job"});
            }
            if (!struck) {
                ASSERT_GT(at, 1) << "nothing was ever struck";
                return;
            }
        }
    }

    /// The accident is over: memory tells what is so, and the volume works.
    void GoOn(const Fault& fault, bool kept, const Contents& after,
              const std::function<bool()>& change) {
        const std::optional<Contents> found = Look();
        if (!found) {
            // Only where syncs went on failing nobody can know, and then nothing is pretended.
            ASSERT_TRUE(fault.stays && (fault.calls & FaultVfs::kSync) != 0);
            ASSERT_FALSE(kept);
            EXPECT_FAILS(0, error::kReadWriteFailed, StoreBeginStep(u"V"));
            EXPECT_FAILS(0u, error::kReadWriteFailed, QrdbOpenTable(u"V:/Pairs"));
            EXPECT_FAILS(0, error::kReadWriteFailed, QrfsCreateFile(u"V:/Five", 0));
            EXPECT_FAILS(0, error::kReadWriteFailed, QrdbMoveFirst(m_pairs));
            EXPECT_FAILS(0, error::kReadWriteFailed,
                         QrdbAppendRecord(m_pairs, MakePair(1, 1).data()));
            Remount();
            m_things = OpenTable<ThingLayout>(u"V");
            m_pairs = OpenTable<PairLayout>(u"V");
            const Contents now = ReadContents(u"V");
            if (now == m_before) {
                ASSERT_TRUE(change()) << LastError();
            }
            ASSERT_EQ(ReadContents(u"V"), after);
            return;
        }
        ASSERT_EQ(*found, kept ? after : m_before);
        if (!kept) {
            ASSERT_TRUE(change()) << LastError();
            ASSERT_EQ(ReadContents(u"V"), after);
        }
    }

    Contents m_before;
    std::string m_bytes;
    std::uint32_t m_things = 0;
    std::uint32_t m_pairs = 0;
    std::int32_t m_code = 0;
    bool m_mayBeEither = false;
};

class EveryFaultTest : public FaultTest, public testing::WithParamInterface<Fault> {
 protected:
    void SetUp() override {
        FaultTest::SetUp();
        // A power cut at that moment could leave either as well.
        m_mayBeEither = GetParam().stays && (GetParam().calls & FaultVfs::kSync) != 0;
    }
};

TEST_P(EveryFaultTest, AStepIsKeptOrUndoneWhole) {
    FailEverywhere(GetParam(), true, [&] { return ChangeInAStep(); });
}

TEST_P(EveryFaultTest, AStepOnTablesNotYetLoadedIsKeptOrUndoneWhole) {
    FailEverywhere(GetParam(), false, [&] { return ChangeInAStep(); });
}

TEST_P(EveryFaultTest, AStepThatSpillsAtEveryChangeIsKeptOrUndoneWhole) {
    Volume::SetSpillLimits({1, 0, 0, 0});
    FailEverywhere(GetParam(), true, [&] { return ChangeInAStep(); });
}

TEST_P(EveryFaultTest, AnOperationByItselfIsKeptOrUndoneWhole) {
    FailEverywhere(GetParam(), true, [&] { return AppendOne(); });
    FailEverywhere(GetParam(), true, [&] { return DeleteOne(); });
    FailEverywhere(GetParam(), true, [&] { return CopyOne(); });
    FailEverywhere(GetParam(), true, [&] { return CutOne(); });
    FailEverywhere(GetParam(), true, [&] { return DropOne(); });
}

TEST_P(EveryFaultTest, AStepLargerThanTheDatabasesMemoryIsKeptOrUndoneWhole) {
    const std::string bytes(11 << 20, 'L');
    const auto change = [&] {
        if (StoreBeginStep(u"V") == 0) {
            return false;
        }
        if (AppendOne() && Done(PutFile(u"V:/Three", bytes)) && DeleteOne()) {
            return Done(StoreCommitStep(u"V"));
        }
        StoreRollbackStep(u"V");
        return false;
    };
    bool struck = true;
    for (std::int64_t at = 1; struck && !HasFatalFailure(); at += 1 + 3 * at) {
        SCOPED_TRACE("call " + std::to_string(at));
        MountFresh();
        m_vfs.FailAt(GetParam().calls, at, GetParam().result, GetParam().stays);
        const bool kept = change();
        struck = m_vfs.Struck();
        m_vfs.Heal();
        ASSERT_TRUE(kept || struck) << LastError();
        const std::optional<Contents> found = Look();
        Remount();
        const Contents now = ReadContents(u"V");
        ASSERT_TRUE(!found || *found == now);
        ASSERT_TRUE(found || m_mayBeEither);
        ASSERT_EQ(now.files.contains(u"Three"), now.pairs.size() == 401);
        if (!kept && !m_mayBeEither) {
            ASSERT_EQ(now, m_before);
        }
        Unmount();
    }
}

TEST_F(FaultTest, AVolumeIsCreatedWholeOrNotAtAll) {
    for (const bool stays : {false, true}) {
        for (std::int64_t at = 1;; ++at) {
            SCOPED_TRACE(at);
            m_vfs.FailAt(kEverything, at, SQLITE_IOERR, stays);
            const int created = QrfsCreateVolume(m_dir.Path(u"new.job"));
            const bool struck = m_vfs.Struck();
            m_vfs.Heal();
            if (created == 0) {
                ASSERT_EQ(NamesIn(m_dir.Utf8("")), std::set<std::string>{"volume.job"});
                ASSERT_DONE(QrfsCreateVolume(m_dir.Path(u"new.job")));
            }
            ASSERT_DONE(QrfsMount(m_dir.Path(u"new.job"), u"W"));
            ASSERT_DONE(CreateTable<PairLayout>(u"W"));
            ASSERT_DONE(QrfsUnmount(u"W"));
            std::filesystem::remove(m_dir.Utf8("new.job"));
            if (!struck) {
                ASSERT_GT(at, 10);
                break;
            }
        }
    }
}

TEST_F(FaultTest, AMountThatFailsLeavesNothingMountedAndNothingChanged) {
    MountFresh();
    Unmount();
    for (std::int64_t at = 1;; ++at) {
        SCOPED_TRACE(at);
        m_vfs.FailAt(kEverything, at, SQLITE_IOERR, true);
        const int mounted = QrfsMount(m_path, u"V");
        const bool struck = m_vfs.Struck();
        m_vfs.Heal();
        ASSERT_EQ(mounted == 0, struck);
        if (mounted != 0) {
            ASSERT_GT(at, 3);
            break;
        }
        EXPECT_TRUE(QrfsGetLastError() == error::kReadWriteFailed ||
                    QrfsGetLastError() == error::kAccessDenied)
            << LastError();
        EXPECT_FAILS(0, error::kNoMount, QrfsUnmount(u"V"));
        ASSERT_TRUE(ReadHostFile(m_host) == m_bytes);
    }
}

TEST_F(FaultTest, WhatWasCutShortIsUndoneAtTheNextMountThatWorks) {
    // The medium goes away while the changes are on their way into the file.
    std::string half = m_bytes;
    for (std::int64_t at = 1; half == m_bytes; ++at) {
        MountFresh();
        m_vfs.FailAt(kEverything, at, SQLITE_IOERR, true);
        ASSERT_FALSE(ChangeInAStep());
        ASSERT_DONE(QrfsUnmount(u"V"));
        m_vfs.Heal();
        half = ReadHostFile(m_host);
    }
    const std::string journal = ReadHostFile(m_host + "-journal");
    ASSERT_FALSE(journal.empty());
    EXPECT_FAILS(0, error::kAccessDenied, StoreMountReadOnly(m_path, u"V"));
    EXPECT_NE(std::string(StoreErrorDetail()).find("cut short"), std::string::npos)
        << StoreErrorDetail();
    for (std::int64_t at = 1;; ++at) {
        SCOPED_TRACE(at);
        WriteHostFile(m_host, half);
        WriteHostFile(m_host + "-journal", journal);
        m_vfs.FailAt(kEverything, at, SQLITE_IOERR, true);
        const bool mounted = QrfsMount(m_path, u"V") != 0;
        const bool struck = m_vfs.Struck();
        m_vfs.Heal();
        if (!mounted) {
            Mount();
        }
        ASSERT_EQ(ReadContents(u"V"), m_before);
        Unmount();
        ASSERT_EQ(NamesIn(m_dir.Utf8("")), std::set<std::string>{"volume.job"});
        if (!struck) {
            ASSERT_GT(at, 5);
            break;
        }
    }
}

TEST_F(FaultTest, AnUnmountThatCannotTidyUpLosesNothing) {
    MountFresh();
    ASSERT_TRUE(ChangeInAStep());
    const Contents after = ReadContents(u"V");
    m_vfs.FailAt(kEverything, 1, SQLITE_IOERR, true);
    EXPECT_DONE(QrfsUnmount(u"V"));
    EXPECT_TRUE(m_vfs.Struck());
    m_vfs.Heal();
    EXPECT_TRUE(std::filesystem::exists(m_host + "-journal"));
    Mount();
    EXPECT_EQ(ReadContents(u"V"), after);
    Unmount();
    EXPECT_EQ(NamesIn(m_dir.Utf8("")), std::set<std::string>{"volume.job"});
}

INSTANTIATE_TEST_SUITE_P(Faults, EveryFaultTest, testing::ValuesIn(kFaults),
                         [](const auto& fault) { return fault.param.name; });

}  // namespace
}  // namespace cqsurvey
