#include "tables/CqEntityTable.h"

namespace cqsurvey {

void CqEntityTable::Create(const CString& name) {
    CqDbTable::Create(name);
    Append(Layout::Bytes{}.data());
}

void CqEntityTable::Open(const CString& name) {
    CqDbTable::Open(name);
    // A file without its header record counts as an empty drawing.
    m_head = 0;
    m_tail = 0;
    if (First(kRecordOrder) != 0 && GetCurrentHandle() == kHeader) {
        m_head = Get<"NextEntityIndex">();
        m_tail = Get<"PrevEntityIndex">();
    }
    KeepStep();
}

void CqEntityTable::StoreHeader() {
    Edit(kHeader, [this](std::byte* header) {
        Layout::Set<"NextEntityIndex">(header, m_head);
        Layout::Set<"PrevEntityIndex">(header, m_tail);
    });
}

CqHandle CqEntityTable::AppendEntity(const Entity& entity, CqHandle prev, CqHandle next) {
    const CqHandle oldTail = m_tail;
    Layout::Bytes bytes{};
    std::byte* record = bytes.data();
    Layout::Set<"ObjectType">(record, entity.type);
    Layout::Set<"ObjectIndex">(record, entity.objectIndex);
    Layout::Set<"LayerIndex">(record, entity.layerIndex);
    Layout::Set<"ColorID">(record, entity.colorID);
    Layout::Set<"N">(record, entity.n);
    Layout::Set<"E">(record, entity.e);
    Layout::Set<"Z">(record, entity.z);
    Layout::Set<"PrevEntityIndex">(record, prev == 0 ? oldTail : prev);
    Layout::Set<"NextEntityIndex">(record, next);
    // The neighbours come after the record, whose handle they need. The header is written once and
    // only if it has changed.
    const CqHandle handle = AppendRecord(bytes);
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

const std::byte* CqEntityTable::FindEntity(CqHandle handle, int type) {
    if (handle <= kHeader) {
        return nullptr;
    }
    const std::byte* record = RecordAt(handle);
    return Layout::Get<"ObjectType">(record) == type ? record : nullptr;
}

void CqEntityTable::StorePoint(CqHandle handle, const double* coords) {
    Edit(handle, [coords](std::byte* record) {
        Layout::Set<"E">(record, coords[0]);
        Layout::Set<"N">(record, coords[1]);
        Layout::Set<"Z">(record, coords[2]);
    });
}

void CqEntityTable::Remove(CqHandle handle, bool relink) {
    if (handle <= kHeader) {
        return;
    }
    // The links must be read before the record is gone.
    const auto prev = GetAt<"PrevEntityIndex">(handle);
    const auto next = GetAt<"NextEntityIndex">(handle);
    DeleteRecord(handle);
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
    Edit(record, [value](std::byte* bytes) { Layout::Set<"NextEntityIndex">(bytes, value); });
}

void CqEntityTable::SetPrev(CqHandle record, CqHandle value) {
    Edit(record, [value](std::byte* bytes) { Layout::Set<"PrevEntityIndex">(bytes, value); });
}

void CqEntityTable::KeepStep() noexcept {
    m_headAtStep = m_head;
    m_tailAtStep = m_tail;
}

void CqEntityTable::UndoStep() noexcept {
    CqDbTable::UndoStep();
    m_head = m_headAtStep;
    m_tail = m_tailAtStep;
}

}  // namespace cqsurvey
