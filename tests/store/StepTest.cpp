#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "store/StoreExtras.h"
#include "store/StoreTesting.h"
#include "store/Volume.h"

namespace cqsurvey {
namespace {

/// What the volume must hold, kept by other means than the volume's.
struct Model {
    Contents contents;
    std::uint32_t nextThing = 1;
    std::uint32_t nextPair = 1;
};

/// Changes a volume and a model alike, by chance.
class StepTest : public StoreTest {
 protected:
    void Begin() {
        ASSERT_DONE(StoreBeginStep(u"V"));
        m_atStep = m_model;
    }
    void Commit() {
        ASSERT_DONE(StoreCommitStep(u"V"));
        m_atStep.reset();
    }
    void Rollback() {
        ASSERT_DONE(StoreRollbackStep(u"V"));
        m_model = *m_atStep;
        m_atStep.reset();
    }

    void OpenTables() {
        m_things = OpenTable<ThingLayout>(u"V");
        m_pairs = OpenTable<PairLayout>(u"V");
        ASSERT_NE(m_things, 0U);
        ASSERT_NE(m_pairs, 0U);
    }

    void Reopen() {
        Remount();
        if (m_atStep) {
            m_model = *m_atStep;
            m_atStep.reset();
        }
        OpenTables();
    }

    CString Remark(Random& random) {
        return random.OneIn(4) ? CString()
                               : CString(1 + random.Below(300),
                                         static_cast<char16_t>(0x20 + random.Below(0x500)));
    }

    void AppendThing(Random& random) {
        ThingLayout::Bytes record = MakeThing(random.Number());
        const CString remark = Remark(random);
        m_model.contents.things[m_model.nextThing] = {AsString(record), remark.substr(0, 255)};
        ASSERT_DONE(
            QrdbWriteMemo(m_things, remark, record.data() + ThingLayout::Offset<"Remark">()));
        ASSERT_DONE(QrdbAppendRecord(m_things, record.data()));
        ASSERT_DONE(QrdbMoveLast(m_things));
        ASSERT_EQ(QrdbGetCurrentHandle(m_things), m_model.nextThing);
        ++m_model.nextThing;
    }

    void AppendPair(Random& random) {
        const PairLayout::Bytes record = MakePair(random.Number(), random.Number());
        ASSERT_DONE(QrdbAppendRecord(m_pairs, record.data()));
        ASSERT_DONE(QrdbMoveLast(m_pairs));
        ASSERT_EQ(QrdbGetCurrentHandle(m_pairs), m_model.nextPair);
        m_model.contents.pairs[m_model.nextPair++] = AsString(record);
    }

    /// A number that is mostly one of a record.
    template <class Map>
    static std::uint32_t Pick(Random& random, const Map& records) {
        if (records.empty() || random.OneIn(10)) {
            return random.Below(2000);
        }
        const auto found = records.lower_bound(random.Below(records.rbegin()->first + 1));
        return random.OneIn(6) ? records.rbegin()->first : found->first;
    }

    void WriteThing(Random& random) {
        const std::uint32_t number = Pick(random, m_model.contents.things);
        const auto known = m_model.contents.things.find(number);
        ASSERT_EQ(QrdbGoToRecord(m_things, number) != 0, known != m_model.contents.things.end());
        if (known == m_model.contents.things.end()) {
            return;
        }
        ThingLayout::Bytes record{};
        ASSERT_DONE(QrdbReadRecord(m_things, record.data()));
        ASSERT_EQ(SplitThing(m_things, record), known->second);
        const auto memo = ThingLayout::Get<"Remark">(record.data());
        record = MakeThing(random.Number());
        known->second.first = AsString(record);
        ThingLayout::Set<"Remark">(record.data(), memo);
        if (random.OneIn(2)) {
            const CString remark = Remark(random);
            ASSERT_DONE(
                QrdbWriteMemo(m_things, remark, record.data() + ThingLayout::Offset<"Remark">()));
            known->second.second = remark.substr(0, 255);
        }
        ASSERT_DONE(QrdbWriteRecord(m_things, record.data()));
    }

    void WritePair(Random& random) {
        const std::uint32_t number = Pick(random, m_model.contents.pairs);
        const auto known = m_model.contents.pairs.find(number);
        ASSERT_EQ(QrdbGoToRecord(m_pairs, number) != 0, known != m_model.contents.pairs.end());
        if (known != m_model.contents.pairs.end()) {
            const PairLayout::Bytes record = MakePair(number, random.Number());
            ASSERT_DONE(QrdbWriteRecord(m_pairs, record.data()));
            known->second = AsString(record);
        }
    }

    template <class Map>
    static void Delete(Random& random, std::uint32_t table, Map& records) {
        const std::uint32_t number = Pick(random, records);
        ASSERT_EQ(QrdbGoToRecord(table, number) != 0, records.contains(number));
        if (records.erase(number) != 0) {
            ASSERT_DONE(QrdbDeleteRecord(table));
            ASSERT_EQ(QrdbGoToRecord(table, number), 0);
        }
    }

    void ChangeFile(Random& random) {
        std::map<CString, std::string>& files = m_model.contents.files;
        const CString& name = kFileNames[random.Below(kFileNames.size())];
        const CString path = u"V:/" + name;
        if (!files.contains(name)) {
            ASSERT_DONE(QrfsCreateFile(path, 0));
            files[name];
            return;
        }
        const CString& other = kFileNames[random.Below(kFileNames.size())];
        const std::uint32_t what = random.Below(12);
        if (what == 0) {
            ASSERT_DONE(QrfsDeleteFile(path));
            files.erase(name);
        } else if (what == 1) {
            ASSERT_EQ(QrfsRename(path, u"V:/" + other) != 0, !files.contains(other));
            if (!files.contains(other)) {
                files[other] = files[name];
                files.erase(name);
            }
        } else if (what == 2) {
            ASSERT_EQ(QrfsCopyFile(path, u"V:/" + other) != 0, !files.contains(other));
            files.try_emplace(other, files[name]);
        } else {
            const std::int32_t file = QrfsOpenFile(path, 3);
            ASSERT_NE(file, -1) << LastError();
            std::string& bytes = files[name];
            const std::uint32_t at = random.Below(12000);
            if (what == 3) {
                ASSERT_DONE(QrfsSetLength(file, at));
                bytes.resize(at, '\0');
            } else {
                const std::string piece(1 + random.Below(what == 4 ? 9000 : 60),
                                        static_cast<char>(random.Number()));
                std::uint32_t written = 0;
                ASSERT_EQ(QrfsSeek(file, static_cast<std::int32_t>(at), 0),
                          static_cast<std::int32_t>(at));
                ASSERT_DONE(QrfsWrite(file, piece.data(), static_cast<std::uint32_t>(piece.size()),
                                      written));
                bytes.resize(std::max(bytes.size(), at + piece.size()), '\0');
                bytes.replace(at, piece.size(), piece);
            }
            ASSERT_EQ(QrfsGetLength(file), static_cast<std::int32_t>(bytes.size()));
            ASSERT_DONE(QrfsCloseFile(file));
        }
    }

    void Change(Random& random) {
        switch (random.Below(12)) {
            case 0:
            case 1:
                AppendThing(random);
                break;
            case 2:
            case 3:
                AppendPair(random);
                break;
            case 4:
            case 5:
                WriteThing(random);
                break;
            case 6:
            case 7:
                WritePair(random);
                break;
            case 8:
                Delete(random, m_things, m_model.contents.things);
                break;
            case 9:
                Delete(random, m_pairs, m_model.contents.pairs);
                break;
            default:
                ChangeFile(random);
                break;
        }
    }

    void TearDown() override {
        Volume::SetSpillLimits({});
        StoreTest::TearDown();
    }

    void RunChanges(std::uint32_t seed, int changes) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        OpenTables();
        for (int i = 0; i < changes && !HasFatalFailure(); ++i) {
            SCOPED_TRACE("change " + std::to_string(i));
            if (!m_atStep && random.OneIn(3)) {
                Begin();
            }
            Change(random);
            if (m_atStep && random.OneIn(12)) {
                random.OneIn(2) ? Commit() : Rollback();
            }
            if (random.OneIn(150)) {
                ASSERT_EQ(ReadContents(u"V"), m_model.contents);
            }
            if (random.OneIn(200)) {
                Reopen();
                ASSERT_EQ(ReadContents(u"V"), m_model.contents);
            }
        }
        Reopen();
        ASSERT_EQ(ReadContents(u"V"), m_model.contents);
    }

    Model m_model;
    std::optional<Model> m_atStep;
    std::uint32_t m_things = 0;
    std::uint32_t m_pairs = 0;
};

class StepSequenceTest : public StepTest, public testing::WithParamInterface<std::uint32_t> {};

TEST_P(StepSequenceTest, TheVolumeIsWhatItsModelIsAfterAnyChanges) {
    RunChanges(GetParam(), 10000);
}

TEST_P(StepSequenceTest, TheVolumeIsWhatItsModelIsWhenEveryStepSpills) {
    Volume::SetSpillLimits({1, 0, 0, 0});
    RunChanges(GetParam() + 100, 3000);
}

INSTANTIATE_TEST_SUITE_P(Seeds, StepSequenceTest, testing::Values(1U, 2U, 3U));

TEST_F(StepTest, ALongStepSpillsAndIsUndoneWhole) {
    OpenTables();
    for (const std::uint32_t i : {1U, 2U, 3U}) {
        ASSERT_DONE(QrdbAppendRecord(m_pairs, MakePair(i, i).data()));
    }
    ASSERT_DONE(PutFile(u"V:/One", "before"));
    const Contents before = ReadContents(u"V");
    const std::uintmax_t size = std::filesystem::file_size(m_host);
    ASSERT_DONE(StoreBeginStep(u"V"));
    for (std::uint32_t i = 1; i <= 150000; ++i) {
        ASSERT_DONE(QrdbAppendRecord(m_pairs, MakePair(i, 0).data()));
    }
    for (std::uint32_t i = 1; i <= 70000; i += 2) {
        ASSERT_DONE(QrdbGoToRecord(m_pairs, i));
        ASSERT_DONE(QrdbDeleteRecord(m_pairs));
    }
    ASSERT_DONE(PutFile(u"V:/One", std::string(6 << 20, 'x')));
    EXPECT_GT(
        std::filesystem::file_size(m_host) + (std::filesystem::exists(m_host + "-journal") ? 1 : 0),
        size);
    EXPECT_EQ(QrdbGetRecordCount(m_pairs), 150003 - 35000);
    ASSERT_DONE(StoreRollbackStep(u"V"));
    EXPECT_EQ(ReadContents(u"V"), before);
    ASSERT_DONE(QrdbAppendRecord(m_pairs, MakePair(4, 4).data()));
    ASSERT_DONE(QrdbMoveLast(m_pairs));
    EXPECT_EQ(QrdbGetCurrentHandle(m_pairs), 4U);
    Reopen();
    Contents after = before;
    after.pairs[4] = AsString(MakePair(4, 4));
    EXPECT_EQ(ReadContents(u"V"), after);
}

TEST_F(StepTest, ALongStepSpillsAndIsKeptWhole) {
    OpenTables();
    ASSERT_DONE(StoreBeginStep(u"V"));
    for (std::uint32_t i = 1; i <= 150000; ++i) {
        ASSERT_DONE(QrdbAppendRecord(m_pairs, MakePair(i, 0).data()));
        if (i % 3 == 0) {
            ASSERT_DONE(QrdbGoToRecord(m_pairs, i / 3));
            ASSERT_DONE(QrdbWriteRecord(m_pairs, MakePair(i / 3, 7).data()));
        }
    }
    ASSERT_DONE(StoreCommitStep(u"V"));
    Reopen();
    EXPECT_EQ(QrdbGetRecordCount(m_pairs), 150000);
    for (std::uint32_t i = 1; i <= 150000; ++i) {
        ASSERT_EQ(AsString(StorePeekRecord(m_pairs, i), 8),
                  AsString(MakePair(i, i <= 50000 ? 7 : 0)));
    }
}

TEST_F(StepTest, AFileMayBeLengthenedFarWithoutTakingItsLengthInMemory) {
    ASSERT_DONE(PutFile(u"V:/One", "start"));
    const std::int32_t file = QrfsOpenFile(u"V:/One", 3);
    ASSERT_DONE(StoreBeginStep(u"V"));
    std::uint32_t written = 0;
    ASSERT_EQ(QrfsSeek(file, 40 << 20, 0), 40 << 20);
    ASSERT_DONE(QrfsWrite(file, "end", 3, written));
    // All but the last megabytes are in the file or in the database's own memory by now.
    EXPECT_GT(std::filesystem::file_size(m_host), std::uintmax_t{20} << 20);
    ASSERT_DONE(StoreCommitStep(u"V"));
    Reopen();
    const std::string bytes = GetFile(u"V:/One");
    EXPECT_EQ(bytes.size(), (std::size_t{40} << 20) + 3);
    EXPECT_EQ(bytes.substr(0, 5), "start");
    EXPECT_EQ(bytes.find_first_not_of('\0', 5), std::size_t{40} << 20);
}

TEST_F(StepTest, AStepMayMakeTablesAndFillThem) {
    const QrdbFieldDef field{0, u"A", u"DWORD", 0};
    for (const bool keep : {false, true}) {
        ASSERT_DONE(StoreBeginStep(u"V"));
        ASSERT_DONE(QrdbCreateTable(u"V:/New", 1, &field));
        const std::uint32_t table = QrdbOpenTable(u"V:/New");
        for (std::uint32_t i = 0; i < 100000; ++i) {
            ASSERT_DONE(QrdbAppendRecord(table, &i));
        }
        ASSERT_DONE(keep ? StoreCommitStep(u"V") : StoreRollbackStep(u"V"));
        Remount();
        EXPECT_EQ(QrdbOpenTable(u"V:/New") != 0, keep);
    }
    EXPECT_EQ(QrdbGetRecordCount(QrdbOpenTable(u"V:/New")), 100000);
}

TEST_F(StepTest, AnEmptyStepAndOneThatOnlyReadsLeaveTheFileAlone) {
    OpenTables();
    ASSERT_DONE(QrdbAppendRecord(m_pairs, MakePair(1, 2).data()));
    const std::string bytes = ReadHostFile(m_host);
    ASSERT_DONE(StoreBeginStep(u"V"));
    ASSERT_DONE(StoreCommitStep(u"V"));
    ASSERT_DONE(StoreBeginStep(u"V"));
    EXPECT_EQ(QrdbGetRecordCount(m_pairs), 1);
    (void)ReadContents(u"V");
    ASSERT_DONE(StoreCommitStep(u"V"));
    Unmount();
    EXPECT_TRUE(ReadHostFile(m_host) == bytes);
    Mount();
}

}  // namespace
}  // namespace cqsurvey
