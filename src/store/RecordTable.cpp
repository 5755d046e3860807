#include "store/RecordTable.h"

#include <algorithm>
#include <array>
#include <limits>
#include <utility>
#include <vector>

#include "platform/ByteOrder.h"
#include "store/Failure.h"
#include "store/MemoStore.h"

namespace cqsurvey {

namespace {

constexpr std::uint64_t kLastNumber = std::numeric_limits<std::uint32_t>::max();

std::string Quoted(const std::string& name) {
    return "\"" + name + "\"";
}

}  // namespace

RecordTable::RecordTable(sqlite3* connection, MemoStore& memos, std::string name,
                         RecordFormat format)
    : m_connection(connection),
      m_memos(memos),
      m_name(std::move(name)),
      m_format(std::move(format)),
      m_chunks(m_format.GetWidth()) {}

std::int32_t RecordTable::GetCount() {
    if (m_loaded) {
        return static_cast<std::int32_t>(m_chunks.GetCount());
    }
    RequireThere();
    return CountRows();
}

std::int32_t RecordTable::CountRows() {
    // count(*) walks all pages in one step of SQLite, so no budget could end it on a damaged file;
    // count(column) can be ended but calls a function for each row. Skipping all rows with OFFSET
    // can be ended and is cheaper, and the statement's counter of scanned rows then tells how many
    // followed the first.
    constexpr std::int64_t kMoreThanAnyTable = std::int64_t{1} << 62;
    const SqlBudget budget(m_connection);
    SqlStatement skip(m_connection, "SELECT 1 FROM " + Quoted(m_name) + " LIMIT 1 OFFSET ?1");
    skip.BindInt(1, 0);
    if (!skip.Step()) {
        return 0;
    }
    skip.Reset();
    (void)sqlite3_stmt_status(skip.Get(), SQLITE_STMTSTATUS_FULLSCAN_STEP, 1);
    skip.BindInt(1, kMoreThanAnyTable);
    skip.Run();
    return 1 + sqlite3_stmt_status(skip.Get(), SQLITE_STMTSTATUS_FULLSCAN_STEP, 0);
}

void RecordTable::Abandon(std::int32_t code) noexcept {
    m_abandoned = code;
    m_loaded = false;
    m_chunks.Clear();
}

void RecordTable::RequireThere() const {
    if (m_abandoned != 0) {
        throw StoreFailure(m_abandoned, "table " + m_name + " can no longer be used");
    }
}

std::uint32_t RecordTable::Next(std::uint32_t number) {
    Load();
    return m_chunks.Next(number);
}

std::uint32_t RecordTable::Prev(std::uint64_t number) {
    Load();
    return m_chunks.Prev(number);
}

void RecordTable::ReadRow(SqlStatement& statement, std::uint32_t number, std::byte* record) {
    try {
        m_format.Read(statement.Get(), record);
    } catch (const StoreFailure& failure) {
        throw StoreFailure(failure.code,
                           "record " + std::to_string(number) + ": " + failure.detail);
    }
}

void RecordTable::LoadRows() {
    SqlStatement rows(m_connection, "SELECT * FROM " + Quoted(m_name) + " ORDER BY Record");
    std::int64_t last = 0;
    while (rows.Step()) {
        const std::int64_t number = sqlite3_column_int64(rows.Get(), 0);
        if (number < 1 || static_cast<std::uint64_t>(number) > kLastNumber || number <= last) {
            throw StoreFailure(error::kDamaged, "record number " + std::to_string(number) +
                                                    " after " + std::to_string(last));
        }
        last = number;
        ReadRow(rows, static_cast<std::uint32_t>(number),
                m_chunks.Place(static_cast<std::uint32_t>(number)));
    }
    m_next = static_cast<std::uint64_t>(last) + 1;
}

void RecordTable::LoadHighest() {
    SqlStatement highest(m_connection, "SELECT Highest FROM Volume_Number WHERE Name = ?1");
    highest.BindText(1, m_name);
    m_savedHighest = 0;
    if (!highest.Step()) {
        return;
    }
    const std::int64_t number = sqlite3_column_int64(highest.Get(), 0);
    if (number < 0 || static_cast<std::uint64_t>(number) > kLastNumber) {
        throw StoreFailure(error::kDamaged, "highest number " + std::to_string(number));
    }
    m_savedHighest = static_cast<std::uint64_t>(number);
    m_next = std::max(m_next, m_savedHighest + 1);
}

void RecordTable::LoadAll() {
    RequireThere();
    try {
        LoadRows();
        LoadHighest();
    } catch (const StoreFailure& failure) {
        m_chunks.Clear();
        throw StoreFailure(failure.code, "table " + m_name + ": " + failure.detail);
    } catch (...) {
        m_chunks.Clear();
        throw;
    }
    // What was just loaded is the state that an open step began with: a step that had changed this
    // table would have loaded it.
    m_nextAtStep = m_next;
    m_firstUnsaved = m_next;
    m_savedHighestAtStep = m_savedHighest;
    m_loaded = true;
}

std::uint32_t RecordTable::NextNumber() {
    Load();
    if (m_next > kLastNumber ||
        m_chunks.GetCount() >= std::size_t{std::numeric_limits<std::int32_t>::max()}) {
        throw StoreFailure(error::kVolumeFull, "table " + m_name + " has no record number left");
    }
    return static_cast<std::uint32_t>(m_next);
}

std::uint32_t RecordTable::Append(const std::byte* record) {
    const std::uint32_t number = NextNumber();
    m_chunks.PutMarked(number, record);
    ++m_next;
    return number;
}

void RecordTable::Write(std::uint32_t number, const std::byte* record) {
    if (!m_format.GetMemoOffsets().empty()) {
        FreeMemos(Find(number), record);
    }
    m_chunks.PutMarked(number, record);
}

void RecordTable::Delete(std::uint32_t number) {
    FreeMemos(Find(number), nullptr);
    // The marks first: they may need memory, and a record that is gone without a mark would come
    // back at the next opening.
    m_chunks.SetMark(number, RecordChunks::Mark::Dirty);
    m_chunks.SetMark(number, RecordChunks::Mark::Touched);
    m_chunks.Erase(number);
}

void RecordTable::FreeMemos(const std::byte* before, const std::byte* after) {
    for (const std::size_t offset : m_format.GetMemoOffsets()) {
        const auto reference = LoadLittle<std::uint32_t>(before + offset);
        if (reference != 0 &&
            (after == nullptr || LoadLittle<std::uint32_t>(after + offset) != reference)) {
            m_memos.Free(reference);
        }
    }
}

std::string RecordTable::Values(std::uint32_t rows) const {
    const std::size_t columns = m_format.GetItems().size() + 1;
    std::string row = "(?";
    for (std::size_t i = 1; i < columns; ++i) {
        row += ",?";
    }
    row += ")";
    std::string values = " INTO " + Quoted(m_name) + " VALUES" + row;
    for (std::uint32_t i = 1; i < rows; ++i) {
        values += "," + row;
    }
    return values;
}

void RecordTable::FlushInserts(const std::uint32_t* numbers, std::uint32_t count) {
    const int columns = static_cast<int>(m_format.GetItems().size()) + 1;
    if (count == kRowsAStatement) {
        if (!m_insertMany) {
            m_insertMany = SqlStatement(m_connection, "INSERT" + Values(kRowsAStatement));
        }
        // All these numbers are above those in the database. For NULL the database takes one more
        // than its highest number, which needs four fifths of the time that it takes to look
        // whether a given number is free. So only the first number of a run is given.
        for (std::uint32_t i = 0; i < count; ++i) {
            const bool follows = i != 0 && numbers[i] == numbers[i - 1] + 1;
            m_format.Bind(m_insertMany.Get(), static_cast<int>(i) * columns + 1,
                          follows ? 0 : numbers[i], m_chunks.Find(numbers[i]));
        }
        m_insertMany.Run();
        // The numbers that the database chose must be those in memory. They are not when the file
        // held a higher number than the loaded rows showed.
        if (sqlite3_last_insert_rowid(m_connection) != std::int64_t{numbers[count - 1]}) {
            throw StoreFailure(
                error::kDamaged,
                "table " + m_name + " has records that were not there when it was loaded");
        }
        return;
    }
    if (!m_insert) {
        m_insert = SqlStatement(m_connection, "INSERT" + Values(1));
    }
    for (std::uint32_t i = 0; i < count; ++i) {
        m_format.Bind(m_insert.Get(), 1, numbers[i], m_chunks.Find(numbers[i]));
        m_insert.Run();
    }
}

void RecordTable::FlushHighest() {
    // Usually the highest record shows which numbers were used. Only after its deletion must its
    // number be remembered separately.
    const std::uint64_t highest = m_next - 1;
    const std::uint64_t known = std::max<std::uint64_t>(m_chunks.Prev(m_next), m_savedHighest);
    if (known >= highest) {
        return;
    }
    SqlStatement statement(m_connection, "REPLACE INTO Volume_Number VALUES(?1, ?2)");
    statement.BindText(1, m_name);
    statement.BindInt(2, static_cast<std::int64_t>(highest));
    statement.Run();
    m_savedHighest = highest;
}

void RecordTable::FlushReplace(std::uint32_t number, const std::byte* record) {
    if (!m_replace) {
        m_replace = SqlStatement(m_connection, "REPLACE" + Values(1));
    }
    m_format.Bind(m_replace.Get(), 1, number, record);
    m_replace.Run();
}

void RecordTable::FlushDelete(std::uint32_t number) {
    if (!m_delete) {
        m_delete =
            SqlStatement(m_connection, "DELETE FROM " + Quoted(m_name) + " WHERE Record = ?1");
    }
    m_delete.BindInt(1, number);
    m_delete.Run();
}

void RecordTable::Flush() {
    if (GetDirty() == 0) {
        return;
    }
    // Numbers come in ascending order, so the new records are at the end and go in full statements.
    // A new record that was deleted again before this never reaches the database.
    std::array<std::uint32_t, kRowsAStatement> fresh{};
    std::uint32_t waiting = 0;
    m_chunks.TakeMarked(RecordChunks::Mark::Dirty,
                        [&](std::uint32_t number, const std::byte* record) {
                            if (number >= m_firstUnsaved) {
                                if (record != nullptr) {
                                    fresh[waiting++] = number;
                                    if (waiting == kRowsAStatement) {
                                        FlushInserts(fresh.data(), waiting);
                                        waiting = 0;
                                    }
                                }
                            } else if (record != nullptr) {
                                FlushReplace(number, record);
                            } else {
                                FlushDelete(number);
                            }
                        });
    FlushInserts(fresh.data(), waiting);
    FlushHighest();
    m_firstUnsaved = m_next;
}

void RecordTable::KeepStep() {
    m_chunks.ClearMarks(RecordChunks::Mark::Touched);
    m_nextAtStep = m_next;
    m_savedHighestAtStep = m_savedHighest;
}

SqlStatement& RecordTable::Select() {
    if (!m_select) {
        m_select =
            SqlStatement(m_connection, "SELECT * FROM " + Quoted(m_name) + " WHERE Record = ?1");
    }
    return m_select;
}

bool RecordTable::DatabaseHoldsStep() {
    bool holds = true;
    std::vector<std::byte> stored(m_format.GetWidth());
    m_chunks.VisitMarked(RecordChunks::Mark::Touched,
                         [&](std::uint32_t number, const std::byte* record) {
                             SqlStatement& select = Select();
                             const SqlUse use(select);
                             select.BindInt(1, number);
                             const bool there = holds && select.Step();
                             if (there) {
                                 ReadRow(select, number, stored.data());
                             }
                             holds = holds && there == (record != nullptr) &&
                                     (!there || std::equal(stored.begin(), stored.end(), record));
                         });
    return holds;
}

void RecordTable::ReadBack(std::uint32_t number) {
    SqlStatement& select = Select();
    const SqlUse use(select);
    select.BindInt(1, number);
    if (select.Step()) {
        ReadRow(select, number, m_chunks.Place(number));
    } else {
        m_chunks.Erase(number);
    }
}

void RecordTable::UndoStep() noexcept {
    // A table that is not loaded has not been changed.
    if (!m_loaded) {
        return;
    }
    try {
        m_chunks.ClearMarks(RecordChunks::Mark::Dirty);
        m_chunks.TakeMarked(RecordChunks::Mark::Touched,
                            [&](std::uint32_t number, const std::byte* record) {
                                if (number < m_nextAtStep) {
                                    ReadBack(number);
                                } else if (record != nullptr) {
                                    m_chunks.Erase(number);
                                }
                            });
        m_next = m_nextAtStep;
        m_firstUnsaved = m_next;
        m_savedHighest = m_savedHighestAtStep;
    } catch (...) {
        // The database is right in any case, so forgetting everything is a complete undo, too.
        m_chunks.Clear();
        m_loaded = false;
    }
}

}  // namespace cqsurvey
