#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "store/Qrdb.h"
#include "store/Sql.h"

namespace cqsurvey {

/// How the packed records of a table are stored in its SQL table: a column `Record`, the number,
/// and a column for each field. The SQL types are coarser than the fields' types, so the type word
/// of a field is kept in a comment, and the format can be read back from the statement alone:
///
///     CREATE TABLE "_VertexData" (
///       Record INTEGER PRIMARY KEY,
///       "Bulge" ANY /* DOUBLE */,
///       "PlineIndex" INTEGER NOT NULL /* DWORD */
///     ) STRICT
///
/// Other tools see readable values, and yet every byte of a record survives the way through SQL:
///
///     field      column     value
///     DOUBLE     ANY        A real; a REAL column would lose the sign of zero. SQL has no
///                           not-a-number: NULL is the usual one, and any other is a blob of
///                           its eight bytes.
///     TEXTn      TEXT       All units up to the last that is not 0, so that what follows a
///                           terminating zero is kept. SQLite removes a byte-order mark, so a
///                           text that begins with one is bound with a second.
///     others     INTEGER    The number.
///
/// In the other direction nothing is taken for granted: Read checks type, range and length of each
/// value that comes from a file.
class RecordFormat {
 public:
    enum class Type : std::uint8_t { Double, Dword, Integer, Word, Memo, Text };

    struct Item {
        std::string name;
        std::string word;  ///< the type as the caller spelled it, such as "TEXT20"
        Type type;
        std::size_t offset;  ///< in the record, in bytes
        std::size_t width;   ///< in bytes
    };

    /// From a caller's description. Throws error::kBadTableDescription when it is not valid.
    RecordFormat(std::uint32_t fieldCount, const QrdbFieldDef* fields);

    /// From the statement that created the table. The statement must be, character for character,
    /// the one that CreateSql makes of the fields that were found in it; so it needs no real
    /// parser, and constraints or defaults cannot hide in it. Throws error::kDamaged otherwise.
    RecordFormat(const std::string& table, const std::string& sql);

    [[nodiscard]] std::string CreateSql(const std::string& table) const;
    [[nodiscard]] std::size_t GetWidth() const { return m_width; }
    [[nodiscard]] const std::vector<Item>& GetItems() const { return m_items; }
    [[nodiscard]] const std::vector<std::size_t>& GetMemoOffsets() const { return m_memos; }
    [[nodiscard]] bool operator==(const RecordFormat& other) const;

    /// Binds the number, or NULL for 0, and the fields to the parameters from `first` on. The
    /// record's bytes must stay where they are until the statement has run.
    void Bind(sqlite3_stmt* statement, int first, std::uint32_t number,
              const std::byte* record) const;

    /// Fills a record from a row of its number and fields. Throws error::kDamaged for a value that
    /// does not fit its field, and names the field.
    void Read(sqlite3_stmt* statement, std::byte* record) const;

    /// Whether tables and fields may have this name: ASCII letters, digits and underscores, at most
    /// 60, and no digit first. Such a name can be quoted in SQL without escapes.
    [[nodiscard]] static bool IsName(std::string_view name);

 private:
    void Add(std::string name, std::string word);

    std::vector<Item> m_items;
    std::vector<std::size_t> m_memos;  ///< offsets of the MEMO fields
    std::size_t m_width = 0;
};

}  // namespace cqsurvey
