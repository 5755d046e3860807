#pragma once

#include <cqsurvey/Types.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace cqsurvey::cqjob {

/// Converts a text of the command line to UTF-16. Throws UsageError when it is not UTF-8; the
/// message begins with `what`, such as "the description".
[[nodiscard]] CString ReadText(const std::string& text, const std::string& what);

/// As ReadText, for a name of at most `longest` code units. Throws UsageError also when it is
/// longer.
[[nodiscard]] CString ReadName(const std::string& text, const std::string& what,
                               std::size_t longest);

/// The number in a text like "#17"; nothing for any other text.
[[nodiscard]] std::optional<std::uint32_t> ReadRecordNumber(const std::string& text);

/// What is wrong with a number of the command line; empty when nothing is.
[[nodiscard]] std::string FindNumberFault(const std::string& text);

/// What is wrong with a whole number of 32 bits; empty when nothing is.
[[nodiscard]] std::string FindWholeNumberFault(const std::string& text);

}  // namespace cqsurvey::cqjob
