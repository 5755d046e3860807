#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <set>
#include <string>
#include <type_traits>

#include "store/StoreExtras.h"
#include "store/StoreTesting.h"

namespace cqsurvey {

/// A small volume with something of everything, and files made from it by strangers.
class StrangerFixture : public StoreTest {
 protected:
    static constexpr std::size_t kPage = 4096;

    /// What any file, whoever wrote it, may be answered with.
    static inline const std::set<std::int32_t> kAnswers{
        error::kDamaged,       // mostly
        error::kNewerVersion,  // where the version stands
        error::kNoTable,       // a table's name is another now
        error::kNoFile,        // a file's name is another now
        error::kNoRecord,      // a record's number is another now
        error::kAccessDenied,  // the header says that this program may only read it
        error::kVolumeFull,    // the highest number was used
        error::kOutOfMemory,   // the header says so large a page
        error::kTableExists};

    void SetUp() override {
        StoreTest::SetUp();
        m_things = OpenTable<ThingLayout>(u"V");
        m_pairs = OpenTable<PairLayout>(u"V");
        ASSERT_DONE(StoreBeginStep(u"V"));
        for (std::uint32_t i = 1; i <= 40; ++i) {
            ThingLayout::Bytes record = MakeThing(i);
            ASSERT_DONE(QrdbWriteMemo(m_things, CString(i, u'm'),
                                      record.data() + ThingLayout::Offset<"Remark">()));
            ASSERT_DONE(QrdbAppendRecord(m_things, record.data()));
        }
        for (std::uint32_t i = 1; i <= 700; ++i) {
            ASSERT_DONE(QrdbAppendRecord(m_pairs, MakePair(i, i).data()));
        }
        ASSERT_DONE(QrdbMoveLast(m_pairs));
        ASSERT_DONE(QrdbDeleteRecord(m_pairs));
        ASSERT_DONE(PutFile(u"V:/One", std::string(9000, '1')));
        ASSERT_DONE(PutFile(u"V:/Two.ini", "[2]"));
        ASSERT_DONE(StoreCreateView(u"V:/Shown", "SELECT * FROM Pairs"));
        ASSERT_DONE(StoreCommitStep(u"V"));
        Unmount();
        // Whoever means harm can write a file of the version that has no sums.
        MakeFirstVersion(m_host);
        m_bytes = ReadHostFile(m_host);
        ASSERT_EQ(m_bytes.size() % kPage, 0U);
    }

    /// Puts a file in the volume's place.
    void Put(const std::string& bytes) {
        std::filesystem::remove(m_host + "-journal");
        WriteHostFile(m_host, bytes);
    }

    void Note(bool done) {
        if (!done && QrfsGetLastError() != error::kNone) {
            m_codes.insert(QrfsGetLastError());
            m_details.insert(StoreErrorDetail());
            EXPECT_TRUE(kAnswers.contains(QrfsGetLastError())) << LastError();
        }
    }

    /// Uses everything that can be mounted, and gives the codes of what could not be done.
    std::set<std::int32_t> Use() {
        alarm(300);  // a hang must end the test
        m_codes.clear();
        m_details.clear();
        Registry::SetLastError(error::kNone);
        const bool mounted = QrfsMount(m_path, u"V") != 0;
        Note(mounted);
        if (mounted) {
            UseTable<ThingLayout>(MakeThing(5));
            UseTable<PairLayout>(MakePair(5, 5));
            for (const CString& name : {kFileNames[0], kFileNames[1]}) {
                UseFile(u"V:/" + name);
            }
            Note(StoreBeginStep(u"V") != 0);
            UseTable<PairLayout>(MakePair(6, 6));
            UseFile(u"V:/" + kFileNames[2]);
            Note(StoreCommitStep(u"V") != 0);
            EXPECT_DONE(QrfsUnmount(u"V"));
        }
        alarm(0);
        return m_codes;
    }

    template <class Layout>
    void UseTable(const typename Layout::Bytes& fresh) {
        const std::uint32_t table = OpenTable<Layout>(u"V");
        Note(table != 0);
        if (table == 0) {
            return;
        }
        Note(StoreCheckTable(table, Layout::kFieldCount, Layout::kFieldDefs.data()) != 0);
        if (QrfsGetLastError() == error::kDamaged) {
            QrdbCloseTable(table);
            return;  // as the classes above do: its records may have any width
        }
        Note(QrdbGetRecordCount(table) >= 0);
        typename Layout::Bytes record{};
        int steps = 0;
        for (int found = QrdbMoveFirst(table); found != 0 && steps < 5000; ++steps) {
            Note(QrdbReadRecord(table, record.data()) != 0);
            if constexpr (std::is_same_v<Layout, ThingLayout>) {
                std::array<char16_t, 256> text{};
                Note(QrdbReadMemo(table, text.data(), sizeof(text),
                                  ThingLayout::Get<"Remark">(record.data())) != 0);
            }
            found = QrdbMoveNext(table);
            Note(found != 0);
        }
        EXPECT_LT(steps, 5000);
        Note(QrdbMoveLast(table) != 0 && QrdbWriteRecord(table, fresh.data()) != 0 &&
             QrdbDeleteRecord(table) != 0);
        Note(QrdbAppendRecord(table, fresh.data()) != 0);
        QrdbCloseTable(table);
    }

    void UseFile(const CString& path) {
        if (QrfsGetFileAttributes(path) == 0xFFFF) {
            Note(QrfsCreateFile(path, 0) != 0);
            return;
        }
        const std::int32_t file = QrfsOpenFile(path, 3);
        Note(file != -1);
        std::string bytes(10000, '\0');
        std::uint32_t count = 0;
        if (file != -1) {
            Note(QrfsRead(file, bytes.data(), 10000, count) != 0);
            Note(QrfsWrite(file, bytes.data(), 5000, count) != 0);
            Note(QrfsSetLength(file, 4500) != 0);
            QrfsCloseFile(file);
            Note(QrfsDeleteFile(path) != 0);
        }
    }

    std::string Details() const {
        std::string text;
        for (const std::string& detail : m_details) {
            text += detail + "\n";
        }
        return text;
    }

    /// After this SQL of another tool the file is answered so, with a text that tells where.
    void ExpectDamage(const std::string& sql, const std::string& where) {
        SCOPED_TRACE(sql);
        Put(m_bytes);
        RunSql(m_host, sql);
        const std::set<std::int32_t> codes = Use();
        EXPECT_TRUE(codes.contains(error::kDamaged));
        EXPECT_NE(Details().find(where), std::string::npos) << Details();
    }

    void ExpectUsable(const std::string& sql) {
        SCOPED_TRACE(sql);
        Put(m_bytes);
        RunSql(m_host, sql);
        EXPECT_TRUE(Use().empty()) << Details();
        EXPECT_EQ(NamesIn(m_dir.Utf8("")), std::set<std::string>{"volume.job"});
    }

    std::string m_bytes;
    std::uint32_t m_things = 0;
    std::uint32_t m_pairs = 0;
    std::set<std::int32_t> m_codes;
    std::set<std::string> m_details;
};

}  // namespace cqsurvey
