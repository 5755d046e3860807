#include "storage/PointNameIndex.h"

namespace cqsurvey {

std::uint32_t PointNameIndex::Hash(std::u16string_view name) noexcept {
    std::uint64_t hash = 0x9E3779B97F4A7C15U ^ name.size();
    for (const char16_t unit : name) {
        hash = (hash ^ unit) * 0xD6E8FEB86659FD93U;
        hash ^= hash >> 32;
    }
    hash *= 0xD6E8FEB86659FD93U;
    return static_cast<std::uint32_t>(hash >> 32);
}

std::size_t PointNameIndex::PlaceOf(std::uint32_t hash, std::u16string_view name) const {
    return m_slots.Find(hash, [&](const Slot& slot) {
        return StoredPointName(m_records.Peek(slot.handle)).View() == name;
    });
}

CqHandle PointNameIndex::Find(std::u16string_view name) const {
    if (name.empty() || name.size() > StoredPointName::Type::kCapacity) {
        return 0;
    }
    const std::size_t place = PlaceOf(Hash(name), name);
    return place == Table::kNone ? 0 : m_slots[place].handle;
}

CqHandle PointNameIndex::Put(std::uint32_t hash, std::u16string_view name, CqHandle handle) {
    const std::size_t place = PlaceOf(hash, name);
    if (place == Table::kNone) {
        m_slots.Insert(Slot{hash, handle});
        return 0;
    }
    const CqHandle before = m_slots[place].handle;
    m_slots[place].handle = handle;
    return before;
}

void PointNameIndex::Load(std::u16string_view name, CqHandle handle) {
    if (!name.empty()) {
        Put(Hash(name), name, handle);
    }
}

void PointNameIndex::Enter(std::u16string_view name, CqHandle handle) {
    if (name.empty()) {
        return;
    }
    const std::uint32_t hash = Hash(name);
    m_changes.Reserve(1);
    const CqHandle before = Put(hash, name, handle);
    m_changes.Push(Change{hash, handle, before});
}

void PointNameIndex::Remove(std::u16string_view name) {
    if (name.empty()) {
        return;
    }
    const std::uint32_t hash = Hash(name);
    const std::size_t place = PlaceOf(hash, name);
    if (place == Table::kNone) {
        return;
    }
    m_changes.Reserve(1);
    m_changes.Push(Change{hash, 0, m_slots[place].handle});
    m_slots.EraseAt(place);
}

void PointNameIndex::KeepStep() noexcept {
    m_changes.Clear();
}

void PointNameIndex::UndoStep() noexcept {
    m_changes.TakeBack([this](const Change& change) {
        if (change.entered == 0) {
            // The table never shrinks, so this does not allocate.
            m_slots.Insert(Slot{change.hash, change.removed});
            return;
        }
        const std::size_t place = m_slots.Find(
            change.hash, [&](const Slot& slot) { return slot.handle == change.entered; });
        if (change.removed == 0) {
            m_slots.EraseAt(place);
        } else {
            m_slots[place].handle = change.removed;
        }
    });
}

}  // namespace cqsurvey
