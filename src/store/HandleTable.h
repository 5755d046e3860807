#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <utility>

namespace cqsurvey {

/// Objects that are known outside by a number: 31 bits, never 0, not soon used again. Adding and
/// removing is guarded; an object is looked up without a lock by the one thread that uses it.
template <class T>
class HandleTable {
 public:
    HandleTable() = default;
    HandleTable(const HandleTable&) = delete;
    HandleTable& operator=(const HandleTable&) = delete;
    ~HandleTable() = default;

    /// 0 when there is no number left.
    [[nodiscard]] std::uint32_t Add(T object) {
        const std::scoped_lock lock(m_mutex);
        for (std::uint32_t tried = 1; tried < kSlots; ++tried) {
            m_last = m_last % (kSlots - 1) + 1;
            Slot& slot = m_slots[m_last];
            if (slot.object == nullptr) {
                m_generation = (m_generation + 1) & kGenerations;
                const std::uint32_t handle = (m_generation << kSlotBits) | m_last;
                slot.object = std::make_unique<T>(std::move(object));
                slot.handle.store(handle, std::memory_order_release);
                return handle;
            }
        }
        return 0;
    }

    /// Null for a number that names nothing.
    [[nodiscard]] T* Find(std::uint32_t handle) const {
        // The object is touched only when its handle matches: a slot may be another thread's now.
        const Slot& slot = m_slots[handle & (kSlots - 1)];
        return slot.handle.load(std::memory_order_acquire) == handle ? slot.object.get() : nullptr;
    }

    bool Remove(std::uint32_t handle) {
        const std::scoped_lock lock(m_mutex);
        if (Find(handle) == nullptr) {
            return false;
        }
        Empty(m_slots[handle & (kSlots - 1)]);
        return true;
    }

    template <class Predicate>
    void RemoveIf(Predicate&& predicate) {
        const std::scoped_lock lock(m_mutex);
        for (Slot& slot : m_slots) {
            if (slot.object != nullptr && predicate(std::as_const(*slot.object))) {
                Empty(slot);
            }
        }
    }

 private:
    static constexpr std::uint32_t kSlotBits = 14;
    static constexpr std::uint32_t kSlots = 1U << kSlotBits;
    static constexpr std::uint32_t kGenerations = (1U << (31 - kSlotBits)) - 1;

    struct Slot {
        std::atomic<std::uint32_t> handle{0};  ///< 0 while the slot is free
        std::unique_ptr<T> object;
    };

    static void Empty(Slot& slot) {
        slot.handle.store(0, std::memory_order_relaxed);
        slot.object.reset();
    }

    std::array<Slot, kSlots> m_slots{};
    std::mutex m_mutex;
    std::uint32_t m_last = 0;
    std::uint32_t m_generation = 0;
};

}  // namespace cqsurvey
