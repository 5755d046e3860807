#include "store/VolumeSchema.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <set>

#include "store/Sql.h"

namespace cqsurvey {

namespace {

constexpr std::array<const char*, 4> kSystemTables{
    "CREATE TABLE Volume_File (\n"
    "  File INTEGER PRIMARY KEY,\n"
    "  Name TEXT NOT NULL UNIQUE,\n"
    "  Length INTEGER NOT NULL,\n"
    "  Attributes INTEGER NOT NULL\n"
    ") STRICT",
    "CREATE TABLE Volume_Block (\n"
    "  Position INTEGER PRIMARY KEY,\n"
    "  Bytes BLOB NOT NULL\n"
    ") STRICT",
    "CREATE TABLE Volume_Memo (\n"
    "  Reference INTEGER PRIMARY KEY,\n"
    "  Text TEXT NOT NULL\n"
    ") STRICT",
    "CREATE TABLE Volume_Number (\n"
    "  Name TEXT PRIMARY KEY,\n"
    "  Highest INTEGER NOT NULL\n"
    ") STRICT, WITHOUT ROWID"};

/// The index that keeps the file names unique.
constexpr std::array<const char*, 1> kSystemIndexes{"sqlite_autoindex_Volume_File_1"};
/// What AUTOINCREMENT and ANALYZE leave in a database.
constexpr std::array<const char*, 3> kHarmlessTables{"sqlite_sequence", "sqlite_stat1",
                                                     "sqlite_stat4"};

template <std::size_t N>
bool Contains(const std::array<const char*, N>& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

std::string SystemTableName(const std::string& sql) {
    const std::size_t from = std::strlen("CREATE TABLE ");
    return sql.substr(from, sql.find(' ', from) - from);
}

}  // namespace

std::string VolumeSchema::CreateSql() {
    std::string sql;
    for (const char* table : kSystemTables) {
        sql += table;
        sql += ";";
    }
    return sql;
}

std::vector<VolumeSchema::Table> VolumeSchema::ListTables(sqlite3* connection) {
    if (SqlText(connection, "PRAGMA encoding") != "UTF-16le") {
        throw StoreFailure(error::kDamaged, "the texts are not stored as UTF-16le");
    }
    std::vector<Table> tables;
    std::set<std::string> system;
    for (const char* sql : kSystemTables) {
        system.insert(sql);
    }
    std::set<std::string> indexes(kSystemIndexes.begin(), kSystemIndexes.end());
    // Two tables on the same pages would change each other's rows.
    std::set<std::int64_t> roots;
    SqlStatement rows(connection, "SELECT type, name, tbl_name, sql, rootpage FROM sqlite_schema");
    while (rows.Step()) {
        const std::string type = rows.GetUtf8(0);
        const std::string name = rows.GetUtf8(1);
        const std::string table = rows.GetUtf8(2);
        const std::string sql = rows.GetUtf8(3);
        if (type == "view" && sql.starts_with("CREATE VIEW ")) {
            continue;
        }
        const bool own = type == "index" && sql.empty() && indexes.erase(name) != 0;
        if (type != "table" && !own) {
            throw StoreFailure(error::kDamaged,
                               "the file holds a foreign " + type + " \"" + name + "\"");
        }
        const std::int64_t root = sqlite3_column_int64(rows.Get(), 4);
        if (root < 2 || !roots.insert(root).second) {
            throw StoreFailure(error::kDamaged,
                               type + " \"" + name + "\" begins at page " + std::to_string(root));
        }
        if (own) {
            continue;
        }
        if (Contains(kHarmlessTables, name)) {
            continue;
        }
        if (system.erase(sql) != 0 && name == SystemTableName(sql)) {
            continue;
        }
        if (!RecordFormat::IsName(name) || name != table) {
            throw StoreFailure(error::kDamaged, "the file holds a foreign table \"" + name + "\"");
        }
        tables.push_back({name, RecordFormat(name, sql)});
    }
    if (!system.empty()) {
        throw StoreFailure(error::kDamaged,
                           "table " + SystemTableName(*system.begin()) + " is missing");
    }
    if (!indexes.empty()) {
        throw StoreFailure(error::kDamaged, "index " + *indexes.begin() + " is missing");
    }
    return tables;
}

}  // namespace cqsurvey
