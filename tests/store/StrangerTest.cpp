#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "store/StoreExtras.h"
#include "store/StoreTesting.h"

namespace cqsurvey {
namespace {

constexpr std::size_t kPage = 4096;

/// What any file, whoever wrote it, may be answered with.
const std::set<std::int32_t> kAnswers{
    error::kDamaged,       // mostly
    error::kNewerVersion,  // where the version stands
    error::kNoTable,       // a table's name is another now
    error::kNoFile,        // a file's name is another now
    error::kNoRecord,      // a record's number is another now
    error::kAccessDenied,  // the header says that this program may only read it
    error::kVolumeFull,    // the highest number was used
    error::kOutOfMemory,   // the header says so large a page
    error::kTableExists};

/// A small volume with something of everything, and files made from it by strangers.
class StrangerTest : public StoreTest {
 protected:
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

TEST_F(StrangerTest, TheVolumeItselfIsUsable) {
    EXPECT_TRUE(Use().empty()) << Details();
}

TEST_F(StrangerTest, WhatOtherToolsMayDoLeavesItUsable) {
    ExpectUsable("VACUUM");
    ExpectUsable("PRAGMA page_size=1024; VACUUM");
    ExpectUsable("PRAGMA page_size=65536; VACUUM");
    ExpectUsable("PRAGMA auto_vacuum=FULL; VACUUM");
    ExpectUsable("PRAGMA auto_vacuum=INCREMENTAL; VACUUM");
    ExpectUsable("ANALYZE");
    ExpectUsable("CREATE VIEW Mine AS SELECT printf('%d%d%d%d%d%d%d%d%d', 1,2,3,4,5,6,7,8,9) AS x");
    ExpectUsable("DROP VIEW Shown");
    ExpectUsable("PRAGMA journal_mode=WAL");
    ExpectUsable("PRAGMA journal_mode=WAL; UPDATE Pairs SET First = 9");
    ExpectUsable("UPDATE Things SET Real = 7");
    ExpectUsable("DELETE FROM Volume_Number");
    ExpectUsable("INSERT INTO Volume_Number VALUES('gone', 9e15)");
}

TEST_F(StrangerTest, AValueOutOfItsRangeIsDamageWithTableRecordAndField) {
    ExpectDamage("UPDATE Things SET Small = 65536 WHERE Record = 7",
                 "table Things: record 7: field Small");
    ExpectDamage("UPDATE Things SET Small = -1 WHERE Record = 7",
                 "table Things: record 7: field Small");
    ExpectDamage("UPDATE Things SET Whole = 3000000000 WHERE Record = 40",
                 "table Things: record 40: field Whole");
    ExpectDamage("UPDATE Things SET Big = 1 << 40", "table Things: record 1: field Big");
    ExpectDamage("UPDATE Things SET Real = x'00'", "table Things: record 1: field Real");
    ExpectDamage("UPDATE Things SET Real = 'half'", "table Things: record 1: field Real");
    ExpectDamage("UPDATE Things SET Name = printf('%.*c', 21, 'x')",
                 "table Things: record 1: field Name");
    ExpectDamage("UPDATE Pairs SET First = -1 WHERE Record = 5", "table Pairs: record 5");
}

TEST_F(StrangerTest, ARecordNumberThatIsNoneIsDamage) {
    ExpectDamage("UPDATE Pairs SET Record = 0 WHERE Record = 5", "table Pairs: record number 0");
    ExpectDamage("UPDATE Pairs SET Record = -3 WHERE Record = 5", "table Pairs: record number -3");
    ExpectDamage("UPDATE Pairs SET Record = 1 << 40 WHERE Record = 5",
                 "table Pairs: record number 1099511627776");
    ExpectDamage("UPDATE Pairs SET Record = 4294967296 WHERE Record = 5",
                 "table Pairs: record number 4294967296");
    ExpectDamage("UPDATE Volume_Number SET Highest = -1", "table Pairs: highest number -1");
    ExpectDamage("UPDATE Volume_Number SET Highest = 1 << 40", "table Pairs: highest number");
}

TEST_F(StrangerTest, AFileThatIsNoneIsDamage) {
    ExpectDamage("UPDATE Volume_File SET Length = 1 << 40", "file 1 has 1099511627776 bytes");
    ExpectDamage("UPDATE Volume_File SET Length = -1 WHERE File = 2", "file 2 has -1 bytes");
    ExpectDamage("UPDATE Volume_File SET Length = 2147483647", "file 1 of 2147483647 bytes has 3");
    ExpectDamage("DELETE FROM Volume_Block", "file 1 of 9000 bytes has 0 blocks");
    ExpectDamage("UPDATE Volume_File SET Attributes = 65535", "file 1 has the attributes 65535");
    ExpectDamage("UPDATE Volume_File SET Attributes = -1", "file 1 has the attributes -1");
    ExpectDamage("UPDATE Volume_File SET File = 0 WHERE File = 1", "file 0 ");
    ExpectDamage("UPDATE Volume_File SET File = 1 << 40 WHERE File = 2", "file 1099511627776 ");
    ExpectDamage("UPDATE Volume_Block SET Bytes = x'00' WHERE (Position & 4294967295) = 1",
                 "file 1: block 1");
}

TEST_F(StrangerTest, AMemoThatIsNoneIsDamage) {
    ExpectDamage("DELETE FROM Volume_Memo WHERE Reference = 3", "no memo with the reference 3");
    ExpectDamage("UPDATE Volume_Memo SET Reference = 0 WHERE Reference = 3", "memo");
    ExpectDamage("UPDATE Volume_Memo SET Reference = 1 << 40 WHERE Reference = 3", "memo");
    ExpectDamage("UPDATE Things SET Remark = 4294967295 WHERE Record = 7",
                 "no memo with the reference 4294967295");
}

TEST_F(StrangerTest, AMemoThatTwoRecordsNameGoesWithTheFirstThatIsDeleted) {
    RunSql(m_host, "UPDATE Things SET Remark = 1 WHERE Record = 2");
    Mount();
    m_things = OpenTable<ThingLayout>(u"V");
    ASSERT_DONE(QrdbGoToRecord(m_things, 1));
    ASSERT_DONE(QrdbDeleteRecord(m_things));
    ASSERT_DONE(QrdbGoToRecord(m_things, 2));
    std::array<char16_t, 8> text{};
    EXPECT_FAILS(0, error::kDamaged, QrdbReadMemo(m_things, text.data(), sizeof(text), 1));
    EXPECT_DONE(QrdbDeleteRecord(m_things));
    Remount();
    EXPECT_EQ(ReadContents(u"V").things.size(), 38U);
}

TEST_F(StrangerTest, ASchemaThatIsNotTheVolumesIsDamage) {
    ExpectDamage("DROP TABLE Volume_Memo", "table Volume_Memo is missing");
    ExpectDamage("DROP TABLE Volume_File", "Volume_File");
    ExpectDamage("DROP TABLE Volume_Number", "table Volume_Number is missing");
    ExpectDamage("CREATE TABLE Mine(a, b)", "Mine");
    ExpectDamage("CREATE TABLE \"my table\"(a)", "my table");
    ExpectDamage("CREATE INDEX Fast ON Pairs(First)", "foreign index \"Fast\"");
    ExpectDamage("CREATE TRIGGER T AFTER INSERT ON Pairs BEGIN DELETE FROM Things; END",
                 "foreign trigger \"T\"");
    ExpectDamage("CREATE TABLE s(a INTEGER PRIMARY KEY AUTOINCREMENT)", "table \"s\"");
    ExpectDamage("ALTER TABLE Pairs ADD COLUMN Third INTEGER", "Pairs");
    ExpectDamage("ALTER TABLE Pairs RENAME COLUMN First TO \"1st\"", "Pairs");
    ExpectDamage("ALTER TABLE Volume_Memo RENAME TO Volume_Memos", "Volume_Memo");
    ExpectDamage("CREATE VIRTUAL TABLE Found USING fts5(x)", "Found");
}

TEST_F(StrangerTest, ASchemaThatOnlyLooksLikeTheVolumesIsDamage) {
    const auto change = [&](const std::string& sql, const std::string& where) {
        ExpectDamage("PRAGMA writable_schema=ON; " + sql, where);
    };
    change("UPDATE sqlite_schema SET type = 'view' WHERE name = 'Pairs'", "Pairs");
    change("INSERT INTO sqlite_schema VALUES('view', 'X', 'X', 0, 'CREATE TABLE X(a)')", "X");
    change(
        "UPDATE sqlite_schema SET rootpage = (SELECT rootpage FROM sqlite_schema WHERE name = "
        "'Things') WHERE name = 'Pairs'",
        "begins at page");
    change("UPDATE sqlite_schema SET rootpage = 1 WHERE name = 'Pairs'", "Pairs");
    change("UPDATE sqlite_schema SET rootpage = 0 WHERE name = 'Pairs'", "volume.job");
    change("UPDATE sqlite_schema SET rootpage = 1000000 WHERE name = 'Pairs'", "volume.job");
    change("UPDATE sqlite_schema SET tbl_name = 'Things' WHERE name = 'Pairs'", "Pairs");
    change(
        "UPDATE sqlite_schema SET sql = replace(sql, 'Second', 'Third') || ' ' WHERE name = "
        "'Pairs'",
        "Pairs");
    change("UPDATE sqlite_schema SET sql = NULL WHERE name = 'Pairs'", "volume.job");
    change("UPDATE sqlite_schema SET sql = 'CREATE TABLE Pairs AS SELECT 1' WHERE name = 'Pairs'",
           "volume.job");
    change("DELETE FROM sqlite_schema WHERE type = 'index'", "volume.job");
    change("INSERT INTO sqlite_schema SELECT * FROM sqlite_schema WHERE name = 'Pairs'",
           "volume.job");
    change(
        "CREATE INDEX Fast ON Pairs(First); UPDATE sqlite_schema SET name = 'sqlite_fast', sql = "
        "replace(sql, 'Fast', 'sqlite_fast') WHERE name = 'Fast'",
        "sqlite_fast");
}

TEST_F(StrangerTest, TheTextsMustBeKeptAsUtf16) {
    std::filesystem::remove(m_host);
    WriteHostFile(m_host, "");
    RunSql(m_host,
           "PRAGMA encoding='UTF-8'; PRAGMA application_id=0x43715376; PRAGMA user_version=1;"
           "CREATE TABLE t(a)");
    EXPECT_FAILS(0, error::kDamaged, QrfsMount(m_path, u"V"));
    EXPECT_NE(std::string(StoreErrorDetail()).find("UTF-16"), std::string::npos);
}

TEST_F(StrangerTest, AnyByteChangedIsAnsweredWithACode) {
    Random random(1);
    std::map<std::string, int> answers;
    for (int i = 0; i < 2500 && !HasFailure(); ++i) {
        SCOPED_TRACE("mutation " + std::to_string(i));
        std::string bytes = m_bytes;
        for (std::uint32_t changes = 1 + random.Below(3); changes != 0; --changes) {
            // Mostly where structure is: the header, the schema, the heads of the pages.
            const std::uint32_t at =
                random.OneIn(4)   ? random.Below(100)
                : random.OneIn(2) ? random.Below(static_cast<std::uint32_t>(bytes.size() / kPage)) *
                                            static_cast<std::uint32_t>(kPage) +
                                        random.Below(60)
                                  : random.Below(static_cast<std::uint32_t>(bytes.size()));
            bytes[at] = random.OneIn(3)   ? static_cast<char>(bytes[at] ^ (1 << random.Below(8)))
                        : random.OneIn(2) ? '\xFF'
                                          : static_cast<char>(random.Number());
        }
        Put(bytes);
        for (const std::int32_t code : Use()) {
            ++answers[Hex(code)];
        }
    }
    EXPECT_GT(answers["0x30000007"], 300);
}

TEST_F(StrangerTest, AnyPagesExchangedCopiedOrClearedAreAnsweredWithACode) {
    Random random(2);
    const auto pages = static_cast<std::uint32_t>(m_bytes.size() / kPage);
    for (int i = 0; i < 600 && !HasFailure(); ++i) {
        SCOPED_TRACE("mutation " + std::to_string(i));
        std::string bytes = m_bytes;
        const std::size_t one = random.Below(pages) * kPage;
        const std::size_t two = random.Below(pages) * kPage;
        switch (random.Below(4)) {
            case 0:
                bytes.replace(one, kPage, m_bytes, two, kPage);
                bytes.replace(two, kPage, m_bytes, one, kPage);
                break;
            case 1:
                bytes.replace(one, kPage, m_bytes, two, kPage);
                break;
            case 2:
                bytes.replace(one, kPage, kPage, '\0');
                break;
            default:
                for (std::size_t at = one; at < one + kPage; ++at) {
                    bytes[at] = static_cast<char>(random.Number());
                }
                break;
        }
        Put(bytes);
        (void)Use();
    }
}

TEST_F(StrangerTest, AFileCutAnywhereIsDamage) {
    Random random(3);
    for (int i = 0; i < 150 && !HasFailure(); ++i) {
        const std::size_t size = random.OneIn(2)
                                     ? random.Below(static_cast<std::uint32_t>(m_bytes.size()))
                                     : m_bytes.size() - 1 - random.Below(3000);
        SCOPED_TRACE(size);
        Put(m_bytes.substr(0, size));
        EXPECT_FAILS(0, error::kDamaged, QrfsMount(m_path, u"V"));
    }
    // What a careless copy adds at the end is nobody's.
    Put(m_bytes + std::string(5000, '\0'));
    EXPECT_TRUE(Use().empty()) << Details();
}

TEST_F(StrangerTest, AJournalOfAnotherFileOrOfNoneIsSurvived) {
    Random random(4);
    for (int i = 0; i < 100 && !HasFailure(); ++i) {
        Put(m_bytes);
        std::string journal(random.Below(20000), '\0');
        for (char& byte : journal) {
            byte = static_cast<char>(random.Number());
        }
        if (random.OneIn(2)) {
            journal.replace(0, 8, "\xd9\xd5\x05\xf9\x20\xa1\x63\xd7", 8);
        }
        WriteHostFile(m_host + "-journal", journal);
        (void)Use();
    }
}

/// Pages of a table that name each other: followed to its end, it would take for ever.
class EndlessTest : public StrangerTest {
 protected:
    static void PutNumber(std::string& bytes, std::size_t at, std::uint32_t number, int size) {
        for (int i = 0; i < size; ++i) {
            bytes[at + static_cast<std::size_t>(i)] =
                static_cast<char>(number >> (8 * (size - 1 - i)));
        }
    }

    /// Puts an inner page of as many branches as fit, all to the same page, over `page`.
    static void Branch(std::string& bytes, std::size_t page, std::uint32_t child) {
        constexpr std::uint32_t kCells = 1500;
        const std::size_t at = (page - 1) * kPage;
        const std::size_t header = page == 1 ? 100 : 0;
        bytes.replace(at + header, kPage - header, kPage - header, '\0');
        bytes[at + header] = 5;
        PutNumber(bytes, at + header + 3, kCells, 2);
        PutNumber(bytes, at + header + 5, kPage - 5, 2);
        PutNumber(bytes, at + header + 8, child, 4);
        for (std::uint32_t cell = 0; cell < kCells; ++cell) {
            PutNumber(bytes, at + header + 12 + 2 * cell, kPage - 5, 2);
        }
        PutNumber(bytes, at + kPage - 5, child, 4);
        bytes[at + kPage - 1] = 1;
    }

    /// Moves the content of a root behind six levels of such pages.
    std::string Endless(std::size_t root) {
        std::string bytes = m_bytes;
        constexpr std::uint32_t kLevels = 6;
        const auto pages = static_cast<std::uint32_t>(bytes.size() / kPage);
        std::string content = bytes.substr((root - 1) * kPage, kPage);
        if (root == 1) {
            return {};
        }
        bytes.append(kLevels * kPage, '\0');
        bytes += content;
        std::uint32_t child = pages + kLevels + 1;
        for (std::uint32_t level = 0; level < kLevels; ++level) {
            Branch(bytes, pages + kLevels - level, child);
            child = pages + kLevels - level;
        }
        Branch(bytes, root, child);
        PutNumber(bytes, 28, pages + kLevels + 1, 4);
        return bytes;
    }

    std::size_t RootOf(const std::string& table) {
        sqlite3* connection = nullptr;
        sqlite3_open(m_host.c_str(), &connection);
        sqlite3_stmt* root = nullptr;
        sqlite3_prepare_v2(connection, "SELECT rootpage FROM sqlite_schema WHERE name = ?", -1,
                           &root, nullptr);
        sqlite3_bind_text(root, 1, table.c_str(), -1, SQLITE_STATIC);
        Require(sqlite3_step(root) == SQLITE_ROW);
        const auto page = static_cast<std::size_t>(sqlite3_column_int64(root, 0));
        sqlite3_finalize(root);
        sqlite3_close(connection);
        return page;
    }
};

TEST_F(EndlessTest, ATableWithoutEndIsDamageAndNotAHang) {
    Put(Endless(RootOf("Things")));
    Mount();
    m_things = OpenTable<ThingLayout>(u"V");
    EXPECT_FAILS(-1, error::kDamaged, QrdbGetRecordCount(m_things));
    EXPECT_FAILS(0, error::kDamaged, QrdbMoveFirst(m_things));
    EXPECT_FAILS(0, error::kDamaged, QrdbAppendRecord(m_things, MakeThing(1).data()));
    m_pairs = OpenTable<PairLayout>(u"V");
    EXPECT_EQ(QrdbGetRecordCount(m_pairs), 699);
}

TEST_F(EndlessTest, BlocksWithoutEndAreDamageAndNotAHang) {
    Put(Endless(RootOf("Volume_Block")));
    Mount();
    EXPECT_FAILS(-1, error::kDamaged, QrfsOpenFile(u"V:/One", 3));
    EXPECT_FAILS(0, error::kDamaged, QrfsCopyFile(u"V:/One", u"V:/Three"));
    Registry::SetLastError(error::kNone);
    if (QrfsDeleteFile(u"V:/One") == 0) {
        EXPECT_EQ(Hex(QrfsGetLastError()), Hex(error::kDamaged));
    }
}

TEST_F(EndlessTest, MemosWithoutEndAreDamageAndNotAHang) {
    Put(Endless(RootOf("Volume_Memo")));
    Mount();
    m_things = OpenTable<ThingLayout>(u"V");
    std::array<char16_t, 8> text{};
    EXPECT_FAILS(0, error::kDamaged, QrdbReadMemo(m_things, text.data(), sizeof(text), 1));
}

TEST_F(EndlessTest, FilesWithoutEndAreDamageAndNotAHang) {
    Put(Endless(RootOf("Volume_File")));
    EXPECT_FAILS(0, error::kDamaged, QrfsMount(m_path, u"V"));
}

TEST_F(EndlessTest, ASchemaWithoutEndIsDamageAndNotAHang) {
    std::string bytes = m_bytes;
    const auto pages = static_cast<std::uint32_t>(bytes.size() / kPage);
    // A leaf with one row that any schema may have, named by all branches of six levels.
    constexpr std::uint32_t kLevels = 6;
    RunSql(m_host, "DROP VIEW Shown");
    bytes.append(kLevels * kPage, '\0');
    std::string leaf(kPage, '\0');
    const std::string row(
        "\x10\x01\x06\x23\x15\x15\x08\x00"
        "v\0i\0e\0w\0A\0A\0",
        20);
    leaf[0] = 13;
    PutNumber(leaf, 3, 1, 2);
    PutNumber(leaf, 5, static_cast<std::uint32_t>(kPage - row.size()), 2);
    PutNumber(leaf, 8, static_cast<std::uint32_t>(kPage - row.size()), 2);
    leaf.replace(kPage - row.size(), row.size(), row);
    bytes += leaf;
    std::uint32_t child = pages + kLevels + 1;
    for (std::uint32_t level = 0; level < kLevels; ++level) {
        Branch(bytes, pages + kLevels - level, child);
        child = pages + kLevels - level;
    }
    Branch(bytes, 1, child);
    PutNumber(bytes, 28, pages + kLevels + 1, 4);
    Put(bytes);
    EXPECT_FAILS(0, error::kDamaged, QrfsMount(m_path, u"V"));
}

}  // namespace
}  // namespace cqsurvey
