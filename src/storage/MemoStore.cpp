#include "storage/MemoStore.h"

#include <limits>

#include "storage/StoreFailure.h"

namespace cqsurvey {

namespace {

constexpr std::uint64_t kLastReference = std::numeric_limits<std::uint32_t>::max();

CString TextOf(sqlite3_stmt* row, int column) {
    const void* text = sqlite3_column_text16(row, column);
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes16(row, column));
    return text == nullptr ? CString() : CString(static_cast<const char16_t*>(text), size / 2);
}

}  // namespace

CString MemoStore::Readable(const CString& text) {
    if (text.size() <= kReadable) {
        return text;
    }
    const char16_t last = text[kReadable - 1];
    const bool half = last >= 0xD800 && last < 0xDC00;
    return text.substr(0, half ? kReadable - 1 : kReadable);
}

void MemoStore::Load() {
    if (m_loaded) {
        return;
    }
    try {
        SqlStatement rows(m_connection,
                          "SELECT Reference, Text FROM Volume_Memo ORDER BY Reference");
        std::uint64_t last = 0;
        while (rows.Step()) {
            const std::int64_t reference = sqlite3_column_int64(rows.Get(), 0);
            if (reference < 1 || static_cast<std::uint64_t>(reference) > kLastReference) {
                throw StoreFailure(error::kDamaged,
                                   "memo with the reference " + std::to_string(reference));
            }
            last = static_cast<std::uint64_t>(reference);
            m_texts.emplace(static_cast<std::uint32_t>(last), Readable(TextOf(rows.Get(), 1)));
        }
        m_next = last + 1;
        m_nextAtStep = m_next;
        m_loaded = true;
    } catch (...) {
        m_texts.clear();
        throw;
    }
}

std::uint32_t MemoStore::Add(const CString& text) {
    if (text.empty()) {
        return 0;
    }
    Load();
    if (m_next > kLastReference) {
        throw StoreFailure(error::kVolumeFull, "the volume has no memo reference left");
    }
    const auto reference = static_cast<std::uint32_t>(m_next);
    m_unsaved.emplace(reference, text);
    m_texts.emplace(reference, Readable(text));
    m_dirtyUnits += text.size();
    ++m_next;
    return reference;
}

void MemoStore::Free(std::uint32_t reference) {
    Load();
    if (m_texts.erase(reference) == 0) {
        return;
    }
    if (m_unsaved.erase(reference) == 0) {
        m_freed.insert(reference);
    }
    if (reference < m_nextAtStep) {
        m_freedInStep.insert(reference);
    }
}

const CString& MemoStore::Get(std::uint32_t reference) {
    Load();
    const auto found = m_texts.find(reference);
    if (found == m_texts.end()) {
        throw StoreFailure(error::kDamaged,
                           "no memo with the reference " + std::to_string(reference));
    }
    return found->second;
}

void MemoStore::Flush() {
    if (!m_freed.empty()) {
        SqlStatement remove(m_connection, "DELETE FROM Volume_Memo WHERE Reference = ?1");
        for (const std::uint32_t reference : m_freed) {
            remove.BindInt(1, reference);
            remove.Run();
        }
        m_freed.clear();
    }
    if (!m_unsaved.empty()) {
        SqlStatement insert(m_connection, "INSERT INTO Volume_Memo VALUES(?1, ?2)");
        for (const auto& [reference, text] : m_unsaved) {
            // SQLite takes a byte order mark at the start away; of two it leaves the second.
            const bool marked = text.front() == 0xFEFF || text.front() == 0xFFFE;
            const CString bound = marked ? u'\xFEFF' + text : text;
            insert.BindInt(1, reference);
            const int result =
                sqlite3_bind_text64(insert.Get(), 2, reinterpret_cast<const char*>(bound.data()),
                                    bound.size() * 2, SQLITE_STATIC, SQLITE_UTF16);
            if (result != SQLITE_OK) {
                ThrowSql(m_connection, result);
            }
            insert.Run();
        }
        m_unsaved.clear();
    }
    m_dirtyUnits = 0;
}

void MemoStore::KeepStep() {
    m_freedInStep.clear();
    m_nextAtStep = m_next;
}

void MemoStore::ReadBack(std::uint32_t reference) {
    SqlStatement row(m_connection, "SELECT Text FROM Volume_Memo WHERE Reference = ?1");
    row.BindInt(1, reference);
    if (row.Step()) {
        m_texts.insert_or_assign(reference, Readable(TextOf(row.Get(), 0)));
    }
}

void MemoStore::UndoStep() noexcept {
    if (!m_loaded) {
        return;
    }
    try {
        for (std::uint64_t reference = m_nextAtStep; reference < m_next; ++reference) {
            m_texts.erase(static_cast<std::uint32_t>(reference));
        }
        for (const std::uint32_t reference : m_freedInStep) {
            ReadBack(reference);
        }
        m_next = m_nextAtStep;
    } catch (...) {
        m_texts.clear();
        m_loaded = false;
    }
    m_unsaved.clear();
    m_freed.clear();
    m_freedInStep.clear();
    m_dirtyUnits = 0;
}

}  // namespace cqsurvey
