#include "index/PointNameIndex.h"

#include "platform/RecordHash.h"

namespace cqsurvey {

std::size_t PointNameIndex::PlaceOf(std::uint32_t hash, std::u16string_view name) const {
    return m_slots.Find(hash, [&](const Slot& slot) {
        return StoredPointName(m_records.Peek(slot.handle)).View() == name;
    });
}

CqHandle PointNameIndex::Find(std::u16string_view name) const {
    if (name.empty() || name.size() > StoredPointName::Type::kCapacity) {
        return 0;
    }
    const std::size_t place = PlaceOf(HashName(name), name);
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
        Put(HashName(name), name, handle);
    }
}

void PointNameIndex::Enter(std::u16string_view name, CqHandle handle) {
    if (name.empty()) {
        return;
    }
    const std::uint32_t hash = HashName(name);
    m_changes.Reserve(1);
    const CqHandle before = Put(hash, name, handle);
    m_changes.Push(Change{hash, handle, before});
}

void PointNameIndex::Remove(std::u16string_view name) {
    if (name.empty()) {
        return;
    }
    const std::uint32_t hash = HashName(name);
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
