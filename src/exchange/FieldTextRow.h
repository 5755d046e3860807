#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "cqsurvey/exchange/ColumnOrder.h"
#include "exchange/CsvWriter.h"

namespace cqsurvey::exchange {

/// A point to be written, its texts in the code page of the file.
struct PointTexts {
    std::string name;
    std::array<double, 3> coords{};  ///< easting, northing, height
    std::int32_t code = 0;
    std::string description;
    std::string group{};
    std::string layer{};
    std::uint32_t flags = 0;
    std::uint32_t origin = 0;
    std::uint32_t time = 0;  ///< seconds since 1970-01-01 00:00 UTC
};

/// Makes the lines of a field text file. FieldTextFile with the same order reads the same points
/// back.
class FieldTextRow {
 public:
    /// Without `decimals`, numbers have as many digits as it takes to read them back exactly. With
    /// `safe`, no text begins like a formula.
    FieldTextRow(ColumnOrder order, Separator separator, std::optional<int> decimals,
                 bool decimalComma, bool safe = false);

    /// The line that names the columns.
    [[nodiscard]] std::string MakeHeader() const;

    [[nodiscard]] std::string Make(const PointTexts& point) const;

 private:
    [[nodiscard]] std::string Number(double value) const;
    [[nodiscard]] std::string Text(const std::string& text) const;
    void AddRest(CsvWriter& writer, const PointTexts& point) const;

    ColumnOrder m_order;
    Separator m_separator;
    std::optional<int> m_decimals;
    bool m_decimalComma;
    bool m_safe;
};

}  // namespace cqsurvey::exchange
