#include "store/salvage/BtreePage.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "store/Sql.h"
#include "store/salvage/PageRow.h"
#include "support/HostBytes.h"
#include "support/TempDir.h"

namespace cqsurvey {
namespace {

constexpr std::size_t kPage = 512;
constexpr std::size_t kReserved = 8;

std::span<const std::byte> AsBytes(const std::string& text) {
    return std::as_bytes(std::span(text));
}

/// A small database with small pages, made by SQLite, and its pages.
class BtreePageTest : public testing::Test {
 protected:
    void Make(const std::string& sql) {
        const std::string path = m_folder.Utf8("a.db");
        sqlite3* opened = nullptr;
        ASSERT_EQ(sqlite3_open(path.c_str(), &opened), SQLITE_OK);
        const SqlConnection connection(opened);
        int reserved = static_cast<int>(kReserved);
        SqlRun(opened, "PRAGMA page_size=512; PRAGMA encoding='UTF-16le'");
        ASSERT_EQ(sqlite3_file_control(opened, "main", SQLITE_FCNTL_RESERVE_BYTES, &reserved),
                  SQLITE_OK);
        SqlRun(opened,
               "CREATE TABLE T (N INTEGER PRIMARY KEY, A TEXT, B ANY, C ANY) STRICT;" + sql);
        m_root = static_cast<std::size_t>(
            SqlNumber(opened, "SELECT rootpage FROM sqlite_schema WHERE name = 'T'"));
        m_file = HostFileBytes(path);
    }

    [[nodiscard]] std::string PageBytes(std::size_t page) const {
        return m_file.substr((page - 1) * kPage, kPage);
    }

    TempDir m_folder;
    std::string m_file;
    std::size_t m_root = 0;
};

TEST_F(BtreePageTest, ReadsTheRowsOfALeaf) {
    Make("INSERT INTO T VALUES(3, 'abc', 1.5, NULL), (70000, '', -2, x'0102'), (-4, 'x', 0, 1)");
    const std::string bytes = PageBytes(m_root);
    const auto page = BtreePage::Read(AsBytes(bytes), kPage - kReserved, 0);
    ASSERT_TRUE(page);
    EXPECT_EQ(page->GetKind(), BtreePage::Kind::LeafTable);
    ASSERT_EQ(page->GetCells().size(), 3U);
    EXPECT_EQ(page->GetCells()[0].key, -4);
    EXPECT_EQ(page->GetCells()[1].key, 3);
    EXPECT_EQ(page->GetCells()[2].key, 70000);
    const auto row = PageRow::Read(page->GetCells()[1].local, 4);
    ASSERT_TRUE(row);
    EXPECT_EQ(row->GetType(0), PageRow::Type::None);
    EXPECT_EQ(row->GetText(1), u"abc");
    EXPECT_EQ(row->GetType(2), PageRow::Type::Real);
    const auto other = PageRow::Read(page->GetCells()[2].local, 4);
    ASSERT_TRUE(other);
    EXPECT_EQ(other->GetNumber(2), -2);
    EXPECT_EQ(other->GetBytes(3).size(), 2U);
    EXPECT_FALSE(PageRow::Read(page->GetCells()[2].local, 3)) << "another number of columns";
}

TEST_F(BtreePageTest, NeedsTheRightNumberOfReservedBytes) {
    Make("INSERT INTO T VALUES(3, 'abc', 1.5, NULL)");
    const std::string bytes = PageBytes(m_root);
    EXPECT_FALSE(BtreePage::Read(AsBytes(bytes), kPage, 0));
    EXPECT_TRUE(BtreePage::Read(AsBytes(bytes), kPage - kReserved, 0));
}

TEST_F(BtreePageTest, ReadsTheChildrenOfAnInnerPage) {
    Make(
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 200)"
        " INSERT INTO T SELECT i, 'abcdefgh', i, i FROM n");
    const std::string bytes = PageBytes(m_root);
    const auto page = BtreePage::Read(AsBytes(bytes), kPage - kReserved, 0);
    ASSERT_TRUE(page);
    EXPECT_EQ(page->GetKind(), BtreePage::Kind::InnerTable);
    std::int64_t rows = 0;
    std::vector<std::uint32_t> children{page->GetLastChild()};
    for (const BtreePage::Cell& cell : page->GetCells()) {
        children.push_back(cell.child);
    }
    for (const std::uint32_t child : children) {
        const std::string leafBytes = PageBytes(child);
        const auto leaf = BtreePage::Read(AsBytes(leafBytes), kPage - kReserved, 0);
        ASSERT_TRUE(leaf) << child;
        rows += static_cast<std::int64_t>(leaf->GetCells().size());
    }
    EXPECT_EQ(rows, 200);
}

TEST_F(BtreePageTest, KnowsWhereALongPayloadGoesOn) {
    Make("INSERT INTO T VALUES(1, '" + std::string(2000, 'l') + "', 1, 2)");
    const std::string bytes = PageBytes(m_root);
    const auto page = BtreePage::Read(AsBytes(bytes), kPage - kReserved, 0);
    ASSERT_TRUE(page);
    const BtreePage::Cell& cell = page->GetCells().front();
    EXPECT_GT(cell.payload, 4000U);
    EXPECT_LT(cell.local.size(), kPage);
    EXPECT_GT(cell.overflow, 1U);
    EXPECT_FALSE(PageRow::Read(cell.local, 4));
}

TEST_F(BtreePageTest, IsReadBehindTheHeaderOnTheFirstPage) {
    Make("");
    const std::string bytes = PageBytes(1);
    EXPECT_TRUE(BtreePage::Read(AsBytes(bytes), kPage - kReserved, 100));
    EXPECT_FALSE(BtreePage::Read(AsBytes(bytes), kPage - kReserved, 0));
}

TEST_F(BtreePageTest, IsSoundAfterRowsWereDeletedAndChanged) {
    Make(
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 400)"
        " INSERT INTO T SELECT i, substr('abcdefghijklmnop', 1, i % 15), i, 1.0 / i FROM n;"
        "DELETE FROM T WHERE N % 3 = 1; UPDATE T SET A = 'y' WHERE N % 4 = 0;"
        "UPDATE T SET A = 'a longer text' WHERE N % 7 = 0;");
    int leaves = 0;
    for (std::size_t number = 2; number <= m_file.size() / kPage; ++number) {
        const std::string bytes = PageBytes(number);
        leaves += BtreePage::Read(AsBytes(bytes), kPage - kReserved, 0) ? 1 : 0;
    }
    EXPECT_GT(leaves, 15);
}

TEST_F(BtreePageTest, RefusesZerosAndRandomBytes) {
    const std::string zeros(kPage, '\0');
    EXPECT_FALSE(BtreePage::Read(AsBytes(zeros), kPage, 0));
    std::mt19937 random(7);
    for (int i = 0; i < 20000; ++i) {
        std::string bytes(kPage, '\0');
        for (char& byte : bytes) {
            byte = static_cast<char>(random());
        }
        bytes[0] = i % 2 == 0 ? '\x0D' : '\x05';
        EXPECT_FALSE(BtreePage::Read(AsBytes(bytes), kPage - kReserved, 0)) << i;
    }
}

TEST_F(BtreePageTest, NeverReadsOutsideOfAPageThatWasChanged) {
    Make(
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 60)"
        " INSERT INTO T SELECT i, 'abcdefgh', i, 0.5 FROM n;"
        "INSERT INTO T VALUES(100, '" +
        std::string(2000, 'l') + "', 1, 2)");
    std::mt19937 random(11);
    std::size_t read = 0;
    for (int i = 0; i < 20000; ++i) {
        const std::size_t number = 2 + random() % (m_file.size() / kPage - 1);
        std::vector<std::byte> bytes(kPage);
        const std::string from = PageBytes(number);
        std::copy(AsBytes(from).begin(), AsBytes(from).end(), bytes.begin());
        for (unsigned change = 0; change <= random() % 3; ++change) {
            // Mostly in the head and the places of the cells.
            const std::size_t at = random() % 2 == 0 ? random() % 40 : random() % kPage;
            bytes[at] = static_cast<std::byte>(random());
        }
        const auto page = BtreePage::Read(bytes, kPage - kReserved, 0);
        if (!page) {
            continue;
        }
        for (const BtreePage::Cell& cell : page->GetCells()) {
            read += PageRow::Read(cell.local, 4, true) ? 1U : 0U;
        }
    }
    EXPECT_GT(read, 1000U);
}

}  // namespace
}  // namespace cqsurvey
