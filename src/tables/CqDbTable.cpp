#include "tables/CqDbTable.h"

#include "cqsurvey/CqSurveyException.h"
#include "store/Qrfs.h"
#include "store/StoreExtras.h"
#include "store/ThrowStorageError.h"

namespace cqsurvey {

namespace {

void Require(bool done) {
    if (!done) {
        ThrowLastStorageError();
    }
}

/// The result of a move: 0 without an error means that there is no such record.
int Moved(int result) {
    if (result == 0 && QrfsGetLastError() != error::kNone) {
        ThrowLastStorageError();
    }
    return result;
}

}  // namespace

CqDbTable::~CqDbTable() {
    try {
        CqDbTable::Close();
    } catch (...) {
        // The handle is given up anyway, and a destructor has nobody to tell.
    }
}

void CqDbTable::Create(const CString& name) {
    if (IsOpen()) {
        Close();
    }
    Require(QrdbCreateTable(name, m_nFields, m_pFieldDefs) != 0);
    Open(name);
}

void CqDbTable::Open(const CString& name) {
    if (IsOpen()) {
        Close();
    }
    m_hTable = QrdbOpenTable(name);
    Require(m_hTable != 0);
    if (StoreCheckTable(m_hTable, m_nFields, m_pFieldDefs) == 0) {
        // Closing may set the last error, so the failure is made before it.
        const std::int32_t code = QrfsGetLastError();
        const CqSurveyException failure(code, StoreErrorDetail());
        CqDbTable::Close();
        throw failure;
    }
}

void CqDbTable::Close() {
    // The handle is given up first: the object is closed even if the store refuses.
    const std::uint32_t table = m_hTable;
    m_hTable = 0;
    m_bLoaded = 0;
    if (table != 0) {
        Require(QrdbCloseTable(table) != 0);
    }
}

std::int32_t CqDbTable::GetRecordCount() const {
    const std::int32_t count = QrdbGetRecordCount(m_hTable);
    Require(count >= 0);
    return count;
}

int CqDbTable::First(std::int32_t index) {
    SetIndex(index);
    return Moved(QrdbMoveFirst(m_hTable));
}

int CqDbTable::Last(std::int32_t index) {
    SetIndex(index);
    return Moved(QrdbMoveLast(m_hTable));
}

int CqDbTable::Next() {
    m_bLoaded = 0;
    return Moved(QrdbMoveNext(m_hTable));
}

int CqDbTable::Prev() {
    m_bLoaded = 0;
    return Moved(QrdbMovePrev(m_hTable));
}

int CqDbTable::Append(const void* record) {
    const int result = QrdbAppendRecord(m_hTable, record);
    Require(result != 0);
    return result;
}

CqHandle CqDbTable::AppendCurrent(const void* record) {
    m_bLoaded = 0;
    const CqHandle handle = StoreAppendCurrent(m_hTable, record);
    Require(handle != 0);
    m_bLoaded = 1;
    return handle;
}

void CqDbTable::SetIndex(std::int32_t index) {
    m_bLoaded = 0;
    Require(QrdbSetIndex(m_hTable, index) != 0);
}

void CqDbTable::GoTo(CqHandle handle) {
    m_bLoaded = 0;
    Require(QrdbGoToRecord(m_hTable, handle) != 0);
}

const std::byte* CqDbTable::PeekRecord(CqHandle handle) const {
    const std::byte* record = StorePeekRecord(m_hTable, handle);
    Require(record != nullptr || QrfsGetLastError() == error::kNone);
    return record;
}

const std::byte* CqDbTable::RecordAt(CqHandle handle) {
    const std::byte* record = PeekRecord(handle);
    if (record == nullptr) {
        // Fails with the store's own text, which names table and record.
        GoTo(handle);
    }
    return record;
}

CqHandle CqDbTable::NextHandle() const {
    const CqHandle handle = StoreNextRecord(m_hTable);
    Require(handle != 0);
    return handle;
}

CqHandle CqDbTable::GetCurrentHandle() const {
    return QrdbGetCurrentHandle(m_hTable);
}

int CqDbTable::IsAtEnd() const {
    return QrdbIsAtEnd(m_hTable);
}

void CqDbTable::LoadCurrent(void* buffer) {
    m_bLoaded = 0;
    Require(QrdbReadRecord(m_hTable, buffer) != 0);
    m_bLoaded = 1;
}

void CqDbTable::UpdateCurrent(const void* buffer) {
    m_bLoaded = 0;
    Require(QrdbWriteRecord(m_hTable, buffer) != 0);
    m_bLoaded = 1;
}

void CqDbTable::DeleteCurrent() {
    m_bLoaded = 0;
    Require(QrdbDeleteRecord(m_hTable) != 0);
}

void CqDbTable::WriteMemo(const CString& text, void* memoField) {
    Require(QrdbWriteMemo(m_hTable, text, memoField) != 0);
}

void CqDbTable::ReadMemo(char16_t* dest, std::uint16_t maxBytes, std::uint32_t memoRef) const {
    if (memoRef == 0) {
        *dest = 0;
        return;
    }
    Require(QrdbReadMemo(m_hTable, dest, maxBytes, memoRef) != 0);
}

std::int32_t CqDbTable::CountRecords(const CString& name) {
    const std::uint32_t table = QrdbOpenTable(name);
    if (table == 0) {
        return 0;
    }
    const std::int32_t count = QrdbGetRecordCount(table);
    QrdbCloseTable(table);
    return count;
}

}  // namespace cqsurvey
