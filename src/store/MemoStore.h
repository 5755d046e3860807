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

/// The memo texts of a volume, by reference. The database keeps them whole; memory keeps what a
/// reader gets of them. Failures throw StoreFailure.
class MemoStore {
 public:
    /// What a reader gets of a memo at most, in code units.
    static constexpr std::size_t kReadable = limits::kReadableText;
    /// What a memo may have at most, in code units.
    static constexpr std::size_t kMostUnits = std::size_t{1} << 24;

    explicit MemoStore(sqlite3* connection) : m_connection(connection) {}

    /// Stores a text and returns its reference; 0 for an empty text. Throws 0x30000002 for one of
    /// more than kMostUnits.
    [[nodiscard]] std::uint32_t Add(const CString& text);

    /// Frees a text; nothing happens for a reference that names none.
    void Free(std::uint32_t reference);

    /// The text's first kReadable code units, or one less rather than half a surrogate pair. Throws
    /// 0x30000007 for a reference that names none.
    [[nodiscard]] const CString& Get(std::uint32_t reference);

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
