#include "fuzz/FuzzVolume.h"

#include <sqlite3.h>

#include <array>
#include <memory>
#include <random>
#include <vector>

#include "store/Qrfs.h"

namespace cqsurvey {

namespace {

struct CloseDatabase {
    void operator()(sqlite3* connection) const { sqlite3_close(connection); }
};
using Database = std::unique_ptr<sqlite3, CloseDatabase>;

/// Draws SQL that changes a job's file somewhere.
class Stranger {
 public:
    Stranger(sqlite3* connection, std::uint32_t seed) : m_connection(connection), m_random(seed) {}

    std::string DrawChange() {
        const std::string table =
            Pick(Column("SELECT name FROM sqlite_schema WHERE type = 'table'"));
        const std::vector<std::string> columns =
            Column("SELECT name FROM pragma_table_info('" + table + "')");
        const std::string column = Pick(columns);
        const std::string row = RowOf(table);
        switch (Below(12)) {
            case 0:
                return "DELETE FROM " + table + row;
            case 1:
                return "DELETE FROM " + table;
            case 2:
                return "UPDATE OR REPLACE " + table + " SET rowid = " + DrawNumber() + row;
            case 3:
                return "INSERT OR REPLACE INTO " + table + " SELECT " + DrawNumber() +
                       Rest(columns) + " FROM " + table + row;
            case 4:
                return "UPDATE OR IGNORE " + table + " SET " + column + " = " + DrawValue();
            case 5: {
                const std::string other = Pick(columns);
                return "UPDATE OR IGNORE " + table + " SET " + column + " = (SELECT " + other +
                       " FROM " + table + RowOf(table) + ")" + row;
            }
            case 6:
                return "UPDATE Volume_Block SET Bytes = substr(Bytes, 1, " + Text(Below(200)) +
                       ") || " + DrawBlob() + " || substr(Bytes, " + Text(Below(300)) +
                       ") WHERE rowid = (SELECT rowid FROM Volume_Block LIMIT 1 OFFSET " +
                       Text(Below(8)) + ")";
            case 7:
                return DrawForeign(table, column);
            default:
                return "UPDATE OR IGNORE " + table + " SET " + column + " = " + DrawValue() + row;
        }
    }

 private:
    int Below(int bound) { return static_cast<int>(m_random() % static_cast<unsigned>(bound)); }
    static std::string Text(std::int64_t number) { return std::to_string(number); }

    /// The first column of what a query gives.
    std::vector<std::string> Column(const std::string& sql) {
        std::vector<std::string> values;
        sqlite3_stmt* statement = nullptr;
        sqlite3_prepare_v2(m_connection, sql.c_str(), -1, &statement, nullptr);
        while (statement != nullptr && sqlite3_step(statement) == SQLITE_ROW) {
            const unsigned char* text = sqlite3_column_text(statement, 0);
            values.emplace_back(text == nullptr ? "" : reinterpret_cast<const char*>(text));
        }
        sqlite3_finalize(statement);
        return values;
    }

    std::string Pick(const std::vector<std::string>& values) {
        return values.empty()
                   ? "x"
                   : values[static_cast<std::size_t>(Below(static_cast<int>(values.size())))];
    }

    /// Names one row of a table, mostly one of the first.
    std::string RowOf(const std::string& table) {
        return " WHERE rowid = (SELECT rowid FROM " + table + " LIMIT 1 OFFSET " +
               Text(Below(Below(4) == 0 ? 60 : 8)) + ")";
    }

    static std::string Rest(const std::vector<std::string>& columns) {
        std::string rest;
        for (std::size_t i = 1; i < columns.size(); ++i) {
            rest += ", " + columns[i];
        }
        return rest;
    }

    std::string DrawNumber() {
        static constexpr std::array<std::int64_t, 16> kNumbers{-1,
                                                               0,
                                                               1,
                                                               2,
                                                               255,
                                                               256,
                                                               65535,
                                                               65536,
                                                               999999,
                                                               -32769,
                                                               2147483647,
                                                               2147483648,
                                                               4294967295,
                                                               4294967296,
                                                               1099511627776,
                                                               9223372036854775807};
        return Below(2) == 0 ? Text(Below(20))
                             : Text(kNumbers[static_cast<std::size_t>(
                                   Below(static_cast<int>(kNumbers.size())))]);
    }

    std::string DrawBlob() {
        static constexpr const char* kDigits = "0123456789ABCDEF";
        std::string blob = "x'";
        for (int length = Below(12); length > 0; --length) {
            blob += kDigits[Below(16)];
            blob += kDigits[Below(16)];
        }
        return blob + "'";
    }

    std::string DrawValue() {
        switch (Below(10)) {
            case 0:
                return DrawBlob();
            case 1:
                return "NULL";
            case 2:
                return "''";
            case 3:
                return "printf('%.*c', " + Text(Below(400)) + ", 'x')";
            case 4:
                return "char(" + Text(Below(0x11000)) + ", 65, " + Text(Below(300)) + ")";
            case 5:
                return Pick({"1e308", "-1e308", "9e999", "-9e999", "0.5", "-0.0", "1e-320",
                             "x'7FF8000000000001'"});
            default:
                return DrawNumber();
        }
    }

    /// A change of the tables themselves.
    std::string DrawForeign(const std::string& table, const std::string& column) {
        switch (Below(8)) {
            case 0:
                return "DROP TABLE " + table;
            case 1:
                return "ALTER TABLE " + table + " RENAME COLUMN " + column + " TO Other";
            case 2:
                return "ALTER TABLE " + table + " ADD COLUMN Other INTEGER";
            case 3:
                return "PRAGMA user_version = " + DrawNumber();
            case 4:
                return "CREATE VIEW Other AS SELECT * FROM " + table;
            case 5:
                return "PRAGMA writable_schema=ON; UPDATE sqlite_schema SET rootpage = " +
                       DrawNumber() + " WHERE name = '" + table + "'";
            case 6:
                return "PRAGMA writable_schema=ON; UPDATE sqlite_schema SET sql = replace(sql, '" +
                       column + "', 'Other') WHERE name = '" + table + "'";
            default:
                return "PRAGMA journal_mode=WAL";
        }
    }

    sqlite3* m_connection;
    std::mt19937 m_random;
};

}  // namespace

std::optional<std::string> MutateVolume(const FuzzFolder& folder, const std::string& bytes,
                                        std::uint32_t seed) {
    folder.Put("mutated", bytes);
    sqlite3* opened = nullptr;
    sqlite3_open(folder.Host("mutated").c_str(), &opened);
    Database database(opened);
    Stranger stranger(opened, seed);
    sqlite3_exec(opened, "PRAGMA synchronous=OFF; PRAGMA journal_mode=MEMORY", nullptr, nullptr,
                 nullptr);
    for (std::uint32_t changes = 1 + seed % 3; changes != 0; --changes) {
        sqlite3_exec(opened, stranger.DrawChange().c_str(), nullptr, nullptr, nullptr);
    }
    database.reset();
    std::string changed = folder.Get("mutated");
    return changed == bytes ? std::nullopt : std::optional(std::move(changed));
}

bool PutIntoVolume(const std::string& hostPath, const std::string& name, std::string_view bytes) {
    if (QrfsMount(FromUtf8(hostPath), u"FUZZ") == 0) {
        return false;
    }
    const CString path = u"FUZZ:/" + FromUtf8(name);
    const std::int32_t file = QrfsOpenFile(path, 2);
    std::uint32_t written = 0;
    const bool done =
        file != -1 && QrfsSetLength(file, 0) != 0 &&
        QrfsWrite(file, bytes.data(), static_cast<std::uint32_t>(bytes.size()), written) != 0;
    QrfsCloseFile(file);
    QrfsUnmount(u"FUZZ");
    return done;
}

}  // namespace cqsurvey
