#include "store/CheckedFile.h"

#include <algorithm>
#include <array>
#include <new>

#include "store/DatabasePage.h"

namespace cqsurvey {

int CheckedFile::KeepFirstPage(const std::byte* bytes, std::size_t count) {
    try {
        m_marked.resize(count);
        m_firstPage.resize(count);
    } catch (const std::bad_alloc&) {
        return SQLITE_IOERR_NOMEM;
    }
    std::copy_n(bytes, count, m_firstPage.begin());
    return SQLITE_OK;
}

int CheckedFile::SetSums(PageSums sums) {
    m_stepOpen = false;
    std::array<std::byte, DatabaseHeader::kSize> start{};
    int result = m_real->pMethods->xRead(m_real, start.data(), static_cast<int>(start.size()), 0);
    if (result != SQLITE_OK && result != SQLITE_IOERR_SHORT_READ) {
        return result;
    }
    const DatabaseHeader header(start.data());
    const bool isNew = result == SQLITE_IOERR_SHORT_READ;
    m_step = isNew ? 0 : header.GetStep();
    m_stepBefore = m_step;
    m_firstPage.clear();
    if (sums == PageSums::Kept) {
        const std::size_t size = header.GetPageSize();
        if (isNew || !IsPageSize(size)) {
            return SQLITE_NOTADB;
        }
        std::vector<std::byte> page;
        try {
            page.resize(size);
        } catch (const std::bad_alloc&) {
            return SQLITE_NOMEM;
        }
        result = m_real->pMethods->xRead(m_real, page.data(), static_cast<int>(size), 0);
        if (result == SQLITE_OK) {
            result = KeepFirstPage(page.data(), size);
        }
        if (result != SQLITE_OK) {
            return result;
        }
    }
    m_sums = sums;
    return SQLITE_OK;
}

int CheckedFile::Read(void* buffer, int count, sqlite3_int64 at) {
    const int result = m_real->pMethods->xRead(m_real, buffer, count, at);
    const auto size = static_cast<std::size_t>(count);
    if (result != SQLITE_OK || m_sums != PageSums::Kept || !IsPageSize(size)) {
        return result;
    }
    auto* page = static_cast<std::byte*>(buffer);
    if (!HasItsSum(page, size)) {
        m_wrongPage = static_cast<std::uint32_t>(at / count) + 1;
        return SQLITE_IOERR_DATA;
    }
    if (at == 0 && m_stepOpen && size == m_firstPage.size()) {
        // The page cache, and with it the next journal, must never see the mark.
        std::copy(m_firstPage.begin(), m_firstPage.end(), page);
    }
    return SQLITE_OK;
}

int CheckedFile::WriteMark() {
    m_marked = m_firstPage;
    DatabaseHeader::Stamp(m_marked.data(), m_marked.size(), m_stepBefore + 1, false);
    m_stepOpen = true;
    return WriteReal(m_marked.data(), m_marked.size(), 0);
}

int CheckedFile::Write(const void* bytes, int count, sqlite3_int64 at) {
    const auto size = static_cast<std::size_t>(count);
    if (m_sums == PageSums::Ignored || !IsPageSize(size)) {
        return m_real->pMethods->xWrite(m_real, bytes, count, at);
    }
    // The bytes are a page of SQLite's cache, or a buffer that it is about to copy there. The sum
    // is written into them, so that the cache holds what the file does.
    auto* page = static_cast<std::byte*>(const_cast<void*>(bytes));
    if (at == 0) {
        // A page that is as the journal has it is being put back: the step is undone.
        const DatabaseHeader header(page);
        if (!header.HasPageSums() || !HasItsSum(page, size) || header.GetStep() != m_stepBefore) {
            DatabaseHeader::Stamp(page, size, m_stepBefore + 1, true);
        }
        const int result = KeepFirstPage(page, size);
        return result == SQLITE_OK ? WriteMark() : result;
    }
    if (!m_stepOpen && !m_firstPage.empty()) {
        DatabaseHeader::Stamp(m_firstPage.data(), m_firstPage.size(), m_stepBefore + 1, true);
        if (const int result = WriteMark(); result != SQLITE_OK) {
            return result;
        }
    }
    WritePageSum(page, size);
    return WriteReal(page, size, at);
}

int CheckedFile::EndStep() {
    if (!m_stepOpen || m_sums == PageSums::Ignored) {
        return SQLITE_OK;
    }
    const int result = WriteReal(m_firstPage.data(), m_firstPage.size(), 0);
    if (result == SQLITE_OK) {
        m_step = DatabaseHeader(m_firstPage.data()).GetStep();
        m_stepOpen = false;
    }
    return result;
}

void CheckedFile::BeginJournal(std::byte* header) {
    m_stepBefore = m_step;
    if (m_sums == PageSums::Kept && !m_stepOpen) {
        JournalStamp stamp{m_step, {}};
        std::copy(m_firstPage.end() - kPageSumBytes, m_firstPage.end(), stamp.sum.begin());
        stamp.Write(header);
    }
}

}  // namespace cqsurvey
