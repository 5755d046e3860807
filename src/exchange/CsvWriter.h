#pragma once

#include <string>
#include <string_view>

#include "exchange/CsvReader.h"

namespace cqsurvey::exchange {

/// Builds separated lines that CsvReader reads back as exactly the fields that were put in, and any
/// reader of RFC 4180 too where the separator is the comma.
class CsvWriter {
 public:
    explicit CsvWriter(Separator separator);

    /// Adds a field to the line; `quote` encloses it also when nothing asks for it.
    void Add(std::string_view field, bool quote = false);

    /// The line, ended by CR LF; the next one begins.
    [[nodiscard]] std::string TakeLine();

 private:
    [[nodiscard]] bool NeedsQuotes(std::string_view field) const;

    char m_separator;
    std::string m_line;
    bool m_begun = false;
};

}  // namespace cqsurvey::exchange
