#include "index/PointIndex.h"

#include "index/PointStaging.h"
#include "store/StoreExtras.h"

namespace cqsurvey {

PointIndex::PointIndex(CqPointTable& points) : m_points(points) {
    Clear();
}

PointIndex::~PointIndex() = default;

void PointIndex::Clear() {
    const PointRecords& records = *this;
    m_names.emplace(records);
    m_view.emplace(records);
}

const std::byte* PointIndex::Peek(CqHandle handle) const {
    return StorePeekRecord(m_points.GetTable(), handle);
}

void PointIndex::Build() {
    Clear();
    const auto count = static_cast<std::size_t>(m_points.GetRecordCount());
    m_names->Reserve(count);
    PointStaging staging{ViewSetting()};
    staging.Reserve(count);
    m_points.ForEach([&](CqHandle handle, const std::byte* record) {
        m_names->Load(StoredPointName(record).View(), handle);
        staging.Stage(handle, record);
    });
    m_view->Replace(staging.Finish());
    m_view->KeepStep();
}

CqHandle PointIndex::FindByName(std::u16string_view name) const {
    return m_names->Find(field::UpToZero(name));
}

void PointIndex::EnterName(CqHandle handle, const std::byte* record) {
    m_names->Enter(StoredPointName(record).View(), handle);
}

void PointIndex::RemoveName(const std::byte* record) {
    m_names->Remove(StoredPointName(record).View());
}

void PointIndex::EnterIntoView(CqHandle handle, const std::byte* record) {
    m_view->Insert(handle, record);
}

void PointIndex::RemoveFromView(CqHandle handle, const std::byte* record) {
    m_view->Remove(handle, record);
}

bool PointIndex::IsEntityInView(CqHandle entity) const {
    return m_view->HasEntity(entity);
}

std::int32_t PointIndex::SetSetting(std::uint16_t key, std::uint16_t order,
                                    const COORDFILTER& filter) {
    PointStaging staging(ViewSetting(key, order, filter));
    staging.Reserve(static_cast<std::size_t>(m_points.GetRecordCount()));
    m_points.ForEach(
        [&](CqHandle handle, const std::byte* record) { staging.Stage(handle, record); });
    m_view->Replace(staging.Finish());
    return ViewSize();
}

std::int32_t PointIndex::GetSetting(std::uint16_t& key, std::uint16_t& order,
                                    COORDFILTER& filter) const {
    const ViewSetting& setting = m_view->Setting();
    filter = setting.Filter();
    key = setting.Key();
    order = setting.Order();
    return ViewSize();
}

std::int32_t PointIndex::ViewSize() const {
    return static_cast<std::int32_t>(m_view->Size());
}

CqHandle PointIndex::ViewAt(std::int32_t index) const {
    return m_view->At(static_cast<std::uint32_t>(index));
}

void PointIndex::KeepStep() noexcept {
    m_names->KeepStep();
    m_view->KeepStep();
}

void PointIndex::UndoStep() noexcept {
    m_names->UndoStep();
    m_view->UndoStep();
}

}  // namespace cqsurvey
