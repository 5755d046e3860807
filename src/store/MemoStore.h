#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <unordered_map>

#include "cqsurvey/Limits.h"
#include "cqsurvey/Types.h"
#include "platform/RecordHash.h"
#include "store/Sql.h"

namespace cqsurvey {

/// The memo texts of a volume. A record's MEMO field holds a reference, and this store has the text
/// of each reference. Failures throw StoreFailure.
///
/// A text is written once and never changed: whoever edits it adds a new text and puts the new
/// reference into the record, and the record table frees the old one (RecordTable::Write). Each
/// text belongs to exactly one record.
///
/// A memo may be long, but readers get no more than its first kReadable code units. Only those are
/// kept in memory; the whole text is there from Add until the next Flush and then in the database.
///
///     m_texts          the readable part of every text
///     m_unsaved        whole texts that Flush will insert
///     m_freed          texts that Flush will delete
///     m_freedInStep    texts that an undo must read again, handed over or not
///
/// Texts that the step added need no list: their references are those from m_nextAtStep on.
class MemoStore {
 public:
    /// How much of a memo can be read, in code units.
    static constexpr std::size_t kReadable = limits::kReadableText;
    /// The longest memo, in code units.
    static constexpr std::size_t kMostUnits = std::size_t{1} << 24;

    explicit MemoStore(sqlite3* connection) : m_connection(connection) {}

    /// Stores a text and returns its reference, 0 for an empty text. Throws error::kInvalidArgument
    /// for a text of more than kMostUnits, error::kVolumeFull when no reference is left.
    [[nodiscard]] std::uint32_t Add(const CString& text);

    /// Frees a text. Does nothing when there is no text of this reference.
    void Free(std::uint32_t reference);

    /// The text's first kReadable code units, or one less so as not to split a surrogate pair.
    /// Throws error::kDamaged when there is no text of this reference.
    [[nodiscard]] const CString& Get(std::uint32_t reference);

    // The parts of a step are as in RecordTable.

    /// The code units that wait to be handed to the database.
    [[nodiscard]] std::size_t GetDirty() const { return m_dirtyUnits; }
    void Flush();
    void KeepStep();
    /// Whether the database has what the step left in memory.
    [[nodiscard]] bool DatabaseHoldsStep();
    void UndoStep() noexcept;

 private:
    void Load();
    void LoadRows();
    [[nodiscard]] static CString Readable(const CString& text);
    void ReadBack(std::uint32_t reference);

    sqlite3* m_connection;
    bool m_loaded = false;
    std::unordered_map<std::uint32_t, CString, HandleHash> m_texts;
    std::map<std::uint32_t, CString>
        m_unsaved;                    ///< whole texts that the database does not have yet
    std::set<std::uint32_t> m_freed;  ///< texts that the database still has
    std::set<std::uint32_t> m_freedInStep;
    std::size_t m_dirtyUnits = 0;
    std::uint64_t m_next = 1;
    std::uint64_t m_nextAtStep = 1;
};

}  // namespace cqsurvey
