#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "store/Qrdb.h"
#include "store/Sql.h"

namespace cqsurvey {

/// How the packed records of a table stand in its SQL table: `Record INTEGER PRIMARY KEY` and a
/// column for each field, whose type word stands in a comment behind the column's type.
///
/// Every byte of a record survives: a text column holds the code units up to the last that is not
/// 0, a DOUBLE stands as a real in a column without affinity (which keeps the sign of zero), as
/// NULL for the usual not-a-number and as its eight bytes for any other.
class RecordFormat {
 public:
    enum class Type : std::uint8_t { Double, Dword, Integer, Word, Memo, Text };

    struct Item {
        std::string name;
        std::string word;
        Type type;
        std::size_t offset;
        std::size_t width;
    };

    /// Throws StoreFailure 0x31000005 for a description that is none.
    RecordFormat(std::uint32_t fieldCount, const QrdbFieldDef* fields);

    /// From the statement that created the table. Throws StoreFailure 0x30000007 when it is not
    /// exactly the one that CreateSql gives for what it says.
    RecordFormat(const std::string& table, const std::string& sql);

    [[nodiscard]] std::string CreateSql(const std::string& table) const;
    [[nodiscard]] std::size_t GetWidth() const { return m_width; }
    [[nodiscard]] const std::vector<Item>& GetItems() const { return m_items; }
    [[nodiscard]] const std::vector<std::size_t>& GetMemoOffsets() const { return m_memos; }
    [[nodiscard]] bool operator==(const RecordFormat& other) const;

    /// Binds number, NULL for 0, and fields to the parameters from `first` on. The bytes must stay
    /// until the statement was run.
    void Bind(sqlite3_stmt* statement, int first, std::uint32_t number,
              const std::byte* record) const;

    /// Fills a record from a row of number and fields. Throws StoreFailure 0x30000007, telling the
    /// field, for a value that does not fit it.
    void Read(sqlite3_stmt* statement, std::byte* record) const;

    /// True for a name that tables and fields may have: a letter or underscore, then those and
    /// digits, at most 60.
    [[nodiscard]] static bool IsName(std::string_view name);

 private:
    void Add(std::string name, std::string word);

    std::vector<Item> m_items;
    std::vector<std::size_t> m_memos;
    std::size_t m_width = 0;
};

}  // namespace cqsurvey
