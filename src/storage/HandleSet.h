#pragma once

#include <cstddef>
#include <cstdint>

#include "cqsurvey/Types.h"
#include "storage/ProbeTable.h"

namespace cqsurvey {

/// A set of record numbers in about five bytes each, however large the numbers are.
class HandleSet {
 public:
    [[nodiscard]] bool Contains(CqHandle handle) const {
        return handle != 0 && Find(handle) != Table::kNone;
    }

    /// Makes room, so that the insertions up to this size do not allocate memory.
    void Reserve(std::size_t size) { m_handles.Reserve(size); }

    /// Whether the handle was not in the set before. 0 is never entered.
    bool Insert(CqHandle handle) {
        if (handle == 0 || Find(handle) != Table::kNone) {
            return false;
        }
        m_handles.Insert(Slot{handle});
        return true;
    }

    /// Whether the handle was in the set.
    bool Erase(CqHandle handle) noexcept {
        const std::size_t place = handle == 0 ? Table::kNone : Find(handle);
        if (place == Table::kNone) {
            return false;
        }
        m_handles.EraseAt(place);
        return true;
    }

    [[nodiscard]] std::size_t Size() const noexcept { return m_handles.Size(); }

 private:
    struct Slot {
        CqHandle handle = 0;

        [[nodiscard]] bool IsFree() const noexcept { return handle == 0; }
        [[nodiscard]] std::uint32_t Hash() const noexcept { return HashHandle(handle); }
    };
    using Table = ProbeTable<Slot>;

    [[nodiscard]] std::size_t Find(CqHandle handle) const noexcept {
        return m_handles.Find(HashHandle(handle),
                              [handle](const Slot& slot) { return slot.handle == handle; });
    }

    Table m_handles;
};

}  // namespace cqsurvey
