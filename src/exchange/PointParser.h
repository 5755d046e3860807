#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cqsurvey/CodePage.h"
#include "cqsurvey/exchange/FieldTextReader.h"
#include "exchange/CsvReader.h"

namespace cqsurvey::exchange {

/// Makes a point of the fields of a record, or says why there is none in it.
class PointParser {
 public:
    /// The options must outlive the parser; their order and their separator count when a record is
    /// read. Throws OptionError when the code page is not known.
    explicit PointParser(const FieldTextReadOptions& options);

    /// Fills in all of `line` but its number and its length.
    void Read(const CsvRecord& record, FieldTextLine& line);

 private:
    bool ReadCoordinate(Column column, double& value, FieldTextLine& line) const;
    bool ReadHeight(FieldTextLine& line) const;
    bool ReadTexts(FieldTextLine& line);
    bool ReadExtras(FieldTextLine& line);
    bool ReadWhole(Column column, std::uint32_t most, std::optional<std::uint32_t>& value,
                   FieldTextLine& line) const;
    [[nodiscard]] std::string HintAtHeights() const;
    [[nodiscard]] std::string JoinRest(std::size_t first) const;
    [[nodiscard]] std::string_view FieldText(std::optional<std::size_t> index) const;
    bool Decode(const char* what, std::string_view bytes, CString& text, FieldTextLine& line);

    const FieldTextReadOptions& m_options;
    CqCodePage m_codePage;
    std::vector<double> m_noHeights;
    const CsvRecord* m_record = nullptr;  // while it is read
};

}  // namespace cqsurvey::exchange
