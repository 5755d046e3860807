#include "storage/PointView.h"

#include <utility>

#include "storage/NameKey.h"

namespace cqsurvey {

PointView::PointView(const PointRecords& records) : m_records(records) {}

template <class GoesBehind>
std::uint32_t PointView::Search(GoesBehind&& goesBehind) const {
    const HandleSequence& points = m_content.points;
    if (m_stale || m_content.codes.Wraps()) {
        // The entries are in no order, so the outcome depends on those that the search meets.
        std::uint32_t low = 0;
        std::uint32_t high = points.Size();
        while (low < high) {
            const std::uint32_t middle = (low + high) / 2;
            if (goesBehind(points.At(middle))) {
                low = middle + 1;
            } else {
                high = middle;
            }
        }
        return low;
    }
    // Points mostly come in order: right behind the last one, or right in front of it.
    const std::uint32_t last = m_lastPlace;
    if (last < points.Size()) {
        if (goesBehind(points.At(last))) {
            if (last + 1 == points.Size() || !goesBehind(points.At(last + 1))) {
                return last + 1;
            }
        } else if (last == 0 || goesBehind(points.At(last - 1))) {
            return last;
        }
    }
    return points.CountPreceding(goesBehind);
}

std::uint32_t PointView::PlaceFor(const std::byte* record) const {
    const ViewSetting& setting = m_content.setting;
    const bool descending = setting.IsDescending();
    switch (setting.SortedBy()) {
        case ViewSetting::SortKey::Name: {
            const StoredPointName name(record);
            const NameKey key = MakeNameKey(name.View());
            return Search([&](CqHandle entry) {
                const StoredPointName other(m_records.Peek(entry));
                const int comparison = CompareNameKeys(key, MakeNameKey(other.View()));
                return (descending ? -comparison : comparison) >= 1;
            });
        }
        case ViewSetting::SortKey::Code: {
            const std::int32_t code = PointLayout::Get<"FeatureCode">(record);
            return Search([&](CqHandle entry) {
                const std::byte* other = m_records.Peek(entry);
                const std::int32_t otherCode =
                    other == nullptr ? 0 : PointLayout::Get<"FeatureCode">(other);
                return CompareCodes(code, otherCode, descending) >= 1;
            });
        }
        default:
            return setting.IsReversed() ? 0 : Size();
    }
}

void PointView::Log(Action action, std::uint32_t index, CqHandle handle) {
    if (!m_replaced) {
        m_changes.Push(Change{action, index, handle});
    }
}

void PointView::Insert(CqHandle handle, const std::byte* record) {
    if (!m_content.setting.Admits(record)) {
        return;
    }
    m_changes.Reserve(1);
    if (m_content.setting.SortedBy() == ViewSetting::SortKey::Code) {
        m_content.codes.Add(PointLayout::Get<"FeatureCode">(record));
    }
    const std::uint32_t place = PlaceFor(record);
    m_content.points.Insert(place, handle);
    m_lastPlace = place;
    Log(Action::Insert, place, handle);
    EnterEntity(PointLayout::Get<"EntityIndex">(record));
}

void PointView::Remove(CqHandle handle, const std::byte* record) {
    const auto index = m_content.points.IndexOf(handle);
    if (!m_content.setting.Admits(record)) {
        m_stale = m_stale || index.has_value();
        return;
    }
    RemoveEntity(PointLayout::Get<"EntityIndex">(record));
    if (index) {
        m_changes.Reserve(1);
        m_content.points.RemoveAt(*index);
        Log(Action::Remove, *index, handle);
    }
}

void PointView::EnterEntity(CqHandle entity) {
    m_changes.Reserve(1);
    if (m_content.entities.Insert(entity)) {
        Log(Action::EnterEntity, 0, entity);
    }
}

void PointView::RemoveEntity(CqHandle entity) {
    m_changes.Reserve(1);
    if (m_content.entities.Erase(entity)) {
        Log(Action::RemoveEntity, 0, entity);
    }
}

void PointView::Replace(ViewContent content) noexcept {
    if (!m_replaced) {
        m_replaced = std::move(m_content);
    }
    m_content = std::move(content);
    m_stale = false;
    m_lastPlace = 0;
}

void PointView::KeepStep() noexcept {
    m_keptCodes = m_content.codes;
    m_keptStale = m_stale;
    m_changes.Clear();
    m_replaced.reset();
}

void PointView::UndoStep() noexcept {
    if (m_replaced) {
        m_content = std::move(*m_replaced);
        m_replaced.reset();
    }
    m_changes.TakeBack([this](const Change& change) {
        switch (change.action) {
            case Action::Insert:
                m_content.points.RemoveAt(change.index);
                break;
            case Action::Remove:
                m_content.points.Insert(change.index, change.handle);
                break;
            case Action::EnterEntity:
                m_content.entities.Erase(change.handle);
                break;
            case Action::RemoveEntity:
                m_content.entities.Insert(change.handle);
                break;
        }
    });
    m_content.codes = m_keptCodes;
    m_stale = m_keptStale;
}

}  // namespace cqsurvey
