#include "store/salvage/VolumeSalvage.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "store/salvage/SalvageTesting.h"

namespace cqsurvey {
namespace {

constexpr std::size_t kThings = 0;
constexpr std::size_t kPairs = 1;
constexpr std::size_t kNames = 2;

using VolumeSalvageTest = SalvageTest;

std::set<std::uint32_t> Numbers(const std::map<std::uint32_t, std::string>& rows) {
    std::set<std::uint32_t> numbers;
    for (const auto& [number, bytes] : rows) {
        numbers.insert(number);
    }
    return numbers;
}

std::set<std::uint32_t> UpTo(std::uint32_t last) {
    std::set<std::uint32_t> numbers;
    for (std::uint32_t i = 1; i <= last; ++i) {
        numbers.insert(i);
    }
    return numbers;
}

TEST_F(VolumeSalvageTest, DeletedRowsDoNotComeBackWhenAPageIsLost) {
    Fill(2000);
    // Enough free pages that one page cannot list them.
    ASSERT_DONE(PutFile(u"V:/Two.ini", std::string(9 << 20, 'z')));
    Unmount();
    RunSql(m_host,
           "PRAGMA secure_delete=OFF; DELETE FROM Pairs WHERE Record > 1000;"
           "DELETE FROM Volume_Block WHERE Position >> 32 = 2; DELETE FROM Volume_File WHERE File "
           "= 2");
    const std::uint32_t root = ListRoots(m_host).at("Pairs");
    ChangePage(m_host, root, [](std::string& page) { page.assign(page.size(), '\0'); });
    const Salvaged salvaged = Save();
    EXPECT_EQ(Numbers(RowsOf(salvaged, kPairs)), UpTo(1000));
    EXPECT_EQ(Numbers(RowsOf(salvaged, kThings)), UpTo(2000));
    EXPECT_EQ(salvaged.files.size(), 1U);
}

TEST_F(VolumeSalvageTest, AWrongListOfFreePagesCostsNoRow) {
    Fill(400);
    ASSERT_DONE(PutFile(u"V:/Two.ini", std::string(100000, 'z')));
    ASSERT_DONE(QrfsDeleteFile(u"V:/Two.ini"));
    Unmount();
    const std::string whole = ReadHostFile(m_host);
    const std::uint32_t trunk = GetNumber(whole, 32);
    ASSERT_GT(trunk, 1U);
    const auto pages = static_cast<std::uint32_t>(whole.size() / kPage);
    struct Wrong {
        std::size_t at;
        std::uint32_t number;
    };
    for (const Wrong wrong :
         {Wrong{0, trunk}, Wrong{0, 1}, Wrong{0, pages + 9}, Wrong{4, 0xFFFFFFFF}, Wrong{4, 0},
          Wrong{8, 1}, Wrong{8, pages + 9}, Wrong{8, 2}, Wrong{12, 3}}) {
        SCOPED_TRACE(testing::Message() << wrong.number << " at " << wrong.at);
        WriteHostFile(m_host, whole);
        ChangePage(m_host, trunk,
                   [&](std::string& page) { PutNumber(page, wrong.at, wrong.number); });
        const Salvaged salvaged = Save();
        for (const std::size_t table : {kThings, kPairs, kNames}) {
            EXPECT_EQ(Numbers(RowsOf(salvaged, table)), UpTo(400));
        }
        EXPECT_EQ(salvaged.memos.size(), 400U);
        EXPECT_TRUE(salvaged.losses.empty());
    }
    WriteHostFile(m_host, whole);
    ChangePage(m_host, trunk, [](std::string& page) { page.assign(page.size(), '\0'); });
    EXPECT_EQ(Numbers(RowsOf(Save(), kPairs)), UpTo(400));
}

TEST_F(VolumeSalvageTest, TablesOfTheSameColumnsAreToldApartByWhoNamesTheirRows) {
    Fill(1200);
    // The things name memos 1 to 600, and only the names above that are left.
    ASSERT_DONE(StoreBeginStep(u"V"));
    const std::uint32_t things = OpenTable<ThingLayout>(u"V");
    const std::uint32_t names = OpenTable<NameLayout>(u"V");
    for (std::uint32_t i = 1; i <= 600; ++i) {
        ASSERT_DONE(QrdbGoToRecord(things, 600 + i));
        ASSERT_DONE(QrdbDeleteRecord(things));
        ASSERT_DONE(QrdbGoToRecord(names, i));
        ASSERT_DONE(QrdbDeleteRecord(names));
    }
    ASSERT_DONE(StoreCommitStep(u"V"));
    Unmount();
    const auto roots = ListRoots(m_host);
    const Salvaged whole = Save();
    for (const char* table : {"Names", "Volume_Memo"}) {
        ChangePage(m_host, roots.at(table),
                   [](std::string& page) { page.assign(page.size(), '\0'); });
    }
    const Salvaged salvaged = Save();
    EXPECT_EQ(RowsOf(salvaged, kNames), RowsOf(whole, kNames));
    EXPECT_EQ(RowsOf(salvaged, kNames).size(), 600U);
    EXPECT_EQ(salvaged.memos, whole.memos);
    EXPECT_EQ(salvaged.memos.size(), 600U);
}

TEST_F(VolumeSalvageTest, APageInThePlaceOfOneOfTheSameColumnsIsTold) {
    Fill(5);
    Unmount();
    const auto roots = ListRoots(m_host);
    const std::string memos =
        ReadHostFile(m_host).substr((roots.at("Volume_Memo") - 1) * kPage, kPage);
    ChangePage(m_host, roots.at("Names"), [&](std::string& page) { page = memos; });
    const Salvaged salvaged = Save();
    EXPECT_EQ(salvaged.memos.size(), 5U);
    ASSERT_EQ(salvaged.losses.size(), 2U);
    EXPECT_EQ(salvaged.losses[0].table, "Names");
    EXPECT_EQ(salvaged.losses[0].first, 1U);
    EXPECT_EQ(salvaged.losses[0].last, 0xFFFFFFFFU);
    EXPECT_NE(salvaged.losses[1].text.find("hold the same"), std::string::npos);
}

TEST_F(VolumeSalvageTest, RowsOfAnotherToolsTablesAreNotTakenForOurs) {
    Fill(2000);
    Unmount();
    RunSql(m_host,
           "CREATE TABLE Foreign_Pairs(Record INTEGER PRIMARY KEY, a INTEGER, b INTEGER);"
           "INSERT INTO Foreign_Pairs SELECT Record + 5000, First, Second FROM Pairs;"
           "CREATE TABLE \"my notes\"(Record INTEGER PRIMARY KEY, a INTEGER, b INTEGER);"
           "INSERT INTO \"my notes\" SELECT Record + 9000, First, Second FROM Pairs;"
           "CREATE INDEX By_First ON Pairs(First)");
    EXPECT_EQ(Numbers(RowsOf(Save(), kPairs)), UpTo(2000));
    const auto roots = ListRoots(m_host);
    const std::string whole = ReadHostFile(m_host);
    for (const char* lost : {"Pairs", "Foreign_Pairs", "my notes"}) {
        SCOPED_TRACE(lost);
        WriteHostFile(m_host, whole);
        ChangePage(m_host, roots.at(lost),
                   [](std::string& page) { page.assign(page.size(), '\0'); });
        const Salvaged salvaged = Save();
        EXPECT_EQ(Numbers(RowsOf(salvaged, kPairs)), UpTo(2000));
        EXPECT_EQ(Numbers(RowsOf(salvaged, kThings)), UpTo(2000));
    }
}

TEST_F(VolumeSalvageTest, NoBitOfTheFirstPageCostsARow) {
    constexpr std::uint32_t kSeed = 40;
    SCOPED_TRACE("seed " + std::to_string(kSeed));
    Random random(kSeed);
    Fill(150);
    Unmount();
    const std::string whole = ReadHostFile(m_host);
    const Salvaged all = Save();
    const auto expectAll = [&](std::size_t bit) {
        SCOPED_TRACE(testing::Message() << "byte " << bit / 8 << " bit " << bit % 8);
        std::string bytes = whole;
        bytes[bit / 8] ^= static_cast<char>(1U << (bit % 8));
        WriteHostFile(m_host, bytes);
        const Salvaged salvaged = Save();
        for (const std::size_t table : {kThings, kPairs, kNames}) {
            EXPECT_EQ(RowsOf(salvaged, table), RowsOf(all, table)) << table;
        }
        EXPECT_EQ(salvaged.memos, all.memos);
        EXPECT_EQ(salvaged.files.size(), 1U);
    };
    for (std::size_t bit = 0; bit < 100 * 8; bit += 1 + random.Below(9)) {
        expectAll(bit);
    }
    for (std::size_t byte = 100; byte < kPage; byte += 1 + random.Below(40)) {
        expectAll(8 * byte + random.Below(8));
    }
}

TEST_F(VolumeSalvageTest, HighestNumbersAreReadFromManyPagesAndOnlyWhereTheyAreNumbers) {
    Fill(10);
    Unmount();
    RunSql(m_host,
           "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 3000)"
           "INSERT INTO Volume_Number SELECT 'Extra_' || i, i FROM n;"
           "INSERT INTO Volume_Number VALUES('Zero', 0), ('Below', -5), ('Above', 4294967296)");
    const Salvaged salvaged = Save();
    EXPECT_FALSE(salvaged.numbersLost);
    for (std::uint32_t i = 1; i <= 3000; ++i) {
        const std::string name = "Extra_" + std::to_string(i);
        ASSERT_TRUE(salvaged.highest.contains(name)) << name;
        EXPECT_EQ(salvaged.highest.at(name), i);
    }
    for (const char* none : {"Zero", "Below", "Above"}) {
        EXPECT_FALSE(salvaged.highest.contains(none)) << none;
    }
    // A child of the first page that is no page.
    const std::uint32_t root = ListRoots(m_host).at("Volume_Number");
    ChangePage(m_host, root, [](std::string& page) { PutNumber(page, 8, 0xFFFFFFFF); });
    const Salvaged cut = Save();
    EXPECT_TRUE(cut.numbersLost);
    EXPECT_GT(cut.highest.size(), 100U);
}

TEST_F(VolumeSalvageTest, OfALongTextWithABrokenChainTheBeginningIsSaved) {
    const CString text = CString(3000, u'a') + CString(3000, u'b') + CString(3000, u'c');
    const std::uint32_t things = OpenTable<ThingLayout>(u"V");
    ThingLayout::Bytes record = MakeThing(1);
    ASSERT_DONE(QrdbWriteMemo(things, text, record.data() + ThingLayout::Offset<"Remark">()));
    ASSERT_DONE(QrdbAppendRecord(things, record.data()));
    Unmount();
    const std::string whole = ReadHostFile(m_host);
    const auto pages = static_cast<std::uint32_t>(whole.size() / kPage);
    const std::uint32_t leaf = ListRoots(m_host).at("Volume_Memo");
    // The cell's last four bytes, before the sum, name the first page of the chain.
    const std::size_t last = leaf * kPage - kPageSumBytes - 4;
    std::vector<std::size_t> links{last};
    while (GetNumber(whole, links.back()) != 0) {
        links.push_back((GetNumber(whole, links.back()) - 1) * kPage);
    }
    ASSERT_GE(links.size(), 4U);
    for (std::size_t link = 0; link < links.size(); ++link) {
        for (const std::uint32_t next :
             {0U, 1U, 2U, pages + 5, GetNumber(whole, last), 0xFFFFFFFFU}) {
            SCOPED_TRACE(testing::Message() << "link " << link << " to " << next);
            std::string bytes = whole;
            PutNumber(bytes, links[link], next);
            WriteHostFile(m_host, bytes);
            const Salvaged salvaged = Save();
            ASSERT_EQ(Numbers(RowsOf(salvaged, kThings)), UpTo(1));
            if (!salvaged.memos.contains(1)) {
                continue;
            }
            const CString& saved = salvaged.memos.at(1);
            EXPECT_TRUE(text.starts_with(saved)) << saved.size();
            EXPECT_EQ(salvaged.cutMemos.contains(1), saved.size() < text.size());
        }
    }
    // A size that no memo has.
    std::string bytes = whole;
    const std::size_t cell =
        (leaf - 1) * kPage + ReadBig<2>(std::as_bytes(std::span(whole)), (leaf - 1) * kPage + 8);
    for (const char size : {'\x83', '\xFF'}) {
        bytes[cell] = size;
        WriteHostFile(m_host, bytes);
        EXPECT_EQ(Numbers(RowsOf(Save(), kThings)), UpTo(1));
    }
}

TEST_F(VolumeSalvageTest, PagesThatNameEachOtherInACircleEnd) {
    Fill(1000);
    Unmount();
    const std::string whole = ReadHostFile(m_host);
    const auto roots = ListRoots(m_host);
    for (const char* table : {"Things", "Volume_Memo", "Volume_Block", "Pairs"}) {
        const std::uint32_t root = roots.at(table);
        if (whole[(root - 1) * kPage] != '\x05') {
            continue;
        }
        for (const std::uint32_t child : {root, roots.at("Names"), 1U, 0U, 0xFFFFFFFFU}) {
            SCOPED_TRACE(testing::Message() << table << " to " << child);
            WriteHostFile(m_host, whole);
            ChangePage(m_host, root, [&](std::string& page) { PutNumber(page, 8, child); });
            const Salvaged salvaged = Save();
            // The leaf that nothing leads to any more is found.
            EXPECT_EQ(Numbers(RowsOf(salvaged, kThings)), UpTo(1000));
            EXPECT_EQ(Numbers(RowsOf(salvaged, kPairs)), UpTo(1000));
            EXPECT_EQ(Numbers(RowsOf(salvaged, kNames)), UpTo(1000));
            EXPECT_EQ(salvaged.memos.size(), 1000U);
        }
    }
}

/// Values that no statement would let into the tables.
class MisfitTest : public SalvageTest {
 protected:
    void Run(const std::string& table, const std::string& sql) {
        const std::string loosen =
            "PRAGMA writable_schema=ON;"
            "UPDATE sqlite_schema SET sql = replace(replace(sql, ' NOT NULL', ''), ' STRICT', '')"
            " WHERE name = '" +
            table + "'; PRAGMA writable_schema=RESET;";
        RunSql(m_host, loosen + sql);
    }
};

TEST_F(MisfitTest, ARecordWhoseValuesDoNotFitIsListedAndTheOthersAreSaved) {
    Fill(50);
    Unmount();
    const std::string whole = ReadHostFile(m_host);
    for (const char* change :
         {"Real = 'text'", "Real = x'0102'", "Small = 70000", "Small = -1", "Big = 4294967296",
          "Big = x'00'", "Whole = 3000000000", "Whole = 'w'", "Name = x'4100'", "Name = NULL",
          "Remark = -1", "Remark = 1.5",
          "Name = 'a name that has more units than there is room for in the field'"}) {
        SCOPED_TRACE(change);
        WriteHostFile(m_host, whole);
        Run("Things", std::string("UPDATE Things SET ") + change + " WHERE Record = 7");
        const Salvaged salvaged = Save();
        std::set<std::uint32_t> expected = UpTo(50);
        expected.erase(7);
        EXPECT_EQ(Numbers(RowsOf(salvaged, kThings)), expected);
        ASSERT_EQ(salvaged.losses.size(), 1U);
        EXPECT_EQ(salvaged.losses[0].table, "Things");
        EXPECT_EQ(salvaged.losses[0].first, 7U);
        EXPECT_EQ(salvaged.losses[0].last, 7U);
    }
    for (const char* change : {"Record = 0", "Record = -3", "Record = 4294967296"}) {
        SCOPED_TRACE(change);
        WriteHostFile(m_host, whole);
        Run("Things", std::string("UPDATE Things SET ") + change + " WHERE Record = 7");
        const Salvaged salvaged = Save();
        EXPECT_EQ(RowsOf(salvaged, kThings).size(), 49U);
    }
}

TEST_F(MisfitTest, AMemoOrFileThatIsNoneIsLeftOut) {
    Fill(50);
    ASSERT_DONE(PutFile(u"V:/Two.ini", "two"));
    Unmount();
    const Salvaged all = Save();
    ASSERT_EQ(all.files.size(), 2U);
    const std::string whole = ReadHostFile(m_host);
    for (const char* change : {"Text = x'41'", "Text = NULL", "Reference = -7", "Reference = 0",
                               "Reference = 4294967296"}) {
        SCOPED_TRACE(change);
        WriteHostFile(m_host, whole);
        Run("Volume_Memo",
            std::string("UPDATE Volume_Memo SET ") + change + " WHERE Reference = 7");
        const Salvaged salvaged = Save();
        EXPECT_EQ(salvaged.memos.size(), 49U);
        EXPECT_FALSE(salvaged.memos.contains(7));
    }
    for (const char* change : {"Name = x'05'", "Name = NULL", "Length = -1", "Length = 'long'",
                               "Length = 3000000000", "Attributes = -1", "Attributes = 65535",
                               "Attributes = NULL", "File = -2", "File = 3000000000"}) {
        SCOPED_TRACE(change);
        WriteHostFile(m_host, whole);
        Run("Volume_File", std::string("UPDATE Volume_File SET ") + change + " WHERE File = 2");
        const Salvaged salvaged = Save();
        EXPECT_EQ(salvaged.files.at(1).name, all.files.at(1).name);
        // Its bytes are there without a name.
        EXPECT_FALSE(salvaged.files.at(2).length);
    }
    for (const char* change :
         {"Bytes = 'text'", "Bytes = NULL", "Bytes = zeroblob(4033)", "Position = -1",
          "Position = 5", "Position = 2 << 32 | 2147483647"}) {
        SCOPED_TRACE(change);
        WriteHostFile(m_host, whole);
        Run("Volume_Block",
            std::string("UPDATE Volume_Block SET ") + change + " WHERE Position >> 32 = 2");
        const Salvaged salvaged = Save();
        EXPECT_EQ(salvaged.files.at(1).blocks, all.files.at(1).blocks);
        EXPECT_TRUE(salvaged.files.at(2).blocks.empty());
    }
}

TEST_F(MisfitTest, ASchemaThatLeadsNowhereCostsNoRowWhereTablesBeginAsUsual) {
    Fill(300);
    Unmount();
    const std::string whole = ReadHostFile(m_host);
    for (const char* change :
         {"rootpage = 0", "rootpage = 1", "rootpage = 999999", "rootpage = 'x'", "name = 'Other'",
          "name = 5", "type = 'index'", "sql = NULL", "sql = 5", "tbl_name = NULL"}) {
        SCOPED_TRACE(change);
        WriteHostFile(m_host, whole);
        RunSql(m_host, "PRAGMA writable_schema=ON; UPDATE sqlite_schema SET " +
                           std::string(change) + " WHERE name = 'Pairs'");
        const Salvaged salvaged = Save();
        EXPECT_EQ(Numbers(RowsOf(salvaged, kPairs)), UpTo(300));
        EXPECT_EQ(Numbers(RowsOf(salvaged, kThings)), UpTo(300));
    }
}

}  // namespace
}  // namespace cqsurvey
