#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <map>
#include <string>

#include "store/StrangerFixture.h"

namespace cqsurvey {
namespace {

using StrangerTest = StrangerFixture;

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

}  // namespace
}  // namespace cqsurvey
