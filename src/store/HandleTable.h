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

/// Objects that are known outside by a number: 31 bits, never 0, not soon used again.
///
/// Adding and removing take a lock. Looking up takes none, since each operation of the store looks
/// up at least once: the slots stand in segments that are added as they are needed and never move,
/// and a slot says itself which number it stands for.
///
///     number:    generation (11 bits) | slot (20 bits)
///     segments:  [1024 slots] [2048] [4096] ...          found by the highest bit of the slot
///
/// A number that is out of date finds its slot with another generation, or free. An object is used
/// by one thread at a time, which is the caller's affair.
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

    /// 0 when there is no number left.
    [[nodiscard]] std::uint32_t Add(T object) {
        auto owned = std::make_unique<T>(std::move(object));
        const std::scoped_lock lock(m_mutex);
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
        slot.object = std::move(owned);
        slot.handle.store(handle, std::memory_order_release);
        ++m_count;
        return handle;
    }

    /// Null for a number that names nothing.
    [[nodiscard]] T* Find(std::uint32_t handle) const {
        // The object is touched only when its handle matches: a slot may be another thread's now.
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

    /// Null where no segment is yet.
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
