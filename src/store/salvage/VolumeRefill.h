#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "store/salvage/Salvaged.h"
#include "store/salvage/VolumeSalvage.h"

namespace cqsurvey {

// Throw StoreFailure.

/// Where each table of a volume that is not mounted begins, by its name.
[[nodiscard]] std::map<std::string, std::uint32_t> ListRoots(const std::string& path);

/// Puts rows into a volume that is not mounted, with the numbers that they have, in one
/// transaction: the records take the place of those that the tables hold, the memos and highest
/// numbers that of all others, and each file whose name is not empty that of the file of this name.
/// Such a file must have its length and all its blocks.
void RefillVolume(const std::string& path, const std::vector<VolumeSalvage::Layout>& layouts,
                  const Salvaged& rows);

}  // namespace cqsurvey
