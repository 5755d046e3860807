#include "tables/CqPointTable.h"

#include <utility>

#include "index/PointStaging.h"

namespace cqsurvey {

CqPointTable::CqPointTable() {
    ClearIndexes();
}

CqPointTable::~CqPointTable() = default;

void CqPointTable::ClearIndexes() {
    const PointRecords& records = *this;
    m_names.emplace(records);
    m_view.emplace(records);
}

const std::byte* CqPointTable::Peek(CqHandle handle) const {
    return QrdbPeekRecord(m_hTable, handle);
}

template <class Visit>
void CqPointTable::ForEachRecord(Visit&& visit) {
    for (int more = First(kRecordOrder); more != 0; more = Next()) {
        visit(GetCurrentHandle(), Record());
    }
}

void CqPointTable::Open(const CString& name) {
    CqRecordTable::Open(name);
    const auto count = static_cast<std::size_t>(GetRecordCount());
    m_names->Reserve(count);
    PointStaging staging{ViewSetting()};
    staging.Reserve(count);
    ForEachRecord([&](CqHandle handle, const std::byte* record) {
        m_names->Load(StoredPointName(record).View(), handle);
        staging.Stage(handle, record);
    });
    m_view->Replace(staging.Finish());
    m_view->KeepStep();
}

void CqPointTable::Close() {
    ClearIndexes();
    CqRecordTable::Close();
}

CqHandle CqPointTable::FindByName(std::u16string_view name) {
    const CqHandle handle = m_names->Find(field::UpToZero(name));
    if (handle != 0) {
        GoTo(handle);
    }
    return handle;
}

bool CqPointTable::HasName(std::u16string_view name) const {
    return m_names->Find(field::UpToZero(name)) != 0;
}

void CqPointTable::EnterName(CqHandle handle) {
    m_names->Enter(StoredPointName(Record()).View(), handle);
}

void CqPointTable::RemoveName() {
    m_names->Remove(StoredPointName(Record()).View());
}

bool CqPointTable::IsAdmitted() {
    return m_view->Setting().Admits(Record());
}

void CqPointTable::InsertIntoView() {
    m_view->Insert(GetCurrentHandle(), Record());
}

void CqPointTable::RemoveFromView() {
    m_view->Remove(GetCurrentHandle(), Record());
}

void CqPointTable::EnterEntity(CqHandle entity) {
    m_view->EnterEntity(entity);
}

bool CqPointTable::IsEntityInView(CqHandle entity) const {
    return m_view->HasEntity(entity);
}

std::int32_t CqPointTable::SetSetting(std::uint16_t key, std::uint16_t order,
                                      const COORDFILTER& filter) {
    PointStaging staging(ViewSetting(key, order, filter));
    staging.Reserve(static_cast<std::size_t>(GetRecordCount()));
    ForEachRecord([&](CqHandle handle, const std::byte* record) { staging.Stage(handle, record); });
    m_view->Replace(staging.Finish());
    return ViewSize();
}

std::int32_t CqPointTable::GetSetting(std::uint16_t& key, std::uint16_t& order,
                                      COORDFILTER& filter) const {
    const ViewSetting& setting = m_view->Setting();
    filter = setting.Filter();
    key = setting.Key();
    order = setting.Order();
    return ViewSize();
}

std::int32_t CqPointTable::ViewSize() const {
    return static_cast<std::int32_t>(m_view->Size());
}

CqHandle CqPointTable::ViewAt(std::int32_t index) const {
    return m_view->At(static_cast<std::uint32_t>(index));
}

void CqPointTable::KeepStep() noexcept {
    m_names->KeepStep();
    m_view->KeepStep();
}

void CqPointTable::UndoStep() noexcept {
    m_names->UndoStep();
    m_view->UndoStep();
}

}  // namespace cqsurvey
