#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "cqsurvey/Types.h"
#include "platform/ByteOrder.h"
#include "tables/JobSchema.h"

namespace cqsurvey {

/// The stored bytes of the points' records by number, for the indexes over them.
class PointRecords {
 public:
    PointRecords() = default;
    PointRecords(const PointRecords&) = delete;
    PointRecords& operator=(const PointRecords&) = delete;
    virtual ~PointRecords() = default;

    /// Null when there is no such record. Valid until the table is changed.
    [[nodiscard]] virtual const std::byte* Peek(CqHandle handle) const = 0;
};

/// The name in the bytes of a point's record, without a detour over the heap.
class StoredPointName {
 public:
    using Type = PointLayout::TypeOf<"PointName">;

    /// An empty name for a null pointer.
    explicit StoredPointName(const std::byte* record) noexcept {
        if (record == nullptr) {
            return;
        }
        const std::byte* bytes = record + PointLayout::Offset<"PointName">();
        for (; m_length < Type::kCapacity; ++m_length) {
            const auto unit = LoadLittle<char16_t>(bytes + 2 * m_length);
            if (unit == 0) {
                break;
            }
            m_units[m_length] = unit;
        }
    }

    [[nodiscard]] std::u16string_view View() const noexcept { return {m_units.data(), m_length}; }

 private:
    std::array<char16_t, Type::kCapacity> m_units{};
    std::size_t m_length = 0;
};

}  // namespace cqsurvey
