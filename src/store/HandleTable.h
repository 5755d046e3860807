#pragma once

#include <array>
#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <utility>

namespace cqsurvey {

/// Objects that callers know by a number, the handle: 31 bits, never 0, and not soon used again.
///
/// Every operation of the store looks up a handle, so looking up takes no lock; only adding and
/// removing do. That is safe because slots live in segments that are added when needed and never
/// move, and because each slot holds the handle that it currently stands for.
///
///     number:    generation (11 bits) | slot (20 bits)
///     segments:  [1024 slots] [2048] [4096] ...          found by the highest bit of the slot
///
/// The generation of a slot grows each time the slot is used, so a stale handle finds its slot free
/// or with another handle in it. The table does not guard the objects themselves: the caller must
/// not use or remove one object from two threads at a time.
template <class T, unsigned SlotBits = 20>
class HandleTable {
 public:
    HandleTable() = default;
    HandleTable(const HandleTable&) = delete;
    HandleTable& operator=(const HandleTable&) = delete;
    ~HandleTable() {
        for (std::atomic<Slot*>& segment : m_segments) {
            delete[] segment.load();
        }
    }

    /// Takes the object and returns its handle, 0 when the table is full.
    [[nodiscard]] std::uint32_t Add(T object) {
        auto owned = std::make_unique<T>(std::move(object));
        const std::scoped_lock lock(m_mutex);
        // A quarter of the slots stays free, so that the search below is short and a slot that was
        // given up rests for a while before its next use.
        if (m_count >= m_capacity - m_capacity / 4) {
            Grow();
        }
        if (m_count == m_capacity) {
            return 0;
        }
        do {
            m_last = (m_last + 1) % m_capacity;
        } while (At(m_last)->object != nullptr);
        Slot& slot = *At(m_last);
        slot.generation = slot.generation % kGenerations + 1;
        const std::uint32_t handle = (slot.generation << SlotBits) | m_last;
        // The handle comes last: a reader that sees it must also see the object.
        slot.object = std::move(owned);
        slot.handle.store(handle, std::memory_order_release);
        ++m_count;
        return handle;
    }

    /// Null for a handle that is not in use.
    [[nodiscard]] T* Find(std::uint32_t handle) const {
        // The object is touched only if the handle matches: the slot may by now belong to an object
        // of another thread.
        const Slot* slot = At(handle & kSlotMask);
        return slot != nullptr && handle != 0 &&
                       slot->handle.load(std::memory_order_acquire) == handle
                   ? slot->object.get()
                   : nullptr;
    }

    bool Remove(std::uint32_t handle) {
        const std::scoped_lock lock(m_mutex);
        if (Find(handle) == nullptr) {
            return false;
        }
        Empty(*At(handle & kSlotMask));
        return true;
    }

    template <class Predicate>
    void RemoveIf(Predicate&& predicate) {
        const std::scoped_lock lock(m_mutex);
        for (std::uint32_t index = 0; index < m_capacity && m_count != 0; ++index) {
            Slot& slot = *At(index);
            if (slot.object != nullptr && predicate(std::as_const(*slot.object))) {
                Empty(slot);
            }
        }
    }

 private:
    static constexpr unsigned kFirstBits = 10;
    static constexpr std::uint32_t kFirst = 1U << kFirstBits;
    static constexpr std::uint32_t kSlotMask = (1U << SlotBits) - 1;
    static constexpr std::uint32_t kGenerations = (1U << (31 - SlotBits)) - 1;
    static constexpr std::size_t kSegments = SlotBits - kFirstBits;

    struct Slot {
        std::atomic<std::uint32_t> handle{0};  ///< 0 while the slot is free
        std::uint32_t generation = 0;
        std::unique_ptr<T> object;
    };

    /// Null where there is no segment yet.
    [[nodiscard]] Slot* At(std::uint32_t index) const {
        const std::uint32_t place = index + kFirst;
        const auto number = static_cast<std::size_t>(std::bit_width(place)) - kFirstBits - 1;
        if (number >= kSegments) {
            return nullptr;
        }
        Slot* segment = m_segments[number].load(std::memory_order_acquire);
        return segment == nullptr ? nullptr : segment + (place - (kFirst << number));
    }

    void Grow() {
        if (m_used < kSegments) {
            const std::uint32_t size = kFirst << m_used;
            m_segments[m_used].store(new Slot[size], std::memory_order_release);
            ++m_used;
            m_capacity += size;
        }
    }

    void Empty(Slot& slot) {
        slot.handle.store(0, std::memory_order_relaxed);
        slot.object.reset();
        --m_count;
    }

    std::array<std::atomic<Slot*>, kSegments> m_segments{};
    std::mutex m_mutex;
    std::size_t m_used = 0;
    std::uint32_t m_capacity = 0;
    std::uint32_t m_count = 0;
    std::uint32_t m_last = 0;
};

}  // namespace cqsurvey
