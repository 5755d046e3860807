#include <gtest/gtest.h>

#include <array>
#include <string>

#include "store/StrangerFixture.h"

namespace cqsurvey {
namespace {

/// Pages of a table that name each other: followed to its end, it would take for ever.
class EndlessTest : public StrangerFixture {
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
