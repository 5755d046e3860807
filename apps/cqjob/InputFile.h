#pragma once

#include <cstdint>
#include <string>

namespace cqsurvey::cqjob {

/// The length of the file at `path`. Throws Failure with the path and the reason when it is not a
/// file or cannot be opened for reading.
[[nodiscard]] std::uint64_t GetReadableLength(const std::string& path);

/// The bytes of the file at `path`. Throws Failure as GetReadableLength, and when reading fails.
[[nodiscard]] std::string ReadInputFile(const std::string& path);

}  // namespace cqsurvey::cqjob
