#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "cqsurvey/Types.h"
#include "index/PointRecords.h"
#include "platform/ChangeLog.h"
#include "platform/ProbeTable.h"

namespace cqsurvey {

/// Finds points by name, exactly and with regard to case. It keeps record numbers only and compares
/// stored bytes, so a name must be removed before the record's bytes are changed.
class PointNameIndex {
 public:
    explicit PointNameIndex(const PointRecords& records) : m_records(records) {}

    /// 0 when no point of that name is entered.
    [[nodiscard]] CqHandle Find(std::u16string_view name) const;

    /// Enters `handle`, whose record has the name or is about to get it, in place of the point that
    /// has the name in the index. An empty name is not entered.
    void Enter(std::u16string_view name, CqHandle handle);

    /// The same as a part of what no UndoStep takes back.
    void Load(std::u16string_view name, CqHandle handle);

    /// Removes the name, whichever point it is entered for.
    void Remove(std::u16string_view name);

    /// Makes room, so that loading that many names does not move the index.
    void Reserve(std::size_t count) { m_slots.Reserve(count); }

    [[nodiscard]] std::size_t Size() const noexcept { return m_slots.Size(); }

    void KeepStep() noexcept;
    /// Needs no record, as those that were appended in the step are gone by now.
    void UndoStep() noexcept;

 private:
    struct Slot {
        std::uint32_t hash = 0;
        CqHandle handle = 0;

        [[nodiscard]] bool IsFree() const noexcept { return handle == 0; }
        [[nodiscard]] std::uint32_t Hash() const noexcept { return hash; }
    };
    using Table = ProbeTable<Slot>;

    /// What a change entered and removed under a hash, 0 for nothing.
    struct Change {
        std::uint32_t hash;
        CqHandle entered;
        CqHandle removed;
    };

    [[nodiscard]] std::size_t PlaceOf(std::uint32_t hash, std::u16string_view name) const;
    CqHandle Put(std::uint32_t hash, std::u16string_view name, CqHandle handle);

    const PointRecords& m_records;
    Table m_slots;
    ChangeLog<Change> m_changes;
};

}  // namespace cqsurvey
