#include "tables/CqEntityTable.h"

namespace cqsurvey {

void CqEntityTable::Create(const CString& name) {
    CqDbTable::Create(name);
    Append(Layout::Bytes{}.data());
}

void CqEntityTable::Open(const CString& name) {
    CqDbTable::Open(name);
    m_head = 0;
    m_tail = 0;
    if (First(kRecordOrder) != 0 && GetCurrentHandle() == kHeader) {
        m_head = Get<"NextEntityIndex">();
        m_tail = Get<"PrevEntityIndex">();
    }
    KeepStep();
}

void CqEntityTable::StoreHeader() {
    GoTo(kHeader);
    Set<"NextEntityIndex">(m_head);
    Set<"PrevEntityIndex">(m_tail);
    Store();
}

CqHandle CqEntityTable::AppendEntity(std::uint16_t type, CqHandle objectIndex,
                                     std::uint16_t layerIndex, std::int32_t colorID, double n,
                                     double e, double z, CqHandle prev, CqHandle next) {
    const CqHandle oldTail = m_tail;
    Layout::Bytes record{};
    Layout::Set<"ObjectType">(record.data(), type);
    Layout::Set<"ObjectIndex">(record.data(), objectIndex);
    Layout::Set<"LayerIndex">(record.data(), layerIndex);
    Layout::Set<"ColorID">(record.data(), colorID);
    Layout::Set<"N">(record.data(), n);
    Layout::Set<"E">(record.data(), e);
    Layout::Set<"Z">(record.data(), z);
    Layout::Set<"PrevEntityIndex">(record.data(), prev == 0 ? oldTail : prev);
    Layout::Set<"NextEntityIndex">(record.data(), next);
    const CqHandle handle = AppendRecord(record);
    if (prev == 0) {
        if (oldTail != 0) {
            SetNext(oldTail, handle);
        } else {
            m_head = handle;
        }
    }
    if (next == 0) {
        m_tail = handle;
    }
    if (next == 0 || (prev == 0 && oldTail == 0)) {
        StoreHeader();
    }
    return handle;
}

void CqEntityTable::Remove(CqHandle handle, bool relink) {
    if (handle <= kHeader) {
        return;
    }
    GoTo(handle);
    const auto prev = Get<"PrevEntityIndex">();
    const auto next = Get<"NextEntityIndex">();
    DeleteCurrent();
    SetIndex(kRecordOrder);
    if (!relink) {
        return;
    }
    if (prev != 0) {
        SetNext(prev, next);
    } else {
        m_head = next;
    }
    if (next != 0) {
        SetPrev(next, prev);
    } else {
        m_tail = prev;
    }
    if (prev == 0 || next == 0) {
        StoreHeader();
    }
}

void CqEntityTable::SetNext(CqHandle record, CqHandle value) {
    GoTo(record);
    Set<"NextEntityIndex">(value);
    Store();
}

void CqEntityTable::SetPrev(CqHandle record, CqHandle value) {
    GoTo(record);
    Set<"PrevEntityIndex">(value);
    Store();
}

void CqEntityTable::KeepStep() noexcept {
    m_headAtStep = m_head;
    m_tailAtStep = m_tail;
}

void CqEntityTable::UndoStep() noexcept {
    m_head = m_headAtStep;
    m_tail = m_tailAtStep;
}

}  // namespace cqsurvey
