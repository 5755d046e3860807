#include "store/salvage/VolumeRefill.h"

#include <string_view>

#include "store/Sql.h"
#include "store/VolumeDatabase.h"

namespace cqsurvey {

namespace {

constexpr int kPlainFile = 128;

void PutRecords(sqlite3* connection, const VolumeSalvage::Layout& layout,
                const Salvaged::Table& table) {
    SqlRun(connection, "DELETE FROM \"" + layout.name + "\"");
    std::string sql = "INSERT INTO \"" + layout.name + "\" VALUES(?1";
    for (std::size_t i = 0; i < layout.format.GetItems().size(); ++i) {
        sql += ", ?" + std::to_string(i + 2);
    }
    SqlStatement insert(connection, sql + ")");
    for (std::size_t i = 0; i < table.numbers.size(); ++i) {
        layout.format.Bind(insert.Get(), 1, table.numbers[i],
                           table.bytes.data() + i * layout.format.GetWidth());
        insert.Run();
    }
}

void PutMemos(sqlite3* connection, const std::map<std::uint32_t, CString>& memos) {
    SqlRun(connection, "DELETE FROM Volume_Memo");
    SqlStatement insert(connection, "INSERT INTO Volume_Memo VALUES(?1, ?2)");
    for (const auto& [reference, text] : memos) {
        insert.BindInt(1, reference);
        insert.BindText(2, std::u16string_view(text));
        insert.Run();
    }
}

void PutHighest(sqlite3* connection, const std::map<std::string, std::uint32_t>& highest) {
    SqlRun(connection, "DELETE FROM Volume_Number");
    SqlStatement insert(connection, "INSERT INTO Volume_Number VALUES(?1, ?2)");
    for (const auto& [name, number] : highest) {
        insert.BindText(1, name);
        insert.BindInt(2, number);
        insert.Run();
    }
}

/// The number of the file of this name, or of a new one.
std::int64_t FileNumber(sqlite3* connection, const CString& name) {
    SqlStatement find(connection, "SELECT File FROM Volume_File WHERE Name = ?1");
    find.BindText(1, std::u16string_view(name));
    if (find.Step()) {
        return sqlite3_column_int64(find.Get(), 0);
    }
    return SqlNumber(connection, "SELECT coalesce(max(File), 0) + 1 FROM Volume_File");
}

void PutFile(sqlite3* connection, const Salvaged::File& file) {
    const std::int64_t number = FileNumber(connection, file.name);
    SqlStatement entry(connection, "REPLACE INTO Volume_File VALUES(?1, ?2, ?3, ?4)");
    entry.BindInt(1, number);
    entry.BindText(2, std::u16string_view(file.name));
    entry.BindInt(3, file.length.value_or(0));
    entry.BindInt(4, kPlainFile);
    entry.Run();
    SqlRun(connection, "DELETE FROM Volume_Block WHERE Position >> 32 = " + std::to_string(number));
    SqlStatement insert(connection, "INSERT INTO Volume_Block VALUES(?1, ?2)");
    for (const auto& [block, bytes] : file.blocks) {
        insert.BindInt(1, (number << 32) + block);
        insert.BindBlob(2, bytes.data(), bytes.size());
        insert.Run();
    }
}

}  // namespace

std::map<std::string, std::uint32_t> ListRoots(const std::string& path) {
    const VolumeDatabase database(path, true);
    SqlStatement rows(database.Get(),
                      "SELECT name, rootpage FROM sqlite_schema WHERE type = 'table'");
    std::map<std::string, std::uint32_t> roots;
    while (rows.Step()) {
        roots[rows.GetUtf8(0)] = static_cast<std::uint32_t>(sqlite3_column_int64(rows.Get(), 1));
    }
    return roots;
}

void RefillVolume(const std::string& path, const std::vector<VolumeSalvage::Layout>& layouts,
                  const Salvaged& rows) {
    const VolumeDatabase database(path, false);
    sqlite3* connection = database.Get();
    SqlRun(connection, "BEGIN");
    for (std::size_t i = 0; i < layouts.size(); ++i) {
        PutRecords(connection, layouts[i], rows.tables[i]);
    }
    PutMemos(connection, rows.memos);
    PutHighest(connection, rows.highest);
    for (const auto& [number, file] : rows.files) {
        if (!file.name.empty()) {
            PutFile(connection, file);
        }
    }
    SqlRun(connection, "COMMIT");
}

}  // namespace cqsurvey
