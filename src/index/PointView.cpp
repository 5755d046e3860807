#include "index/PointView.h"

#include <utility>

#include "index/NameKey.h"

namespace cqsurvey {

namespace {

/// 0 for a record that is gone.
std::int32_t CodeOf(const std::byte* record) {
    return record == nullptr ? 0 : PointLayout::Get<"FeatureCode">(record);
}

}  // namespace

PointView::PointView(const PointRecords& records) : m_records(records) {}

std::uint32_t PointView::PlaceByCode(const std::byte* record) const {
    const std::int32_t code = CodeOf(record);
    return m_content.points.CountPreceding([&](CqHandle entry) {
        return m_content.setting.CompareCodes(code, CodeOf(m_records.Peek(entry))) >= 1;
    });
}

std::uint32_t PointView::PlaceByName(const std::byte* record) const {
    const HandleSequence& points = m_content.points;
    const StoredPointName name(record);
    const NameKey key = MakeNameKey(name.View());
    const auto precedes = [&](CqHandle entry) {
        const StoredPointName other(m_records.Peek(entry));
        return m_content.setting.CompareNames(key, MakeNameKey(other.View())) >= 1;
    };
    const std::uint32_t likely = m_likelyPlace;
    if (!m_content.isStale && likely <= points.Size() &&
        (likely == 0 || precedes(points.At(likely - 1))) &&
        (likely == points.Size() || !precedes(points.At(likely)))) {
        return likely;
    }
    return points.CountPreceding(precedes);
}

std::uint32_t PointView::PlaceFor(const std::byte* record) const {
    switch (m_content.setting.SortedBy()) {
        case ViewSetting::SortKey::Name:
            return PlaceByName(record);
        case ViewSetting::SortKey::Code:
            return PlaceByCode(record);
        default:
            return m_content.setting.IsReversed() ? 0 : Size();
    }
}

void PointView::Insert(CqHandle handle, const std::byte* record) {
    if (!m_content.setting.Admits(record)) {
        return;
    }
    const std::uint32_t place = PlaceFor(record);
    m_content.points.Insert(place, handle);
    // Points are mostly recorded in the order of their names.
    m_likelyPlace = m_content.setting.IsDescending() ? place : place + 1;
    EnterEntity(PointLayout::Get<"EntityIndex">(record));
}

void PointView::Remove(CqHandle handle, const std::byte* record) {
    const auto index = m_content.points.IndexOf(handle);
    if (!m_content.setting.Admits(record)) {
        m_content.isStale = m_content.isStale || index.has_value();
        return;
    }
    RemoveEntity(PointLayout::Get<"EntityIndex">(record));
    if (index) {
        m_content.points.RemoveAt(*index);
        // A point that is edited mostly comes back where it stood.
        m_likelyPlace = *index;
    }
}

void PointView::EnterEntity(CqHandle entity) {
    m_entityChanges.Reserve(1);
    if (m_content.entities.Insert(entity) && !m_replaced) {
        m_entityChanges.Push({entity, true});
    }
}

void PointView::RemoveEntity(CqHandle entity) {
    m_entityChanges.Reserve(1);
    if (m_content.entities.Erase(entity) && !m_replaced) {
        m_entityChanges.Push({entity, false});
    }
}

void PointView::Replace(ViewContent content) noexcept {
    if (!m_replaced) {
        m_replaced = std::move(m_content);
    }
    m_content = std::move(content);
}

void PointView::KeepStep() noexcept {
    m_content.points.KeepStep();
    m_entityChanges.Clear();
    m_replaced.reset();
}

void PointView::UndoStep() noexcept {
    if (m_replaced) {
        m_content = std::move(*m_replaced);
        m_replaced.reset();
    }
    m_content.points.UndoStep();
    m_entityChanges.TakeBack([this](const Change& change) {
        if (change.isEntered) {
            m_content.entities.Erase(change.entity);
        } else {
            m_content.entities.Insert(change.entity);
        }
    });
}

}  // namespace cqsurvey
