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
    ~HandleTable() {
        RemoveIf([](const T&) { return true; });
    }

    /// 0 when there is no number left.
    [[nodiscard]] std::uint32_t Add(T object) {
        const std::scoped_lock lock(m_mutex);
        for (std::uint32_t tried = 1; tried < kSlots; ++tried) {
            m_last = m_last % (kSlots - 1) + 1;
            if (m_slots[m_last].load(std::memory_order_relaxed) == nullptr) {
                m_generation = (m_generation + 1) & kGenerations;
                const std::uint32_t handle = (m_generation << kSlotBits) | m_last;
                auto entry = std::make_unique<Entry>(Entry{handle, std::move(object)});
                m_slots[m_last].store(entry.release(), std::memory_order_release);
                return handle;
            }
        }
        return 0;
    }

    /// Null for a number that names nothing.
    [[nodiscard]] T* Find(std::uint32_t handle) const {
        Entry* entry = m_slots[handle & (kSlots - 1)].load(std::memory_order_acquire);
        return entry != nullptr && entry->handle == handle ? &entry->object : nullptr;
    }

    bool Remove(std::uint32_t handle) {
        const std::scoped_lock lock(m_mutex);
        if (Find(handle) == nullptr) {
            return false;
        }
        const std::unique_ptr<Entry> entry(m_slots[handle & (kSlots - 1)].exchange(nullptr));
        return true;
    }

    template <class Predicate>
    void RemoveIf(Predicate&& predicate) {
        const std::scoped_lock lock(m_mutex);
        for (auto& slot : m_slots) {
            Entry* entry = slot.load(std::memory_order_relaxed);
            if (entry != nullptr && predicate(std::as_const(entry->object))) {
                slot.store(nullptr, std::memory_order_relaxed);
                const std::unique_ptr<Entry> gone(entry);
            }
        }
    }

 private:
    static constexpr std::uint32_t kSlotBits = 14;
    static constexpr std::uint32_t kSlots = 1U << kSlotBits;
    static constexpr std::uint32_t kGenerations = (1U << (31 - kSlotBits)) - 1;

    struct Entry {
        std::uint32_t handle;
        T object;
    };

    std::array<std::atomic<Entry*>, kSlots> m_slots{};
    std::mutex m_mutex;
    std::uint32_t m_last = 0;
    std::uint32_t m_generation = 0;
};

}  // namespace cqsurvey
