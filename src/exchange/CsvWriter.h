#pragma once

#include <string>
#include <string_view>

#include "exchange/CsvReader.h"

namespace cqsurvey::exchange {

/// Builds separated lines from which CsvReader reads exactly the same fields. With the comma as
/// separator, any reader of RFC 4180 does, too.
class CsvWriter {
 public:
    explicit CsvWriter(Separator separator);

    /// Adds a field to the line. `quote` encloses it in quotation marks even when it needs none.
    void Add(std::string_view field, bool quote = false);

    /// Returns the line, ended by CR LF, and begins the next one.
    [[nodiscard]] std::string TakeLine();

 private:
    [[nodiscard]] bool NeedsQuotes(std::string_view field) const;

    char m_separator;
    std::string m_line;
    bool m_begun = false;
};

}  // namespace cqsurvey::exchange
