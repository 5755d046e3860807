#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace cqsurvey {

/// A hash table in one array of slots. Each slot is at the place that its hash names, its *home*,
/// or at the next free place after it:
///
///     place    0    1    2    3    4    5    6    7
///     slot     .    A1   B1   C2   .    D5   .    .       (the digit is the home)
///
/// A search begins at the home and ends at a free slot. When A1 is erased, B1 and C2 each move one
/// place back, so that no gap ends a search too early. Once the table has grown, 0.6 to 0.75 of the
/// places are in use, so a search looks at two or three slots next to each other. Growing is the
/// only costly operation: it moves every slot.
///
/// It offers three things that the standard maps do not. Erasing frees no memory, so putting a slot
/// back, as undoing a step does, needs none and cannot fail. A slot may be its own key, for
/// instance a handle whose name is in the record. And a slot of 8 bytes takes at most 13, where a
/// node of a std::unordered_map takes 40.
///
/// A slot type is a small value with two functions. `IsFree()` is true for a default-constructed
/// one. `Hash()` uses the whole range of 32 bits and, if a file chooses the keys, is seeded
/// (RecordHash.h). Equal slots may be in the table more than once.
template <class Slot>
class ProbeTable {
 public:
    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

    [[nodiscard]] std::size_t Size() const noexcept { return m_size; }
    [[nodiscard]] std::size_t Capacity() const noexcept { return m_slots.size(); }
    [[nodiscard]] Slot& operator[](std::size_t place) noexcept { return m_slots[place]; }
    [[nodiscard]] const Slot& operator[](std::size_t place) const noexcept {
        return m_slots[place];
    }

    /// The place of a slot with this hash for which `matches` is true, kNone if there is none.
    template <class Matches>
    [[nodiscard]] std::size_t Find(std::uint32_t hash, Matches&& matches) const {
        if (m_size == 0) {
            return kNone;
        }
        for (std::size_t place = Home(hash); !m_slots[place].IsFree(); place = After(place)) {
            if (m_slots[place].Hash() == hash && matches(m_slots[place])) {
                return place;
            }
        }
        return kNone;
    }

    /// Calls `visit` with every slot that has this hash.
    template <class Visit>
    void ForEach(std::uint32_t hash, Visit&& visit) const {
        static_cast<void>(Find(hash, [&](const Slot& slot) {
            visit(slot);
            return false;
        }));
    }

    /// Makes room, so that insertions up to this size in all need no memory.
    void Reserve(std::size_t size) {
        if (!Holds(m_slots.size(), size)) {
            Resize(size + size / 3 + 2);
        }
    }

    /// Makes room for one more slot, so that the next insertion needs no memory.
    void ReserveOneMore() {
        if (!Holds(m_slots.size(), m_size + 1)) {
            Resize(std::max<std::size_t>(8, m_slots.size() + m_slots.size() / 4));
        }
    }

    void Insert(const Slot& slot) {
        ReserveOneMore();
        Put(slot);
    }

    void EraseAt(std::size_t place) noexcept {
        // A slot moves into the gap if a search for it, from its home on, would come past the gap.
        std::size_t gap = place;
        for (std::size_t next = After(gap); !m_slots[next].IsFree(); next = After(next)) {
            const std::size_t home = Home(m_slots[next].Hash());
            const bool reachesOverGap =
                gap <= next ? (home <= gap || home > next) : (home <= gap && home > next);
            if (reachesOverGap) {
                m_slots[gap] = m_slots[next];
                gap = next;
            }
        }
        m_slots[gap] = Slot{};
        --m_size;
    }

 private:
    /// Whether so many slots fit into an array of this capacity. One place always stays free, since
    /// a free place ends every search.
    static bool Holds(std::size_t capacity, std::size_t size) noexcept {
        return size < capacity && size <= capacity - capacity / 4;
    }

    [[nodiscard]] std::size_t Home(std::uint32_t hash) const noexcept {
        return static_cast<std::size_t>((std::uint64_t{hash} * m_slots.size()) >> 32);
    }
    [[nodiscard]] std::size_t After(std::size_t place) const noexcept {
        return place + 1 == m_slots.size() ? 0 : place + 1;
    }

    void Put(const Slot& slot) noexcept {
        std::size_t place = Home(slot.Hash());
        while (!m_slots[place].IsFree()) {
            place = After(place);
        }
        m_slots[place] = slot;
        ++m_size;
    }

    void Resize(std::size_t capacity) {
        std::vector<Slot> old(capacity);
        old.swap(m_slots);
        m_size = 0;
        for (const Slot& slot : old) {
            if (!slot.IsFree()) {
                Put(slot);
            }
        }
    }

    std::vector<Slot> m_slots;
    std::size_t m_size = 0;
};

}  // namespace cqsurvey
