#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "store/RecordChunks.h"
#include "store/RecordFormat.h"
#include "store/Sql.h"

namespace cqsurvey {

class MemoStore;

/// One table of a mounted volume: its records in memory once it was asked for one, and how they
/// come from the database and go back. Failures throw StoreFailure.
class RecordTable {
 public:
    RecordTable(sqlite3* connection, MemoStore& memos, std::string name, RecordFormat format);

    [[nodiscard]] const std::string& GetName() const { return m_name; }
    [[nodiscard]] const RecordFormat& GetFormat() const { return m_format; }

    /// Gives the records up, for instance since the creation of the table was undone while handles
    /// to it are open: what needs them throws `code` from now on.
    void Abandon(std::int32_t code) noexcept;

    /// Counts without loading.
    [[nodiscard]] std::int32_t GetCount();

    /// Null when there is no such record.
    [[nodiscard]] const std::byte* Find(std::uint32_t number) {
        Load();
        return m_chunks.Find(number);
    }
    /// The nearest record above or below a number, 0 when there is none.
    [[nodiscard]] std::uint32_t Next(std::uint32_t number);
    [[nodiscard]] std::uint32_t Prev(std::uint64_t number);

    // The changes below must stand inside a step of the volume.

    /// The number that the next record appended gets.
    [[nodiscard]] std::uint32_t NextNumber();

    /// Returns the number that the record gets.
    std::uint32_t Append(const std::byte* record);
    void Write(std::uint32_t number, const std::byte* record);
    void Delete(std::uint32_t number);

    /// Records that wait to be handed to the database.
    [[nodiscard]] std::size_t GetDirty() const {
        return m_chunks.GetMarked(RecordChunks::Mark::Dirty);
    }

    /// Hands the changed records to the database, inside its open transaction.
    void Flush();

    /// The step was made durable.
    void KeepStep();

    /// Whether the database has what the step left in memory, for all that the step touched.
    [[nodiscard]] bool DatabaseHoldsStep();

    /// The database has undone the step: takes the records that it touched from there again. When
    /// that fails the table is loaded anew at its next use.
    void UndoStep() noexcept;

 private:
    static constexpr std::uint32_t kRowsAStatement = 32;

    void Load() {
        if (!m_loaded) {
            LoadAll();
        }
    }
    [[nodiscard]] std::int32_t CountRows();
    void LoadAll();
    void LoadRows();
    void LoadHighest();
    void RequireThere() const;
    [[nodiscard]] SqlStatement& Select();
    void ReadRow(SqlStatement& statement, std::uint32_t number, std::byte* record);
    void ReadBack(std::uint32_t number);
    void FlushInserts(const std::uint32_t* numbers, std::uint32_t count);
    void FlushReplace(std::uint32_t number, const std::byte* record);
    void FlushDelete(std::uint32_t number);
    void FlushHighest();
    void FreeMemos(const std::byte* before, const std::byte* after);
    [[nodiscard]] std::string Values(std::uint32_t rows) const;

    sqlite3* m_connection;
    MemoStore& m_memos;
    std::string m_name;
    RecordFormat m_format;
    RecordChunks m_chunks;
    bool m_loaded = false;
    /// Why the records were given up; 0 while they were not.
    std::int32_t m_abandoned = 0;
    /// The number the next record gets; one past the highest ever used. 64 bits: it may end there.
    std::uint64_t m_next = 1;
    std::uint64_t m_nextAtStep = 1;
    /// Numbers from here on are not in the database yet.
    std::uint64_t m_firstUnsaved = 1;
    /// The highest number as the volume remembers it beside the records.
    std::uint64_t m_savedHighest = 0;
    std::uint64_t m_savedHighestAtStep = 0;

    SqlStatement m_insertMany;
    SqlStatement m_insert;
    SqlStatement m_replace;
    SqlStatement m_delete;
    SqlStatement m_select;
};

}  // namespace cqsurvey
