#pragma once

#include <cqsurvey/Types.h>

#include <cstdint>
#include <optional>
#include <string>

namespace cqsurvey::cqjob {

/// A text of the command line as the library takes it; `what` begins the message, such as "the
/// description". Throws UsageError when it is no UTF-8.
[[nodiscard]] CString ReadText(const std::string& text, const std::string& what);

/// As ReadText, for the name of a point or a group: also refused when it is longer than a job can
/// hold.
[[nodiscard]] CString ReadName(const std::string& text, const std::string& what);

/// The number in "#17"; nothing for any other text.
[[nodiscard]] std::optional<std::uint32_t> ReadRecordNumber(const std::string& text);

/// What is wrong with a number of the command line, empty when nothing is.
[[nodiscard]] std::string FindNumberFault(const std::string& text);

/// What is wrong with a whole number of 32 bits, empty when nothing is.
[[nodiscard]] std::string FindWholeNumberFault(const std::string& text);

}  // namespace cqsurvey::cqjob
