#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "store/RecordChunks.h"
#include "store/RecordFormat.h"
#include "store/Sql.h"

namespace cqsurvey {

class MemoStore;

/// One table of a mounted volume. The first access to a record loads the whole table into memory
/// (RecordChunks); from then on reading costs no more than a look-up, and changes go to memory and
/// are marked there. Failures throw StoreFailure.
///
/// Two marks follow each changed record through a step, because a long step hands its records over
/// before it ends:
///
///                   a change    Flush      KeepStep    UndoStep
///     Dirty         set         cleared    -           cleared
///     Touched       set         -          cleared     cleared, and the record is read again
///
/// Dirty says what the next Flush must write. Touched says what an undo must restore, whether it
/// was written meanwhile or not. Reading those few records again costs nothing as long as a step
/// succeeds, where keeping the old bytes would take memory for each change.
///
/// Numbers run from 1 and are never given twice. The next one follows from the highest record and,
/// where that was deleted, from the row of the table in Volume_Number.
class RecordTable {
 public:
    RecordTable(sqlite3* connection, MemoStore& memos, std::string name, RecordFormat format);

    [[nodiscard]] const std::string& GetName() const { return m_name; }
    [[nodiscard]] const RecordFormat& GetFormat() const { return m_format; }

    /// Gives the records up, for instance because the creation of the table was undone while
    /// handles to it are open. Every function that needs them throws `code` from then on.
    void Abandon(std::int32_t code) noexcept;

    /// Counts the records without loading them.
    [[nodiscard]] std::int32_t GetCount();

    /// Null when there is no such record.
    [[nodiscard]] const std::byte* Find(std::uint32_t number) {
        Load();
        return m_chunks.Find(number);
    }
    /// The nearest record above or below a number, 0 when there is no such record.
    [[nodiscard]] std::uint32_t Next(std::uint32_t number);
    [[nodiscard]] std::uint32_t Prev(std::uint64_t number);

    // The changes below must be made inside a step of the volume (Volume::Perform).

    /// The number that the next appended record will get. Throws error::kVolumeFull when there is
    /// none left.
    [[nodiscard]] std::uint32_t NextNumber();

    /// Appends a record of GetFormat().GetWidth() bytes and returns its number.
    std::uint32_t Append(const std::byte* record);
    // Both need the record to exist, and free the memos that it no longer names.

    void Write(std::uint32_t number, const std::byte* record);
    void Delete(std::uint32_t number);

    /// The number of records that wait to be handed to the database.
    [[nodiscard]] std::size_t GetDirty() const {
        return m_chunks.GetMarked(RecordChunks::Mark::Dirty);
    }

    /// Hands the changed records to the database, inside its open transaction.
    void Flush();

    /// To be called when the step is durable.
    void KeepStep();

    /// Whether all records that the step touched are in the database as they are in memory.
    [[nodiscard]] bool DatabaseHoldsStep();

    /// To be called when the database has undone the step: reads the touched records from there
    /// again. If that fails, the table is loaded anew at its next use.
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
    /// Why the records were given up; 0 for a table in use.
    std::int32_t m_abandoned = 0;
    /// One more than the highest number ever used. It has 64 bits, because after the last number of
    /// 32 bits it is one more than those hold.
    std::uint64_t m_next = 1;
    std::uint64_t m_nextAtStep = 1;
    /// Numbers from here on are not in the database yet: they are inserted, others replaced.
    std::uint64_t m_firstUnsaved = 1;
    /// The highest number as Volume_Number has it, 0 for none.
    std::uint64_t m_savedHighest = 0;
    std::uint64_t m_savedHighestAtStep = 0;

    SqlStatement m_insertMany;
    SqlStatement m_insert;
    SqlStatement m_replace;
    SqlStatement m_delete;
    SqlStatement m_select;
};

}  // namespace cqsurvey
