#include "index/PointView.h"

#include <utility>

#include "index/NameKey.h"
#include "index/SortDigest.h"

namespace cqsurvey {

namespace {

/// 0 for a record that is gone.
std::int32_t CodeOf(const std::byte* record) {
    return record == nullptr ? 0 : PointLayout::Get<"FeatureCode">(record);
}

}  // namespace

PointView::PointView(const PointRecords& records) : m_records(records) {}

SortDigest PointView::DigestOf(const std::byte* record) const {
    switch (m_content.setting.SortedBy()) {
        case ViewSetting::SortKey::Name:
            return DigestOfName(MakeNameKey(StoredPointName(record).View()));
        case ViewSetting::SortKey::Code:
            return DigestOfCode(CodeOf(record));
        default:
            return {};
    }
}

bool PointView::IsOrdered() const noexcept {
    return !m_stale && !m_content.codes.Wraps();
}

bool PointView::GoesBehind(const std::byte* record, CqHandle entry) const {
    const bool descending = m_content.setting.IsDescending();
    const std::byte* other = m_records.Peek(entry);
    if (m_content.setting.SortedBy() == ViewSetting::SortKey::Code) {
        return CompareCodes(CodeOf(record), CodeOf(other), descending) >= 1;
    }
    const StoredPointName name(record);
    const StoredPointName otherName(other);
    const int comparison = CompareNameKeys(MakeNameKey(name.View()), MakeNameKey(otherName.View()));
    return (descending ? -comparison : comparison) >= 1;
}

std::uint32_t PointView::PlaceAmongUnordered(const std::byte* record) const {
    // The outcome depends on the entries that the search happens to meet.
    std::uint32_t low = 0;
    std::uint32_t high = Size();
    while (low < high) {
        const std::uint32_t middle = (low + high) / 2;
        if (GoesBehind(record, At(middle))) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    return low;
}

std::uint32_t PointView::PlaceFor(const std::byte* record, const SortDigest& digest) const {
    const ViewSetting& setting = m_content.setting;
    if (setting.SortedBy() == ViewSetting::SortKey::Record) {
        return setting.IsReversed() ? 0 : Size();
    }
    if (!IsOrdered()) {
        return PlaceAmongUnordered(record);
    }
    const HandleSequence& points = m_content.points;
    const auto goesBehind = [&](const HandleSequence::Entry& entry) {
        if (digest != entry.digest) {
            return setting.IsDescending() ? digest < entry.digest : digest > entry.digest;
        }
        return !digest.IsExact() && GoesBehind(record, entry.handle);
    };
    // Points mostly come in order: right behind the last one, or right in front of it.
    const std::uint32_t last = m_lastPlace;
    if (last < points.Size()) {
        if (goesBehind(points.EntryAt(last))) {
            if (last + 1 == points.Size() || !goesBehind(points.EntryAt(last + 1))) {
                return last + 1;
            }
        } else if (last == 0 || goesBehind(points.EntryAt(last - 1))) {
            return last;
        }
    }
    return points.CountPreceding(goesBehind);
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
        m_content.codes.Add(CodeOf(record));
    }
    const SortDigest digest = DigestOf(record);
    const std::uint32_t place = PlaceFor(record, digest);
    m_content.points.Insert(place, {handle, digest});
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
        m_removed.Reserve(1);
        if (!m_replaced) {
            m_removed.Push(m_content.points.EntryAt(*index).digest);
        }
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
    m_removed.Clear();
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
                m_content.points.Insert(change.index, {change.handle, m_removed.Pop()});
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
