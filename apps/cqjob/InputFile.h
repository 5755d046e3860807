#pragma once

#include <cstdint>
#include <string>

namespace cqsurvey::cqjob {

/// The length of the plain file at `path`. Throws Failure with the path and the reason when it
/// cannot be opened for reading, and when it is a folder, a pipe or a device: these may never end.
[[nodiscard]] std::uint64_t GetReadableLength(const std::string& path);

/// The bytes of the file at `path`. Throws Failure as GetReadableLength, when the file has more
/// than `mostBytes`, and when reading fails.
[[nodiscard]] std::string ReadInputFile(const std::string& path, std::uint64_t mostBytes);

}  // namespace cqsurvey::cqjob
