#include "store/MemoStore.h"

#include <algorithm>
#include <limits>

#include "platform/Text.h"
#include "store/Failure.h"

namespace cqsurvey {

namespace {

constexpr std::uint64_t kLastReference = std::numeric_limits<std::uint32_t>::max();

}  // namespace

CString MemoStore::Readable(const CString& text) {
    if (text.size() <= kReadable) {
        return text;
    }
    return text.substr(0, WholeUtf16Prefix(text, kReadable));
}

void MemoStore::LoadRows() {
    SqlStatement rows(m_connection, "SELECT Reference, Text FROM Volume_Memo ORDER BY Reference");
    std::int64_t last = 0;
    while (rows.Step()) {
        const std::int64_t reference = sqlite3_column_int64(rows.Get(), 0);
        if (reference < 1 || static_cast<std::uint64_t>(reference) > kLastReference ||
            reference <= last) {
            throw StoreFailure(error::kDamaged, "reference " + std::to_string(reference) +
                                                    " after " + std::to_string(last));
        }
        last = reference;
        m_texts.emplace(static_cast<std::uint32_t>(last), Readable(rows.GetText(1)));
    }
    m_next = static_cast<std::uint64_t>(last) + 1;
}

void MemoStore::Load() {
    if (m_loaded) {
        return;
    }
    try {
        LoadRows();
    } catch (const StoreFailure& failure) {
        m_texts.clear();
        throw StoreFailure(failure.code, "the memos: " + failure.detail);
    } catch (...) {
        m_texts.clear();
        throw;
    }
    m_nextAtStep = m_next;
    m_loaded = true;
}

std::uint32_t MemoStore::Add(const CString& text) {
    if (text.empty()) {
        return 0;
    }
    if (text.size() > kMostUnits) {
        throw StoreFailure(error::kInvalidArgument,
                           "a memo of " + std::to_string(text.size()) + " characters is too long");
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
    if (!m_texts.contains(reference)) {
        return;
    }
    // What may fail for want of memory comes first: a text must not be removed without a note of
    // it.
    if (reference < m_nextAtStep) {
        m_freedInStep.insert(reference);
    }
    if (m_unsaved.erase(reference) == 0) {
        m_freed.insert(reference);
    }
    m_texts.erase(reference);
}

const CString& MemoStore::Get(std::uint32_t reference) {
    Load();
    const auto found = m_texts.find(reference);
    if (found == m_texts.end()) {
        throw StoreFailure(error::kDamaged,
                           "there is no memo with the reference " + std::to_string(reference));
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
            insert.BindInt(1, reference);
            insert.BindText(2, std::u16string_view(text));
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

bool MemoStore::DatabaseHoldsStep() {
    SqlStatement row(m_connection, "SELECT 1 FROM Volume_Memo WHERE Reference = ?1");
    const auto stored = [&](std::uint64_t reference) {
        const SqlUse use(row);
        row.BindInt(1, static_cast<std::int64_t>(reference));
        return row.Step();
    };
    for (std::uint64_t reference = m_nextAtStep; reference < m_next; ++reference) {
        if (stored(reference) != m_texts.contains(static_cast<std::uint32_t>(reference))) {
            return false;
        }
    }
    return std::none_of(m_freedInStep.begin(), m_freedInStep.end(), stored);
}

void MemoStore::ReadBack(std::uint32_t reference) {
    SqlStatement row(m_connection, "SELECT Text FROM Volume_Memo WHERE Reference = ?1");
    row.BindInt(1, reference);
    if (row.Step()) {
        m_texts.insert_or_assign(reference, Readable(row.GetText(0)));
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
        // The next use loads everything again.
        m_texts.clear();
        m_loaded = false;
    }
    m_unsaved.clear();
    m_freed.clear();
    m_freedInStep.clear();
    m_dirtyUnits = 0;
}

}  // namespace cqsurvey
