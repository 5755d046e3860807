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
#include "exchange/PointParser.h"

namespace cqsurvey::exchange {

/// Reads a field text file line by line, as FieldTextReader promises. CsvReader finds the fields,
/// and PointParser makes a point of them. What they need is found out here: the order of the
/// columns, which the options or the header say, and the separator, which the options or the first
/// lines of the file say.
class FieldTextFile {
 public:
    /// The source must outlive this object. Throws OptionError when the options contradict each
    /// other, ExchangeError when the text cannot be read.
    FieldTextFile(TextSource& source, FieldTextReadOptions options);

    /// Reads the next line; false at the end. Throws OptionError when the header does not say the
    /// columns or plainly contradicts the order, ExchangeError when the text cannot be read.
    bool Next(FieldTextLine& line);

    [[nodiscard]] const FieldTextReadOptions& GetOptions() const { return m_options; }

    [[nodiscard]] Separator GetSeparator() const { return *m_options.separator; }

    /// The columns in use; nothing when they come from a header that has not been read yet.
    [[nodiscard]] const std::optional<ColumnOrder>& GetOrder() const { return m_options.order; }

    /// The header's columns that are not used, each as its number and heading: 5 "SIGMA_E".
    [[nodiscard]] const std::vector<std::string>& GetUntaken() const { return m_untaken; }

 private:
    [[nodiscard]] Separator GuessSeparator();
    [[nodiscard]] Separator FindSeparator(std::string_view sample, bool decimalComma,
                                          int& most) const;
    [[nodiscard]] bool HasNumbers(std::string_view line);
    [[nodiscard]] bool LooksLikeHeader() const;
    void ReadHeader(const std::vector<std::string_view>& texts);
    void ReadHeaderLine(FieldTextLine& line);
    [[nodiscard]] bool IsGeographic() const;
    void RefuseDegrees(const std::string& place, const std::vector<std::string>& headings) const;
    [[nodiscard]] std::string_view FieldText(std::optional<std::size_t> index) const;

    TextSource& m_source;
    FieldTextReadOptions m_options;
    CqCodePage m_codePage;
    CsvReader m_reader;
    PointParser m_parser;
    CsvRecord m_record;
    std::vector<std::string_view> m_split;
    std::vector<std::string> m_untaken;
    std::uint64_t m_headerLinesRead = 0;
    bool m_headerDone = false;
};

}  // namespace cqsurvey::exchange
