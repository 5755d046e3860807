#pragma once

#include <cqsurvey/Types.h>

#include <cstdint>
#include <optional>
#include <string>

namespace cqsurvey::cqjob {

/// Converts a text of the command line to UTF-16. Throws UsageError when it is not UTF-8; the
/// message begins with `what`, such as "the description".
[[nodiscard]] CString ReadText(const std::string& text, const std::string& what);

/// As ReadText, for the name of a point or a group. Throws UsageError also when it is longer than a
/// job can hold.
[[nodiscard]] CString ReadName(const std::string& text, const std::string& what);

/// The number in a text like "#17"; nothing for any other text.
[[nodiscard]] std::optional<std::uint32_t> ReadRecordNumber(const std::string& text);

/// What is wrong with a number of the command line; empty when nothing is.
[[nodiscard]] std::string FindNumberFault(const std::string& text);

/// What is wrong with a whole number of 32 bits; empty when nothing is.
[[nodiscard]] std::string FindWholeNumberFault(const std::string& text);

}  // namespace cqsurvey::cqjob
