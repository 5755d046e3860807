#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "fuzz/FuzzJob.h"

namespace cqsurvey {

/// Changes a job's file as a stranger with a tool for its database would: values of records, whole
/// records, files and memos of the volume, now and then its tables. Nothing when the tool cannot
/// change it either.
[[nodiscard]] std::optional<std::string> MutateVolume(const FuzzFolder& folder,
                                                      const std::string& bytes, std::uint32_t seed);

/// Replaces the bytes of a file inside a job's file; false when it has none of the name.
[[nodiscard]] bool PutIntoVolume(const std::string& hostPath, const std::string& name,
                                 std::string_view bytes);

}  // namespace cqsurvey
