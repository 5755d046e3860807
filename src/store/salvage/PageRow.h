#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "cqsurvey/Types.h"
#include "store/RecordFormat.h"

namespace cqsurvey {

/// A row as it stands in a database file: a list of types, then the values without gaps.
///
///     | size of the list | type | type | ... | value | value | ...
///
///     type   0 none   1 to 6 whole numbers of 1, 2, 3, 4, 6, 8 bytes   7 a real   8, 9 the
///            numbers 0 and 1   from 12 on, even: bytes, odd: a text, with its length
///
/// The object refers to the payload that it was read from.
class PageRow {
 public:
    enum class Type : std::uint8_t { None, Number, Real, Bytes, Text };

    /// Nothing unless the payload is a row of exactly `columns` values, and nothing else. With
    /// `cut`, the payload may end before the values do: the last value then ends there, too.
    [[nodiscard]] static std::optional<PageRow> Read(std::span<const std::byte> payload,
                                                     std::size_t columns, bool cut = false);

    [[nodiscard]] Type GetType(std::size_t column) const { return m_values[column].type; }
    [[nodiscard]] bool IsNumber(std::size_t column) const {
        return GetType(column) == Type::Number;
    }
    [[nodiscard]] bool IsText(std::size_t column) const { return GetType(column) == Type::Text; }

    /// The bytes of any value as they are in the file.
    [[nodiscard]] std::span<const std::byte> GetBytes(std::size_t column) const {
        return m_values[column].bytes;
    }
    /// The whole number of a column that holds one.
    [[nodiscard]] std::int64_t GetNumber(std::size_t column) const {
        return m_values[column].number;
    }
    /// The text of a column that holds one, which ends at the last whole code unit.
    [[nodiscard]] CString GetText(std::size_t column) const;

    /// Packs the fields of a record, whose row has its number as first column. False, with the
    /// record in no certain state, when a value does not fit its field.
    [[nodiscard]] bool Pack(const RecordFormat& format, std::byte* record) const;

 private:
    struct Value {
        Type type = Type::None;
        std::int64_t number = 0;
        std::span<const std::byte> bytes{};
    };

    [[nodiscard]] static bool PackDouble(const Value& value, std::byte* bytes);

    std::vector<Value> m_values;
};

}  // namespace cqsurvey
